#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "FileListModel.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace quillbay::desktop {

class FileSelection;
class QRCodeView;
class ShareRun;

/// Shows one run: what is happening, the link as soon as it exists, one bar, the files. Main thread
/// only.
class RunPage : public QWidget {
 public:
  /// What the user asked for.
  struct Actions {
    std::function<void()> cancel;
    std::function<void()> shareMore;
    std::function<void()> deleteLink;
    std::function<void()> close;
  };

  /// `run` and `files` outlive the page.
  RunPage(ShareRun& run, const FileSelection& files, Actions actions);

  /// Shows the run as it is now. Call it after each change of its phase.
  void showPhase();

  /// Copies the link, and shows that it did.
  void copyLink();
  /// Whether the link was copied, opened or shown as a QR code: it is not lost with this page.
  bool isLinkPassedOn() const { return isLinkPassedOn_; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void setUpLink();
  void setUpProgress();
  void setUpButtons();
  void layOut(const QString& filesSummary);
  void showLink();
  void updateProgress();
  void announceTenth();
  QString headlineText() const;
  QString detailText() const;

  ShareRun& run_;
  const Actions actions_;
  FileListModel model_;
  // Children of this widget, made in the constructor.
  QLabel& headline_;
  QLineEdit& link_;
  QPushButton& copyButton_;
  QPushButton& openButton_;
  QPushButton& qrCodeButton_;
  QRCodeView& qrCode_;
  QWidget& progressArea_;
  QProgressBar& bar_;
  QLabel& detail_;
  QPushButton& cancelButton_;
  QWidget& endArea_;
  QPushButton& againButton_;
  QPushButton& deleteButton_;
  QPushButton& closeButton_;
  QTimer refresh_;
  QTimer copiedTimer_;
  bool isLinkPassedOn_ = false;
  int announcedTenths_ = 0;
};

}  // namespace quillbay::desktop
