#include "MainWindow.h"

#include <QuillbayCloud/ui/ShareViewController.h>

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QShortcut>
#include <QStackedLayout>
#include <chrono>
#include <utility>

#include "DropPage.h"
#include "FormPage.h"
#include "Localized.h"
#include "RunOutcome.h"
#include "RunPage.h"
#include "SharesPage.h"
#include "ShownText.h"
#include "hosts/common/Continuation.h"
#include "hosts/common/History.h"

namespace quillbay::desktop {
namespace {

using Phase = host::ShareRun::Phase;
using Result = host::ShareRun::Result;
using Fate = host::ShareRun::SessionFate;
using State = host::RememberedShare::State;

constexpr QSize kDropSize(460, 340);
constexpr QSize kSharesSize(680, 420);
constexpr qsizetype kMostProblemsShown = 8;
constexpr std::chrono::milliseconds kTickInterval{100};
constexpr std::chrono::seconds kCleanUpBound{5};

}  // namespace

MainWindow::MainWindow(Arguments arguments, host::History& history)
    : arguments_(std::move(arguments)),
      history_(history),
      guard_(*this),
      dialogs_(*this, guard_),
      notifications_(*this),
      pages_(*new QStackedLayout(this)),
      dropPage_(*new DropPage({.choose = [this] { chooseFiles(); },
                               .undoRemoval = [this] { undoRemoval(); },
                               .showShares = [this] { showShares(); }})) {
  setWindowTitle(localized("app.name"));
  setAcceptDrops(true);
  pages_.addWidget(&dropPage_);
  connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this,
          [] { cloud::ShareViewController::didSelectHelpButton(); });
  // In a text field the key undoes typing.
  connect(new QShortcut(QKeySequence::Undo, this), &QShortcut::activated, this,
          [this] { undoRemoval(); });
  ticks_.callOnTimeout([this] { tick(); });
  const QStringList problems = files_.add(arguments_.files);
  if (files_.isEmpty()) {
    resize(kDropSize);
  } else {
    makeForm();
  }
  // When the window is there for the message to appear on.
  QMetaObject::invokeMethod(
      this, [this, problems] { showProblems(problems); }, Qt::QueuedConnection);
}

MainWindow::~MainWindow() = default;

bool MainWindow::isEditing() const {
  const QWidget* const page = pages_.currentWidget();
  return page == &dropPage_ || page == formPage_;
}

bool MainWindow::isShared() const {
  return runPage_ != nullptr && run_->phase() == Phase::over && run_->result() == Result::shared;
}

QString MainWindow::link() const {
  const auto& session = run_->session();
  return session ? textOf(session->url()) : QString();
}

void MainWindow::chooseFiles() {
  auto* const dialog = new QFileDialog(this, localized("drop.choose").remove('&'));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFiles);
  connect(dialog, &QFileDialog::urlsSelected, this,
          [this](const QList<QUrl>& urls) { filesAdded(files_.add(urls)); });
  dialog->open();
}

void MainWindow::dropFiles(const QMimeData& dropped) { filesAdded(files_.add(dropped.urls())); }

void MainWindow::undoRemoval() {
  if (!isEditing()) return;
  files_.undoRemoval();
  filesChanged();
}

void MainWindow::filesAdded(const QStringList& problems) {
  filesChanged();
  showProblems(problems);
}

void MainWindow::showProblems(const QStringList& problems) {
  if (problems.isEmpty()) return;
  QStringList shown = problems.first(qMin(problems.size(), kMostProblemsShown));
  const qsizetype hidden = problems.size() - shown.size();
  if (hidden > 0) shown.append(localized("problem.more", hidden).arg(hidden));
  dialogs_.tell(localized("problem.title"), shown.join('\n'));
}

void MainWindow::filesChanged() {
  dropPage_.setCanUndo(files_.canUndoRemoval());
  if (!files_.isEmpty()) {
    if (formPage_ == nullptr) return makeForm();
    formPage_->filesChanged();
  }
  showHome();
}

void MainWindow::makeForm() {
  formPage_ = new FormPage(
      files_, {.addFiles = [this] { chooseFiles(); },
               .undoRemoval = [this] { undoRemoval(); },
               .filesRemoved = [this] { filesChanged(); },
               .dropFiles = [this](const QMimeData& dropped) { dropFiles(dropped); },
               .share = [this](const cloud::SessionConfiguration& chosen) { startRun(chosen); },
               .cancel = [this] { close(); },
               .showShares = [this] { showShares(); }});
  pages_.addWidget(formPage_);
  showPage(*formPage_);
}

void MainWindow::startRun(const cloud::SessionConfiguration& configuration) {
  if (isRunning()) return;
  formPage_->showNotice(std::nullopt);
  makeRun(arguments_.instanceIdentifier, configuration, host::SharedFiles(files_.paths()));
  isContinuation_ = false;
  beginRun();
}

void MainWindow::resume(const host::RememberedShare& share) {
  if (share.arrivedFileCount == share.fileCount) {
    history_.setState(share.identifier, State::complete);
    return showShares();
  }
  // The list may be old: another program may have begun since.
  if (!history_.claim(share.identifier)) {
    return showShares({{localized("in-use.title"), localized("in-use.message")}});
  }
  auto rest = host::Continuation::of(share, history_.files(share.identifier));
  makeRun(share.instanceIdentifier, rest.configuration, std::move(rest.files));
  run_->continueFrom(std::move(rest.share));
  isContinuation_ = true;
  beginRun();
}

void MainWindow::makeRun(const std::string& instanceIdentifier,
                         const cloud::SessionConfiguration& configuration,
                         host::SharedFiles files) {
  removePage(std::exchange(runPage_, nullptr));
  removePage(std::exchange(sharesPage_, nullptr));
  Presenter& presenter = *this;
  run_ = std::make_unique<host::ShareRun>(
      instanceIdentifier, configuration, std::move(files),
      host::ShareRun::Settings{.keepsUnfinishedSession = true,
                               .cancelBound = kCleanUpBound,
                               .failureBound = kCleanUpBound,
                               .network = arguments_.network,
                               .audience = host::FailureAudience::window},
      &history_, presenter);
}

void MainWindow::beginRun() {
  isLinkSettled_ = false;
  runPage_ = new RunPage(*run_, {.cancel = [this] { run_->cancel(); },
                                 .retryNow = [this] { run_->retryNow(); },
                                 .shareMore = [this] { settleLinkThen([this] { startAnew(); }); },
                                 .deleteLink = [this] { deleteShared(); },
                                 .showShares = [this] { showShares(); },
                                 .close = [this] { close(); }});
  pages_.addWidget(runPage_);
  showPage(*runPage_);
  runPage_->setFocus();
  ticks_.start(kTickInterval);
  run_->start();
}

void MainWindow::tick() {
  run_->tick();
  if (!isRunning()) return;
  runPage_->updateProgress();
  taskbarProgress_.show(run_->estimate().fraction());
}

void MainWindow::sessionCreated(const cloud::Session& /*session*/, bool /*isDoomed*/) {
  runPage_->showPhase();
}

void MainWindow::failed(const host::ShareRun::Failure& /*failure*/) {}

void MainWindow::phaseChanged() {
  runPage_->showPhase();
  if (isRunning()) return;
  ticks_.stop();
  taskbarProgress_.show(std::nullopt);
  dialogs_.withdrawQuestion();
  guard_.restart();
  isShared() ? runShared() : runEnded();
}

void MainWindow::runShared() {
  closeIfAsked();
  const QString shared = link();
  notifications_.show(localized("notice.done"), shared,
                      {{localized("run.copy"),
                        [this, shared] {
                          if (isShared() && link() == shared) return runPage_->copyLink();
                          QApplication::clipboard()->setText(shared);
                        }},
                       {localized("run.open"), [shared] { QDesktopServices::openUrl(shared); }}});
}

void MainWindow::runEnded() {
  const bool isUnfinished = run_->sessionFate() == Fate::unfinished;
  const auto notice = noticeOf(*run_);
  leaveRun();
  if (isUnfinished) {
    showShares();
    sharesPage_->select(run_->historyIdentifier());
  }
  if (notice) showNotice(*notice);
  if (run_->result() == Result::failed && !isClosing_) {
    notifications_.show(localized("notice.failed"), notice->text);
  }
  // A link that may still work has to be seen first.
  if (run_->sessionFate() == Fate::perhapsThere && !isTerminating_) isClosing_ = false;
  closeIfAsked();
}

/// Back to where it began.
void MainWindow::leaveRun() {
  removePage(std::exchange(runPage_, nullptr));
  isContinuation_ ? showShares() : showHome();
}

void MainWindow::startAnew() {
  if (!isContinuation_) {
    files_ = {};
    dropPage_.setCanUndo(false);
    removePage(std::exchange(formPage_, nullptr));
  }
  removePage(std::exchange(runPage_, nullptr));
  showHome();
}

void MainWindow::closeIfAsked() {
  if (std::exchange(isClosing_, false)) close();
}

void MainWindow::deleteShared() {
  askBeforeDeleting(localized("delete.title"), [this] {
    runPage_->showDeletion(RunPage::Deletion::running);
    deleteLink({*run_->session(), run_->instanceIdentifier(), run_->historyIdentifier()},
               [this](const auto& result) { sharedDeletionEnded(result); });
  });
}

void MainWindow::sharedDeletionEnded(const LinkDeletion::Result& result) {
  if (!result.isDeleted) return runPage_->showDeletion(RunPage::Deletion::unconfirmed);
  leaveRun();
  showNotice({localized("deleted.title"), localized("deleted.message")});
}

void MainWindow::deleteRemembered(const host::RememberedShare& share) {
  // Its link does not work any more.
  if (share.isExpired(std::chrono::system_clock::now())) return forget(share);
  askBeforeDeleting(localized("delete.named").arg(shownTitle(share)), [this, share] {
    sharesPage_->setBusy(true);
    deleteLink({share.session, share.instanceIdentifier, share.identifier},
               [this, share](const auto& result) { rememberedDeletionEnded(share, result); });
  });
}

void MainWindow::rememberedDeletionEnded(const host::RememberedShare& share,
                                         const LinkDeletion::Result& result) {
  sharesPage_->setBusy(false);
  const bool isOnRunPage = run_ && run_->historyIdentifier() == share.identifier;
  if (result.isDeleted && isOnRunPage) removePage(std::exchange(runPage_, nullptr));
  if (result.isDeleted) {
    return showShares({{localized("deleted.title"), localized("deleted.message")}});
  }
  const auto leftover = leftoverNotice(textOf(share.session.url()));
  showShares({{leftover.title, (result.reason + "\n\n" + leftover.text).trimmed()}});
  // The service may not know it any more: it must not stay in the list for ever.
  if (!result.isRefused) return;
  dialogs_.ask(localized("forget.title"), result.reason,
               {{"forget.keep", QMessageBox::RejectRole},
                {"forget.remove", QMessageBox::DestructiveRole, [this, share] { forget(share); }}});
}

void MainWindow::forget(const host::RememberedShare& share) {
  history_.forget(share.identifier);
  showShares();
}

void MainWindow::deleteLink(LinkDeletion::Share share,
                            std::function<void(const LinkDeletion::Result& result)> completion) {
  deletion_ = std::make_unique<LinkDeletion>(
      std::move(share), arguments_.network, history_,
      [this, completion = std::move(completion)](const LinkDeletion::Result& result) {
        const auto ended = std::move(deletion_);
        guard_.restart();
        completion(result);
        closeIfAsked();
      });
  deletion_->start();
}

void MainWindow::terminate() {
  isTerminating_ = true;
  isClosing_ = true;
  if (isRunning()) return run_->cancel();
  if (!deletion_) close();
}

QString MainWindow::lastWords() const {
  if (!isTerminating_ || !run_) return {};
  if (hasUnseenLink()) return localized("notice.done.link").arg(link());
  if (run_->sessionFate() != Fate::perhapsThere) return {};
  const auto leftover = leftoverNotice(link());
  return leftover.title + " " + leftover.text;
}

bool MainWindow::hasUnseenLink() const {
  return isShared() && !runPage_->isLinkPassedOn() && !isLinkSettled_;
}

bool MainWindow::wouldLoseLink() const { return hasUnseenLink() && !run_->isRemembered(); }

void MainWindow::showPage(QWidget& page) {
  if (pages_.currentWidget() == &page) return;
  pages_.setCurrentWidget(&page);
  guard_.restart();
}

void MainWindow::showHome() {
  if (!files_.isEmpty()) return showPage(*formPage_);
  showPage(dropPage_);
  dropPage_.setFocus();
}

void MainWindow::showShares(const std::optional<Notice>& notice) {
  if (sharesPage_ == nullptr) {
    sharesPage_ = new SharesPage(
        history_, {.resume = [this](const auto& share) { resume(share); },
                   .deleteShare = [this](const auto& share) { deleteRemembered(share); },
                   .back = [this] { leaveShares(); }});
    pages_.addWidget(sharesPage_);
    resize(size().expandedTo(kSharesSize));
  }
  sharesPage_->reload();
  const bool isNew = pages_.currentWidget() != sharesPage_;
  showPage(*sharesPage_);
  if (isNew) sharesPage_->setFocus();
  sharesPage_->showNotice(notice ? notice : historyNotice());
}

void MainWindow::leaveShares() {
  removePage(std::exchange(sharesPage_, nullptr));
  runPage_ == nullptr ? showHome() : showPage(*runPage_);
}

std::optional<Notice> MainWindow::historyNotice() const {
  if (!history_.problem()) return std::nullopt;
  const QString problem = QString::fromStdString(*history_.problem());
  return Notice{localized("history.title"), localized("history.message").arg(problem)};
}

void MainWindow::showNotice(const Notice& notice) {
  if (pages_.currentWidget() == formPage_) return formPage_->showNotice(notice);
  sharesPage_->showNotice(notice);
}

void MainWindow::removePage(QWidget* page) {
  if (page == nullptr) return;
  pages_.removeWidget(page);
  page->hide();
  // One of its buttons may be the one that has just called.
  page->deleteLater();
}

void MainWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (!event->spontaneous()) guard_.restart();
}

void MainWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  // Other programs may have changed the history meanwhile.
  const bool isBack = event->type() == QEvent::ActivationChange && isActiveWindow();
  if (isBack && sharesPage_ != nullptr) sharesPage_->reload();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  const bool isBusy = isRunning() || deletion_;
  const bool mayClose = !isBusy && (isTerminating_ || !wouldLoseLink());
  if (mayClose) return event->accept();
  event->ignore();
  if (!isBusy) return settleLinkThen([this] { close(); });
  const bool isEnding =
      deletion_ || run_->phase() == Phase::cancelling || run_->phase() == Phase::deleting;
  isEnding ? static_cast<void>(isClosing_ = true) : askBeforeClosing();
}

void MainWindow::askBeforeClosing() {
  const Dialogs::Answer goOn{"close.go-on", QMessageBox::RejectRole};
  const Dialogs::Answer stop{"close.later", QMessageBox::AcceptRole, [this] {
                               isClosing_ = true;
                               run_->suspend();
                             }};
  const auto cancel = [this] {
    isClosing_ = true;
    run_->cancel();
  };
  if (!run_->session()) {
    return dialogs_.ask(localized("close.early.title"), localized("close.early.message"),
                        {goOn, {"close.early.cancel", QMessageBox::DestructiveRole, cancel}});
  }
  const QString title = localized("close.title");
  if (isContinuation_)
    return dialogs_.ask(title, localized("close.remembered.message"), {goOn, stop});
  const Dialogs::Answer cancelAndDelete{"close.cancel", QMessageBox::DestructiveRole, cancel};
  if (!run_->isRemembered()) {
    return dialogs_.ask(title, localized("close.message"), {goOn, cancelAndDelete});
  }
  dialogs_.ask(title, localized("close.remembered.message"), {goOn, stop, cancelAndDelete});
}

void MainWindow::askBeforeDeleting(const QString& title, const std::function<void()>& action) {
  dialogs_.ask(title, localized("delete.message"),
               {{"delete.keep", QMessageBox::RejectRole},
                {"run.delete", QMessageBox::DestructiveRole, action}});
}

void MainWindow::settleLinkThen(const std::function<void()>& action) {
  if (!wouldLoseLink()) return action();
  const auto settle = [this, action] {
    isLinkSettled_ = true;
    action();
  };
  dialogs_.ask(localized("uncopied.title"), localized("uncopied.message").arg(link()),
               {{"run.copy", QMessageBox::AcceptRole,
                 [this, settle] {
                   runPage_->copyLink();
                   settle();
                 }},
                {"uncopied.drop", QMessageBox::DestructiveRole, settle},
                {"uncopied.back", QMessageBox::RejectRole}});
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (isEditing() && event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  dropFiles(*event->mimeData());
}

}  // namespace quillbay::desktop
