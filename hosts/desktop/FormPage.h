#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/ui/ShareViewController.h>

#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "NoticePanel.h"

class QMimeData;

namespace quillbay::desktop {

class FilesPanel;
class FileSelection;

/// The files and the share sheet; above them, after a run that did not succeed, what became of it.
/// Return shares and Escape cancels from every control. Main thread only.
class FormPage : public QWidget {
 public:
  /// What the user asked for.
  struct Actions {
    std::function<void()> addFiles;
    std::function<void()> undoRemoval;
    std::function<void()> filesRemoved;
    std::function<void(const QMimeData& data)> dropFiles;
    std::function<void(const cloud::SessionConfiguration& configuration)> share;
    std::function<void()> cancel;
    std::function<void()> showShares;
  };

  /// `files` outlives the page.
  FormPage(FileSelection& files, Actions actions);

  /// Call it after each change of the files.
  void filesChanged();
  /// Absent: none is shown.
  void showNotice(const std::optional<Notice>& notice) { notice_->show(notice); }

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void makeSheet();

  FileSelection& files_;
  const Actions actions_;
  // Children of this widget, made in the constructor.
  NoticePanel* notice_ = nullptr;
  FilesPanel* filesPanel_ = nullptr;
  std::shared_ptr<cloud::ShareViewController> sheet_;
};

}  // namespace quillbay::desktop
