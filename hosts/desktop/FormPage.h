#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/ui/ShareViewController.h>

#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

class QLabel;

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
  };

  /// What became of a run.
  struct Notice {
    QString title;
    QString text;
  };

  /// `files` outlives the page.
  FormPage(FileSelection& files, Actions actions);

  /// Call it after each change of the files.
  void filesChanged();
  /// Absent: none is shown. The text can be selected: it may hold a link.
  void showNotice(const std::optional<Notice>& notice);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* makeNotice();
  void makeSheet();

  FileSelection& files_;
  const Actions actions_;
  // Children of this widget, made in the constructor.
  QWidget* notice_ = nullptr;
  QLabel* noticeTitle_ = nullptr;
  QLabel* noticeText_ = nullptr;
  FilesPanel* filesPanel_ = nullptr;
  std::shared_ptr<cloud::ShareViewController> sheet_;
};

}  // namespace quillbay::desktop
