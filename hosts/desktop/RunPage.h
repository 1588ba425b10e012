#pragma once

#include <QWidget>
#include <array>
#include <functional>

#include "FileListModel.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace quillbay::host {
class ShareRun;
}

namespace quillbay::desktop {

class CopyButton;
class QRCodeView;

/// Shows one run: what is happening, the link as soon as it exists, one bar, the files; and the
/// deletion of what it has shared. Main thread only.
class RunPage : public QWidget {
 public:
  /// What the user asked for.
  struct Actions {
    std::function<void()> cancel;
    std::function<void()> retryNow;
    std::function<void()> shareMore;
    std::function<void()> deleteLink;
    std::function<void()> showShares;
    std::function<void()> close;
  };

  /// The deletion of what a run has shared.
  enum class Deletion { none, running, unconfirmed };

  /// `run` outlives the page.
  RunPage(const host::ShareRun& run, Actions actions);

  /// Shows the run as it is now. Call it after each change of its phase.
  void showPhase();
  /// Brings the figures up to date. Call it a few times a second.
  void updateProgress();
  void showDeletion(Deletion deletion);

  /// Copies the link, and shows that it did.
  void copyLink();
  void openLink();
  /// Whether the link was copied, opened or shown as a QR code: it is not lost with this page.
  bool isLinkPassedOn() const { return isLinkPassedOn_; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class Stage { reading, creating, uploading, waiting, cleaningUp, done, deleting };

  void setUpFiles();
  void setUpLink();
  void setUpProgress();
  void setUpButtons();
  void layOut();
  std::array<QPushButton*, 3> linkButtons() const;
  Stage stage() const;
  QString link() const;
  void showLink();
  void updateHeadline();
  void updateBar();
  void updateFiles();
  void announceTenth();
  QString headlineText() const;
  QString detailText() const;
  QString uploadText() const;

  const host::ShareRun& run_;
  const Actions actions_;
  Deletion deletion_ = Deletion::none;
  FileListModel model_;
  QString filesSummary_;
  // Children of this widget, made in the constructor.
  QLabel& headline_;
  QLineEdit& link_;
  CopyButton& copyButton_;
  QPushButton& openButton_;
  QPushButton& qrCodeButton_;
  QRCodeView& qrCode_;
  QWidget& progressArea_;
  QProgressBar& bar_;
  QLabel& detail_;
  QPushButton& retryButton_;
  QPushButton& cancelButton_;
  QWidget& endArea_;
  QPushButton& againButton_;
  QPushButton& deleteButton_;
  QPushButton& sharesButton_;
  QPushButton& closeButton_;
  bool isLinkPassedOn_ = false;
  int announcedTenths_ = 0;
  int announcedAttempt_ = 0;
};

}  // namespace quillbay::desktop
