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
constexpr std::chrono::milliseconds kRefreshInterval{200};
constexpr std::chrono::seconds kCopiedDuration{2};

QString durationText(std::chrono::seconds duration) {
  return QString::fromStdString(host::durationText(duration));
}

}  // namespace

RunPage::RunPage(ShareRun& run, const QString& filesSummary, Actions actions)
    : run_(run),
      actions_(std::move(actions)),
      headline_(*new QLabel),
      linkArea_(*new QWidget),
      link_(*new QLineEdit),
      copyButton_(*new QPushButton(localized("run.copy"))),
      openButton_(*new QPushButton(localized("run.open"))),
      qrCodeButton_(*new QPushButton(localized("run.qr-code"))),
      qrCode_(*new QRCodeView),
      bar_(*new QProgressBar),
      detail_(*new QLabel),
      cancelButton_(*new QPushButton(localized("run.cancel"))),
      againButton_(*new QPushButton(localized("run.again"))),
      closeButton_(*new QPushButton(localized("run.close"))) {
  setUpLink();
  setUpProgress();
  layOut(filesSummary);
  showPhase();
}

void RunPage::setUpLink() {
  link_.setReadOnly(true);
  link_.setAccessibleName(localized("run.link"));
  connect(&copyButton_, &QPushButton::clicked, this, &RunPage::copyLink);
  connect(&openButton_, &QPushButton::clicked, this,
          [this] { QDesktopServices::openUrl(QUrl(run_.link())); });
  qrCodeButton_.setCheckable(true);
  qrCode_.hide();
  connect(&qrCodeButton_, &QPushButton::toggled, &qrCode_, &QWidget::setVisible);
  copiedTimer_.setSingleShot(true);
  connect(&copiedTimer_, &QTimer::timeout, this,
          [this] { copyButton_.setText(localized("run.copy")); });
  // The button says something else for a while: it must not change its size.
  const QString copied = localized("run.copied");
  const int extra =
      fontMetrics().horizontalAdvance(copied) - fontMetrics().horizontalAdvance(copyButton_.text());
  copyButton_.setMinimumWidth(copyButton_.sizeHint().width() + qMax(0, extra));
  linkArea_.hide();
}

void RunPage::setUpProgress() {
  QFont bold = headline_.font();
  bold.setBold(true);
  headline_.setFont(bold);
  headline_.setTextFormat(Qt::PlainText);
  headline_.setWordWrap(true);
  bar_.setAccessibleName(localized("run.progress"));
  detail_.setTextFormat(Qt::PlainText);
  connect(&cancelButton_, &QPushButton::clicked, this, [this] { actions_.cancel(); });
  connect(&againButton_, &QPushButton::clicked, this, [this] { actions_.shareMore(); });
  connect(&closeButton_, &QPushButton::clicked, this, [this] { actions_.close(); });
  for (QPushButton* const button :
       {&copyButton_, &openButton_, &qrCodeButton_, &cancelButton_, &againButton_, &closeButton_}) {
    // Return presses the button that has the focus.
    button->setAutoDefault(true);
  }
  connect(&refresh_, &QTimer::timeout, this, &RunPage::updateProgress);
  refresh_.start(kRefreshInterval);
}

void RunPage::layOut(const QString& filesSummary) {
  auto* const files = new QLabel(filesSummary);
  files->setTextFormat(Qt::PlainText);
  files->setWordWrap(true);
  files->setForegroundRole(QPalette::PlaceholderText);

  auto* const linkLayout = new QVBoxLayout(&linkArea_);
  linkLayout->setContentsMargins(0, 0, 0, 0);
  linkLayout->addWidget(&link_);
  auto* const linkButtons = new QHBoxLayout;
  for (QPushButton* const button : {&copyButton_, &openButton_, &qrCodeButton_}) {
    linkButtons->addWidget(button);
  }
  linkButtons->addStretch();
  linkLayout->addLayout(linkButtons);
  linkLayout->addWidget(&qrCode_, 0, Qt::AlignHCenter);

  auto* const endButtons = new QHBoxLayout;
  endButtons->addStretch();
  for (QPushButton* const button : {&cancelButton_, &againButton_, &closeButton_}) {
    endButtons->addWidget(button);
  }

  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, kPageMargin);
  layout->setSpacing(kSpacing);
  layout->addWidget(&headline_);
  layout->addWidget(files);
  layout->addWidget(&linkArea_);
  layout->addStretch();
  layout->addWidget(&bar_);
  layout->addWidget(&detail_);
  layout->addLayout(endButtons);
}

void RunPage::showPhase() {
  const Phase phase = run_.phase();
  const bool isDone = phase == Phase::done;
  const bool isMoving = phase == Phase::uploading || isDone;
  if (isMoving) showLink();
  linkArea_.setVisible(isMoving);
  // Without a range the bar moves to and fro.
  bar_.setRange(0, isMoving ? kBarSteps : 0);
  bar_.setTextVisible(isMoving);
  cancelButton_.setVisible(!isDone);
  cancelButton_.setEnabled(phase != Phase::cleaningUp);
  againButton_.setVisible(isDone);
  closeButton_.setVisible(isDone);
  updateProgress();
}

void RunPage::showLink() {
  if (!link_.text().isEmpty()) return;
  link_.setText(run_.link());
  link_.setCursorPosition(0);
  qrCode_.setText(run_.link());
  linkArea_.show();
  // One key copies it.
  copyButton_.setFocus(Qt::OtherFocusReason);
}

void RunPage::updateProgress() {
  const Phase phase = run_.phase();
  headline_.setText(headlineText());
  if (phase == Phase::done) {
    bar_.setValue(kBarSteps);
    refresh_.stop();
  }
  if (phase == Phase::uploading) {
    run_.updateEstimate();
    bar_.setValue(static_cast<int>(run_.fraction() * kBarSteps));
  }
  if (phase != Phase::uploading && phase != Phase::done) return detail_.clear();
  QString detail = localized("run.files").arg(run_.filesDone()).arg(run_.fileCount());
  const auto remaining = run_.remaining();
  if (phase == Phase::uploading && remaining) {
    detail += " · " + localized("run.remaining").arg(durationText(*remaining));
  }
  detail_.setText(detail);
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
      return localized("run.done");
    case Phase::cleaningUp:
    case Phase::failed:
    case Phase::cancelled:
      break;
  }
  return localized("run.cancelling");
}

void RunPage::copyLink() {
  QApplication::clipboard()->setText(run_.link());
  copyButton_.setText(localized("run.copied"));
  copiedTimer_.start(kCopiedDuration);
}

void RunPage::keyPressEvent(QKeyEvent* event) {
  // Of a part of the link, the field has copied that part by now.
  if (event->matches(QKeySequence::Copy) && !run_.link().isEmpty()) return copyLink();
  QWidget::keyPressEvent(event);
}

}  // namespace quillbay::desktop
