#include "FormPage.h"

#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QVBoxLayout>
#include <utility>

#include "ContentPreview.h"
#include "FileSelection.h"
#include "FilesPanel.h"
#include "PageLayout.h"

namespace quillbay::desktop {

FormPage::FormPage(FileSelection& files, Actions actions)
    : files_(files), actions_(std::move(actions)) {
  filesPanel_ = new FilesPanel(files_, {.add = actions_.addFiles,
                                        .undoRemoval = actions_.undoRemoval,
                                        .removed = actions_.filesRemoved,
                                        .showShares = actions_.showShares});
  makeSheet();
  notice_ = new NoticePanel;
  notice_->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, 0);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(notice_);
  layout->addWidget(filesPanel_);
  layout->addWidget(&sheet_->view(), 1);
}

void FormPage::makeSheet() {
  sheet_ = cloud::ShareViewController::create(
      {cloud::SessionConfiguration::default_(), contentPreview(files_.paths())});
  sheet_->setOnConfirm(actions_.share);
  sheet_->setOnCancel(actions_.cancel);
  // A text field would take the path of a file for text.
  for (QWidget* const part : sheet_->view().findChildren<QWidget*>()) {
    if (part->acceptDrops()) part->installEventFilter(this);
  }
}

void FormPage::filesChanged() {
  filesPanel_->filesChanged();
  sheet_->setContentPreview(contentPreview(files_.paths()));
}

bool FormPage::event(QEvent* event) {
  const bool isUsed = QWidget::event(event);
  if (event->type() != QEvent::LayoutRequest || !isVisible()) return isUsed;
  // Layouts do not ask their window for the room that wrapped lines need: it was the sheet's.
  const int missing = sheet_->view().sizeHint().height() - sheet_->view().height();
  if (missing > 0) window()->resize(window()->width(), window()->height() + missing);
  return isUsed;
}

void FormPage::keyPressEvent(QKeyEvent* event) {
  // What the controls around the sheet leave. Return comes to the sheet by itself.
  if (event->matches(QKeySequence::Cancel)) return sheet_->cancelOperation();
  QWidget::keyPressEvent(event);
}

bool FormPage::eventFilter(QObject* watched, QEvent* event) {
  const bool isDrag = event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove;
  if (!isDrag && event->type() != QEvent::Drop) return QWidget::eventFilter(watched, event);
  auto& drop = *static_cast<QDropEvent*>(event);
  if (!drop.mimeData()->hasUrls()) return false;
  drop.acceptProposedAction();
  if (!isDrag) actions_.dropFiles(*drop.mimeData());
  return true;
}

}  // namespace quillbay::desktop
