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
#include <utility>

#include "Accessibility.h"
#include "CopyButton.h"
#include "ElidedLabel.h"
#include "Localized.h"
#include "PageLayout.h"
#include "QRCodeView.h"
#include "RowsView.h"
#include "ShownText.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/ShareRun.h"

namespace quillbay::desktop {
namespace {

using Activity = cloud::SessionActivity;
using Phase = host::ShareRun::Phase;
using Result = host::ShareRun::Result;

constexpr int kBarSteps = 1000;
constexpr int kMostRows = 8;

int barValue(double fraction) { return static_cast<int>(fraction * kBarSteps); }

}  // namespace

RunPage::RunPage(const host::ShareRun& run, Actions actions)
    : run_(run),
      actions_(std::move(actions)),
      headline_(*new QLabel),
      link_(*new QLineEdit),
      copyButton_(*new CopyButton),
      openButton_(*new QPushButton(localized("run.open"))),
      qrCodeButton_(*new QPushButton(localized("run.qr-code"))),
      qrCode_(*new QRCodeView),
      progressArea_(*new QWidget),
      bar_(*new QProgressBar),
      detail_(*new QLabel),
      retryButton_(*new QPushButton(localized("run.retry"))),
      cancelButton_(*new QPushButton(localized("run.cancel"))),
      endArea_(*new QWidget),
      againButton_(*new QPushButton(localized("run.again"))),
      deleteButton_(*new QPushButton(localized("run.delete"))),
      sharesButton_(*new QPushButton(localized("shares.show"))),
      closeButton_(*new QPushButton(localized("run.close"))) {
  setUpFiles();
  setUpLink();
  setUpProgress();
  setUpButtons();
  layOut();
  // From the first moment: the focus does not move when the link arrives.
  setFocusProxy(&link_);
  showPhase();
}

void RunPage::setUpFiles() {
  const host::SharedFiles& files = run_.files();
  std::vector<FileListModel::File> rows;
  rows.reserve(files.count());
  for (std::size_t index = 0; index < files.count(); ++index) {
    rows.push_back({shownName(files.urls()[index].lastPathComponent()), files.byteCount(index)});
  }
  if (!rows.empty()) {
    filesSummary_ = filesText(rows.front().name, rows.size(), files.totalByteCount());
  }
  model_.setFiles(std::move(rows));
}

void RunPage::setUpLink() {
  link_.setReadOnly(true);
  link_.setPlaceholderText(localized("run.link.placeholder"));
  link_.setAccessibleName(localized("run.link"));
  link_.installEventFilter(this);
  qrCodeButton_.setCheckable(true);
  qrCode_.hide();
  // However it is copied: by the button, by a key, by the field's menu.
  connect(QApplication::clipboard(), &QClipboard::dataChanged, this, [this] {
    const QClipboard& clipboard = *QApplication::clipboard();
    const bool isLink = clipboard.ownsClipboard() && clipboard.text() == link();
    isLinkPassedOn_ = isLinkPassedOn_ || isLink;
  });
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
  detail_.setWordWrap(true);
}

void RunPage::setUpButtons() {
  connect(&copyButton_, &QPushButton::clicked, this, &RunPage::copyLink);
  connect(&openButton_, &QPushButton::clicked, this, &RunPage::openLink);
  connect(&qrCodeButton_, &QPushButton::toggled, this, [this](bool isShown) {
    qrCode_.setVisible(isShown);
    isLinkPassedOn_ = true;
  });
  connect(&retryButton_, &QPushButton::clicked, this, [this] { actions_.retryNow(); });
  connect(&cancelButton_, &QPushButton::clicked, this, [this] { actions_.cancel(); });
  connect(&againButton_, &QPushButton::clicked, this, [this] { actions_.shareMore(); });
  connect(&deleteButton_, &QPushButton::clicked, this, [this] { actions_.deleteLink(); });
  connect(&sharesButton_, &QPushButton::clicked, this, [this] { actions_.showShares(); });
  connect(&closeButton_, &QPushButton::clicked, this, [this] { actions_.close(); });
}

void RunPage::layOut() {
  auto* const files = new ElidedLabel(filesSummary_);
  auto* const linkLine = new QHBoxLayout;
  for (QPushButton* const button : linkButtons()) linkLine->addWidget(button);
  linkLine->addStretch();

  // Cancel is at the end of the line, where the harmless Shares is afterwards; what ends or deletes
  // is at its start: a click that comes late must not hit it.
  auto* const progress = new QHBoxLayout(&progressArea_);
  progress->addWidget(&bar_, 1);
  progress->addWidget(&retryButton_);
  progress->addWidget(&cancelButton_);
  auto* const end = new QHBoxLayout(&endArea_);
  for (QPushButton* const button : {&againButton_, &deleteButton_, &closeButton_}) {
    end->addWidget(button);
  }
  end->addStretch();
  end->addWidget(&sharesButton_);
  for (QHBoxLayout* const line : {progress, end}) line->setContentsMargins(0, 0, 0, 0);

  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, kPageMargin);
  layout->setSpacing(kPageSpacing);
  layout->addWidget(&headline_);
  layout->addWidget(files);
  layout->addWidget(&link_);
  layout->addLayout(linkLine);
  layout->addWidget(&qrCode_, 0, Qt::AlignHCenter);
  layout->addWidget(&progressArea_);
  layout->addWidget(&endArea_);
  layout->addWidget(&detail_);
  auto* const list = new RowsView(model_, FileListModel::name, kMostRows);
  list->setAccessibleName(localized("files.list"));
  list->setHeaderHidden(true);
  layout->addWidget(list, 1);
  for (QPushButton* const button : findChildren<QPushButton*>()) {
    // Return presses the button that has the focus.
    button->setAutoDefault(true);
  }
}

std::array<QPushButton*, 3> RunPage::linkButtons() const {
  return {&copyButton_, &openButton_, &qrCodeButton_};
}

RunPage::Stage RunPage::stage() const {
  if (deletion_ == Deletion::running) return Stage::deleting;
  switch (run_.phase()) {
    case Phase::working:
      break;
    case Phase::waiting:
      return Stage::waiting;
    case Phase::cancelling:
    case Phase::deleting:
      return Stage::cleaningUp;
    case Phase::over:
      return run_.result() == Result::shared ? Stage::done : Stage::cleaningUp;
  }
  const Activity::Step step = run_.activity().step;
  if (step < Activity::Step::creatingSession) return Stage::reading;
  return run_.session() ? Stage::uploading : Stage::creating;
}

void RunPage::showPhase() {
  const Stage now = stage();
  const bool isShared = now == Stage::done || now == Stage::deleting;
  const bool hasLink = run_.session() && now != Stage::cleaningUp;
  if (hasLink) showLink();
  for (QPushButton* const button : linkButtons()) button->setEnabled(hasLink);
  // Hidden while they have the focus, they would hand it to a button that cancels or deletes.
  const bool hidesFocus =
      (isShared && cancelButton_.hasFocus()) || (now != Stage::waiting && retryButton_.hasFocus());
  if (hidesFocus) link_.setFocus();
  progressArea_.setVisible(!isShared);
  retryButton_.setVisible(now == Stage::waiting);
  cancelButton_.setEnabled(now != Stage::cleaningUp);
  endArea_.setVisible(isShared);
  endArea_.setEnabled(now != Stage::deleting);
  updateProgress();
}

void RunPage::showDeletion(Deletion deletion) {
  deletion_ = deletion;
  showPhase();
}

QString RunPage::link() const {
  const auto& session = run_.session();
  return session ? textOf(session->url()) : QString();
}

void RunPage::showLink() {
  if (!link_.text().isEmpty()) return;
  link_.setText(link());
  link_.setCursorPosition(0);
  qrCode_.setText(link());
  announce(headline_, localized("run.link-ready"));
}

void RunPage::updateProgress() {
  updateHeadline();
  updateBar();
  updateFiles();
  detail_.setText(detailText());
  detail_.setVisible(!detail_.text().isEmpty());
}

void RunPage::updateHeadline() {
  const QString text = headlineText();
  if (text == headline_.text()) return;
  headline_.setText(text);
  // Of the seconds until the next try, only the first are said.
  const bool isWaiting = stage() == Stage::waiting;
  const int attempt = isWaiting ? run_.attempt() : 0;
  const bool isSaid = isWaiting && attempt == std::exchange(announcedAttempt_, attempt);
  if (!isWaiting) announcedAttempt_ = 0;
  if (!isSaid && stage() != Stage::uploading) announce(headline_, text);
}

void RunPage::updateBar() {
  const Stage now = stage();
  const Activity& activity = run_.activity();
  std::optional<double> fraction;
  if (now == Stage::reading && activity.totalByteCount > 0) {
    fraction = static_cast<double>(activity.fingerprintedByteCount) /
               static_cast<double>(activity.totalByteCount);
  } else if (now == Stage::uploading || (now == Stage::waiting && run_.session())) {
    fraction = run_.estimate().fraction();
  }
  // Without a range the bar moves to and fro.
  bar_.setRange(0, fraction ? kBarSteps : 0);
  bar_.setTextVisible(fraction.has_value());
  if (fraction) bar_.setValue(barValue(*fraction));
  if (now == Stage::uploading) announceTenth();
}

void RunPage::updateFiles() {
  const Stage now = stage();
  const bool isUploading = now == Stage::uploading;
  if (!isUploading && now != Stage::waiting && now != Stage::done) return;
  const auto& file = run_.activity().file;
  std::optional<FileListModel::Upload> upload;
  if (isUploading && file) {
    constexpr int kPercent = 100;
    upload = {file->index, static_cast<int>(run_.sentFractionOfFile() * kPercent)};
  }
  model_.setProgress(run_.arrivedItems(), upload);
}

void RunPage::announceTenth() {
  constexpr int kStepsPerTenth = kBarSteps / 10;
  const int tenths = bar_.value() / kStepsPerTenth;
  if (tenths <= announcedTenths_) return;
  announcedTenths_ = tenths;
  announce(headline_, localized("run.percent").arg(tenths * 10));
}

QString RunPage::detailText() const {
  switch (stage()) {
    case Stage::uploading:
      return uploadText();
    case Stage::waiting:
      return QString::fromStdString(host::sentence(run_.failure()->advice.whatFailed));
    case Stage::done:
      return localized(run_.isRemembered() ? "run.remembered" : "run.not-remembered");
    default:
      return {};
  }
}

QString RunPage::uploadText() const {
  QStringList parts;
  const auto fileCount = static_cast<qint64>(run_.files().count());
  if (fileCount > 1) {
    parts.append(localized("run.files", fileCount).arg(run_.arrivedFileCount()).arg(fileCount));
  }
  const auto speed = static_cast<std::uint64_t>(run_.estimate().speed());
  if (speed > 0) parts.append(localized("run.speed").arg(byteCountText(speed)));
  if (const auto remaining = run_.estimate().remaining(); remaining && remaining->count() > 0) {
    const QString time = QString::fromStdString(host::durationText(*remaining));
    parts.append(localized("run.remaining").arg(time));
  }
  return parts.join(" · ");
}

QString RunPage::headlineText() const {
  switch (stage()) {
    case Stage::reading:
      return localized(run_.session() ? "run.checking" : "run.fingerprinting");
    case Stage::creating:
      return localized("run.creating");
    case Stage::uploading:
      return localized("run.uploading");
    case Stage::waiting:
      return localized("run.waiting")
          .arg(run_.untilNextTry().count())
          .arg(run_.attempt())
          .arg(run_.retryCount());
    case Stage::done:
      return localized(deletion_ == Deletion::unconfirmed ? "run.not-deleted" : "run.done");
    case Stage::deleting:
      return localized("run.deleting");
    case Stage::cleaningUp:
      break;
  }
  return localized(run_.result() == Result::failed ? "run.failing" : "run.cancelling");
}

void RunPage::copyLink() {
  if (!run_.session()) return;
  copyButton_.copy(link());
  isLinkPassedOn_ = true;
}

void RunPage::openLink() { isLinkPassedOn_ |= QDesktopServices::openUrl(QUrl(link())); }

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
