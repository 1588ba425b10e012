#include "RunPage.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>
#include <chrono>
#include <utility>

#include "Accessibility.h"
#include "ElidedLabel.h"
#include "FileListView.h"
#include "FileSelection.h"
#include "Localized.h"
#include "QRCodeView.h"
#include "ShareRun.h"
#include "hosts/common/PlainText.h"

namespace quillbay::desktop {
namespace {

using Phase = ShareRun::Phase;

constexpr int kPageMargin = 16;
constexpr int kSpacing = 12;
constexpr int kBarSteps = 1000;
constexpr int kMostFileRows = 8;
constexpr std::chrono::milliseconds kRefreshInterval{200};
constexpr std::chrono::seconds kCopiedDuration{2};

}  // namespace

RunPage::RunPage(ShareRun& run, const FileSelection& files, Actions actions)
    : run_(run),
      actions_(std::move(actions)),
      model_(files),
      headline_(*new QLabel),
      link_(*new QLineEdit),
      copyButton_(*new QPushButton(localized("run.copy"))),
      openButton_(*new QPushButton(localized("run.open"))),
      qrCodeButton_(*new QPushButton(localized("run.qr-code"))),
      qrCode_(*new QRCodeView),
      progressArea_(*new QWidget),
      bar_(*new QProgressBar),
      detail_(*new QLabel),
      cancelButton_(*new QPushButton(localized("run.cancel"))),
      endArea_(*new QWidget),
      againButton_(*new QPushButton(localized("run.again"))),
      deleteButton_(*new QPushButton(localized("run.delete"))),
      closeButton_(*new QPushButton(localized("run.close"))) {
  setUpLink();
  setUpProgress();
  setUpButtons();
  layOut(files.summary());
  // From the first moment: the focus does not move when the link arrives.
  setFocusProxy(&link_);
  showPhase();
}

void RunPage::setUpLink() {
  link_.setReadOnly(true);
  link_.setPlaceholderText(localized("run.link.placeholder"));
  link_.setAccessibleName(localized("run.link"));
  link_.installEventFilter(this);
  qrCodeButton_.setCheckable(true);
  qrCode_.hide();
  copiedTimer_.setSingleShot(true);
  connect(&copiedTimer_, &QTimer::timeout, this,
          [this] { copyButton_.setText(localized("run.copy")); });
  // However it is copied: by the button, by a key, by the field's menu.
  connect(QApplication::clipboard(), &QClipboard::dataChanged, this, [this] {
    const QClipboard& clipboard = *QApplication::clipboard();
    const bool isLink = clipboard.ownsClipboard() && clipboard.text() == run_.link();
    isLinkPassedOn_ = isLinkPassedOn_ || isLink;
  });
  // The button says something else for a while: it must not change its size.
  const QString copied = localized("run.copied");
  const int extra =
      fontMetrics().horizontalAdvance(copied) - fontMetrics().horizontalAdvance(copyButton_.text());
  copyButton_.setMinimumWidth(copyButton_.sizeHint().width() + qMax(0, extra));
}

void RunPage::setUpProgress() {
  QFont bold = headline_.font();
  bold.setBold(true);
  headline_.setFont(bold);
  headline_.setTextFormat(Qt::PlainText);
  headline_.setWordWrap(true);
  setAccessibleRole(headline_, QAccessible::AlertMessage);
  bar_.setAccessibleName(localized("run.progress"));
  detail_.setTextFormat(Qt::PlainText);
  connect(&refresh_, &QTimer::timeout, this, &RunPage::updateProgress);
  refresh_.start(kRefreshInterval);
}

void RunPage::setUpButtons() {
  connect(&copyButton_, &QPushButton::clicked, this, &RunPage::copyLink);
  connect(&openButton_, &QPushButton::clicked, this,
          [this] { isLinkPassedOn_ |= QDesktopServices::openUrl(QUrl(run_.link())); });
  connect(&qrCodeButton_, &QPushButton::toggled, this, [this](bool isShown) {
    qrCode_.setVisible(isShown);
    isLinkPassedOn_ = true;
  });
  connect(&cancelButton_, &QPushButton::clicked, this, [this] { actions_.cancel(); });
  connect(&againButton_, &QPushButton::clicked, this, [this] { actions_.shareMore(); });
  connect(&deleteButton_, &QPushButton::clicked, this, [this] { actions_.deleteLink(); });
  connect(&closeButton_, &QPushButton::clicked, this, [this] { actions_.close(); });
  for (QPushButton* const button : {&copyButton_, &openButton_, &qrCodeButton_, &cancelButton_,
                                    &againButton_, &deleteButton_, &closeButton_}) {
    // Return presses the button that has the focus.
    button->setAutoDefault(true);
  }
}

void RunPage::layOut(const QString& filesSummary) {
  auto* const files = new ElidedLabel(filesSummary);
  auto* const linkButtons = new QHBoxLayout;
  for (QPushButton* const button : {&copyButton_, &openButton_, &qrCodeButton_}) {
    linkButtons->addWidget(button);
  }
  linkButtons->addStretch();

  // Cancel is at the end of the line; what ends or deletes afterwards is at its start: a click
  // that comes late must not hit it.
  auto* const progress = new QHBoxLayout(&progressArea_);
  progress->addWidget(&bar_, 1);
  progress->addWidget(&cancelButton_);
  auto* const end = new QHBoxLayout(&endArea_);
  for (QPushButton* const button : {&againButton_, &deleteButton_, &closeButton_}) {
    end->addWidget(button);
  }
  end->addStretch();
  for (QHBoxLayout* const line : {progress, end}) line->setContentsMargins(0, 0, 0, 0);

  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, kPageMargin);
  layout->setSpacing(kSpacing);
  layout->addWidget(&headline_);
  layout->addWidget(files);
  layout->addWidget(&link_);
  layout->addLayout(linkButtons);
  layout->addWidget(&qrCode_, 0, Qt::AlignHCenter);
  layout->addWidget(&progressArea_);
  layout->addWidget(&endArea_);
  layout->addWidget(&detail_);
  layout->addWidget(new FileListView(model_, kMostFileRows), 1);
}

void RunPage::showPhase() {
  const Phase phase = run_.phase();
  const bool isShared = phase == Phase::done || phase == Phase::deleting;
  const bool hasLink = phase == Phase::uploading || isShared;
  if (hasLink) showLink();
  for (QPushButton* const button : {&copyButton_, &openButton_, &qrCodeButton_}) {
    button->setEnabled(hasLink);
  }
  // Hidden while it has the focus, it would hand it to a button that closes or deletes.
  if (isShared && cancelButton_.hasFocus()) link_.setFocus();
  progressArea_.setVisible(!isShared);
  endArea_.setVisible(isShared);
  endArea_.setEnabled(phase != Phase::deleting);
  cancelButton_.setEnabled(phase != Phase::cleaningUp);
  if (run_.isOver()) refresh_.stop();
  updateProgress();
}

void RunPage::showLink() {
  if (!link_.text().isEmpty()) return;
  link_.setText(run_.link());
  link_.setCursorPosition(0);
  qrCode_.setText(run_.link());
  announce(headline_, localized("run.link-ready"));
}

void RunPage::updateProgress() {
  const Phase phase = run_.phase();
  if (const QString text = headlineText(); text != headline_.text()) {
    headline_.setText(text);
    if (phase != Phase::uploading) announce(headline_, text);
  }
  // Without a range the bar moves to and fro.
  bar_.setRange(0, phase == Phase::uploading ? kBarSteps : 0);
  bar_.setTextVisible(phase == Phase::uploading);
  if (phase == Phase::uploading) {
    run_.updateEstimate();
    bar_.setValue(static_cast<int>(run_.fraction() * kBarSteps));
    announceTenth();
  }
  if (phase == Phase::uploading || phase == Phase::done) model_.setUploaded(run_.filesDone());
  detail_.setText(detailText());
  detail_.setVisible(!detail_.text().isEmpty());
}

void RunPage::announceTenth() {
  constexpr int kStepsPerTenth = kBarSteps / 10;
  const int tenths = bar_.value() / kStepsPerTenth;
  if (tenths <= announcedTenths_) return;
  announcedTenths_ = tenths;
  announce(headline_, localized("run.percent").arg(tenths * 10));
}

QString RunPage::detailText() const {
  if (run_.phase() != Phase::uploading) return {};
  QStringList parts;
  if (run_.fileCount() > 1) {
    parts.append(localized("run.files").arg(run_.filesDone()).arg(run_.fileCount()));
  }
  if (const auto remaining = run_.remaining(); remaining && remaining->count() > 0) {
    const QString time = QString::fromStdString(host::durationText(*remaining));
    parts.append(localized("run.remaining").arg(time));
  }
  return parts.join(" · ");
}

QString RunPage::headlineText() const {
  switch (run_.phase()) {
    case Phase::fingerprinting:
      return localized("run.fingerprinting");
    case Phase::creating:
      return localized("run.creating");
    case Phase::uploading:
      return localized("run.uploading");
    case Phase::done:
      return localized(run_.isSessionLeft() ? "run.not-deleted" : "run.done");
    case Phase::deleting:
      return localized("run.deleting");
    case Phase::cleaningUp:
    case Phase::failed:
    case Phase::cancelled:
    case Phase::deleted:
      break;
  }
  return localized(run_.hasFailed() ? "run.failing" : "run.cancelling");
}

void RunPage::copyLink() {
  if (run_.link().isEmpty()) return;
  QApplication::clipboard()->setText(run_.link());
  isLinkPassedOn_ = true;
  copyButton_.setText(localized("run.copied"));
  copiedTimer_.start(kCopiedDuration);
}

bool RunPage::eventFilter(QObject* watched, QEvent* event) {
  // Without a selection the field would take the key and copy nothing.
  const bool isCopy = watched == &link_ && event->type() == QEvent::KeyPress &&
                      static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy);
  if (!isCopy || link_.hasSelectedText()) return QWidget::eventFilter(watched, event);
  copyLink();
  return true;
}

void RunPage::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn || event->matches(QKeySequence::Copy)) return copyLink();
  QWidget::keyPressEvent(event);
}

}  // namespace quillbay::desktop
