#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>

#include <QAbstractButton>
#include <QMessageBox>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <initializer_list>
#include <memory>

#include "Arguments.h"
#include "FileSelection.h"
#include "ShareRun.h"
#include "WindowGuard.h"

class QMimeData;
class QStackedLayout;

namespace quillbay::desktop {

class DropPage;
class FormPage;
class RunPage;

/// The window: asks for files, shows the share sheet, then the run. Files may be dropped on it as
/// long as nothing runs. Main thread only.
class MainWindow : public QWidget {
 public:
  explicit MainWindow(Arguments arguments);
  ~MainWindow() override;

  /// Ends what runs, deletes its session, and closes the window, all without a question and within
  /// the bound of `ShareRun::cancel`.
  void terminate();
  /// What the user has to know of a window that was terminated; empty if nothing.
  QString lastWords() const;

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  /// A button of a question.
  struct Answer {
    const char* key;
    QMessageBox::ButtonRole role;
    std::function<void()> action = {};
  };

  bool isRunning() const { return run_ && !run_->isOver(); }
  bool isEditing() const { return runPage_ == nullptr; }
  bool wouldLoseLink() const;

  void chooseFiles();
  void dropFiles(const QMimeData& dropped);
  void undoRemoval();
  void filesChanged();
  void filesAdded(const QStringList& problems);
  void showProblems(const QStringList& problems);
  void makeForm();
  void startAnew();

  void startRun(const cloud::SessionConfiguration& configuration);
  void runChanged();
  void runEnded();
  void showOutcome();

  void showPage(QWidget& page);
  void removePage(QWidget* page);
  QMessageBox* makeMessage(const QString& title, const QString& text);
  void showDialog(QMessageBox& message);
  void ask(const QString& title, const QString& text, std::initializer_list<Answer> answers);
  void askBeforeClosing();
  void askBeforeDeleting();
  /// Asks what becomes of a link that was not copied, if there is one; then does `action`.
  void settleLinkThen(const std::function<void()>& action);

  const Arguments arguments_;
  FileSelection files_;
  std::unique_ptr<ShareRun> run_;
  WindowGuard guard_;
  // Children of this widget; the pages but for the first are absent at times.
  QStackedLayout& pages_;
  DropPage& dropPage_;
  FormPage* formPage_ = nullptr;
  RunPage* runPage_ = nullptr;
  QPointer<QMessageBox> question_;
  /// The user has answered what becomes of the link.
  bool isLinkSettled_ = false;
  /// Close as soon as nothing runs: because the user, or the system, asked for it.
  bool isClosing_ = false;
  bool isTerminating_ = false;
};

}  // namespace quillbay::desktop
