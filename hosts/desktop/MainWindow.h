#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/ui/ShareViewController.h>

#include <QPointer>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "FileSelection.h"
#include "ShareRun.h"

class QLabel;
class QMessageBox;
class QStackedLayout;

namespace quillbay::desktop {

class DropPage;
class RunPage;

/// The window: asks for files, shows the share sheet, then the run. Files may be dropped on it as
/// long as nothing runs. Main thread only.
class MainWindow : public QWidget {
 public:
  /// `instanceIdentifier`: who this installation is for the service.
  MainWindow(std::string instanceIdentifier, const std::vector<std::string>& paths);
  ~MainWindow() override;

  /// Ends what runs, deletes its session, and closes the window, without a question.
  void cancelAndClose();

  /// Whether a run was cut short: a file may still be read, or an upload be on its way.
  bool hasAbandonedWork() const { return hasAbandonedWork_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  bool isRunning() const { return run_ && !run_->isOver(); }

  void chooseFiles();
  void filesAdded(const QStringList& problems);
  void makeForm();
  QWidget* makeFilesLine();
  void startAnew();

  void startRun(const cloud::SessionConfiguration& configuration);
  void runChanged();
  void runCutShort();
  void removePage(QWidget* page);

  QMessageBox* makeMessage(const QString& title, const QString& text);
  void showFailure();
  void showLeftover();
  void askBeforeClosing();

  const std::string instanceIdentifier_;
  FileSelection files_;
  std::unique_ptr<ShareRun> run_;
  std::shared_ptr<cloud::ShareViewController> sheet_;
  // Children of this widget; the last three are absent at times.
  QStackedLayout& pages_;
  DropPage& dropPage_;
  QWidget* formPage_ = nullptr;
  QLabel* filesLabel_ = nullptr;
  RunPage* runPage_ = nullptr;
  QPointer<QMessageBox> closeQuestion_;
  bool isClosing_ = false;
  bool hasAbandonedWork_ = false;
};

}  // namespace quillbay::desktop
