#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "Arguments.h"
#include "Dialogs.h"
#include "FileSelection.h"
#include "LinkDeletion.h"
#include "NoticePanel.h"
#include "Notifications.h"
#include "TaskbarProgress.h"
#include "WindowGuard.h"
#include "hosts/common/ShareRun.h"

class QMimeData;
class QStackedLayout;

namespace quillbay::host {
struct RememberedShare;
}

namespace quillbay::desktop {

class DropPage;
class FormPage;
class RunPage;
class SharesPage;

/// The window: asks for files, shows the share sheet, then the run; and the shares of earlier runs,
/// which can be continued and deleted. Files may be dropped on it as long as nothing runs. Main
/// thread only.
class MainWindow : public QWidget, private host::ShareRun::Presenter {
 public:
  /// `history` outlives the window.
  MainWindow(Arguments arguments, host::History& history);
  ~MainWindow() override;

  /// Ends what runs, deletes the session of a new share, and closes the window, all without a
  /// question and within five seconds.
  void terminate();
  /// What the user has to know of a window that was terminated; empty if nothing.
  QString lastWords() const;

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void sessionCreated(const cloud::Session& session, bool isDoomed) override;
  void failed(const host::ShareRun::Failure& failure) override;
  void phaseChanged() override;

  bool isRunning() const { return run_ && run_->phase() != host::ShareRun::Phase::over; }
  bool isEditing() const;
  bool isShared() const;
  bool hasUnseenLink() const;
  bool wouldLoseLink() const;
  QString link() const;

  void chooseFiles();
  void dropFiles(const QMimeData& dropped);
  void undoRemoval();
  void filesChanged();
  void filesAdded(const QStringList& problems);
  void showProblems(const QStringList& problems);
  void makeForm();

  void startRun(const cloud::SessionConfiguration& configuration);
  void resume(const host::RememberedShare& share);
  void makeRun(const std::string& instanceIdentifier,
               const cloud::SessionConfiguration& configuration, host::SharedFiles files);
  void beginRun();
  void tick();
  void runShared();
  void runEnded();
  void leaveRun();
  void startAnew();

  void deleteShared();
  void deleteRemembered(const host::RememberedShare& share);
  void deleteLink(LinkDeletion::Share share,
                  std::function<void(const LinkDeletion::Result& result)> completion);
  void sharedDeletionEnded(const LinkDeletion::Result& result);
  void rememberedDeletionEnded(const host::RememberedShare& share,
                               const LinkDeletion::Result& result);
  void forget(const host::RememberedShare& share);
  void closeIfAsked();

  void showPage(QWidget& page);
  void showHome();
  /// Absent: what is wrong with the history, if anything.
  void showShares(const std::optional<Notice>& notice = {});
  void leaveShares();
  std::optional<Notice> historyNotice() const;
  /// On the page that is shown: the form's, or that of the shares.
  void showNotice(const Notice& notice);
  void removePage(QWidget* page);
  void askBeforeClosing();
  void askBeforeDeleting(const QString& title, const std::function<void()>& action);
  /// Asks what becomes of a link that would be lost, if there is one; then does `action`.
  void settleLinkThen(const std::function<void()>& action);

  const Arguments arguments_;
  host::History& history_;
  FileSelection files_;
  WindowGuard guard_;
  Dialogs dialogs_;
  Notifications notifications_;
  TaskbarProgress taskbarProgress_;
  std::unique_ptr<host::ShareRun> run_;
  std::unique_ptr<LinkDeletion> deletion_;
  QTimer ticks_;
  // Children of this widget; the pages but for the first are absent at times.
  QStackedLayout& pages_;
  DropPage& dropPage_;
  FormPage* formPage_ = nullptr;
  RunPage* runPage_ = nullptr;
  SharesPage* sharesPage_ = nullptr;
  /// The run continues an earlier share: the files of the form are not its files.
  bool isContinuation_ = false;
  /// The user has answered what becomes of the link.
  bool isLinkSettled_ = false;
  /// Close as soon as nothing runs: because the user, or the system, asked for it.
  bool isClosing_ = false;
  bool isTerminating_ = false;
};

}  // namespace quillbay::desktop
