#include "FormPage.h"

#include <QDropEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QVBoxLayout>
#include <utility>

#include "Accessibility.h"
#include "ContentPreview.h"
#include "FileSelection.h"
#include "FilesPanel.h"

namespace quillbay::desktop {
namespace {

constexpr int kNoticeMargin = 16;

}  // namespace

FormPage::FormPage(FileSelection& files, Actions actions)
    : files_(files), actions_(std::move(actions)) {
  filesPanel_ = new FilesPanel(files_, {.add = actions_.addFiles,
                                        .undoRemoval = actions_.undoRemoval,
                                        .removed = actions_.filesRemoved});
  makeSheet();
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(makeNotice());
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

QWidget* FormPage::makeNotice() {
  auto* const frame = new QFrame;
  frame->setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
  setAccessibleRole(*frame, QAccessible::AlertMessage);
  noticeTitle_ = new QLabel;
  noticeText_ = new QLabel;
  QFont bold = noticeTitle_->font();
  bold.setBold(true);
  noticeTitle_->setFont(bold);
  auto* const content = new QVBoxLayout(frame);
  for (QLabel* const label : {noticeTitle_, noticeText_}) {
    // Texts of servers and names of files are no markup.
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    content->addWidget(label);
  }
  noticeText_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

  notice_ = new QWidget;
  auto* const layout = new QVBoxLayout(notice_);
  layout->setContentsMargins(kNoticeMargin, kNoticeMargin, kNoticeMargin, 0);
  layout->addWidget(frame);
  notice_->hide();
  return notice_;
}

void FormPage::filesChanged() {
  filesPanel_->filesChanged();
  sheet_->setContentPreview(contentPreview(files_.paths()));
}

void FormPage::showNotice(const std::optional<Notice>& notice) {
  notice_->setVisible(notice.has_value());
  if (!notice) return;
  noticeTitle_->setText(notice->title);
  noticeText_->setText(notice->text);
  noticeText_->setAccessibleName(notice->text);
  announce(*noticeTitle_->parentWidget(), notice->title + " " + notice->text);
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
