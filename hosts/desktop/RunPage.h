#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace quillbay::desktop {

class QRCodeView;
class ShareRun;

/// Shows one run: what is happening, the link as soon as it exists, one bar. Main thread only.
class RunPage : public QWidget {
 public:
  /// What the user asked for.
  struct Actions {
    std::function<void()> cancel;
    std::function<void()> shareMore;
    std::function<void()> close;
  };

  /// `run` outlives the page.
  RunPage(ShareRun& run, const QString& filesSummary, Actions actions);

  /// Shows the run as it is now. Call it after each change of its phase.
  void showPhase();

  /// Copies the link, and shows that it did.
  void copyLink();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void setUpLink();
  void setUpProgress();
  void layOut(const QString& filesSummary);
  void showLink();
  void updateProgress();
  QString headlineText() const;

  ShareRun& run_;
  const Actions actions_;
  // Children of this widget, made in the constructor.
  QLabel& headline_;
  QWidget& linkArea_;
  QLineEdit& link_;
  QPushButton& copyButton_;
  QPushButton& openButton_;
  QPushButton& qrCodeButton_;
  QRCodeView& qrCode_;
  QProgressBar& bar_;
  QLabel& detail_;
  QPushButton& cancelButton_;
  QPushButton& againButton_;
  QPushButton& closeButton_;
  QTimer refresh_;
  QTimer copiedTimer_;
};

}  // namespace quillbay::desktop
