#pragma once

#include <QImage>
#include <QWidget>

namespace quillbay::desktop {

/// Shows a text as a QR code (ISO/IEC 18004), dark on light whatever the colours around it: not
/// every camera reads the inverse. Main thread only.
class QRCodeView : public QWidget {
 public:
  QRCodeView();

  /// A text too long for a code shows nothing.
  void setText(const QString& text);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  /// One pixel a module, with the quiet zone around it.
  QImage modules_;
};

}  // namespace quillbay::desktop
