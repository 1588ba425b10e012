#pragma once

#include <QAbstractButton>

namespace quillbay::cloud {

/// The round button with a question mark. Main thread.
class HelpButton : public QAbstractButton {
 public:
  HelpButton();

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  /// The disk shows that the pointer is over it, and that it is pressed.
  QPalette::ColorRole diskRole() const;
};

}  // namespace quillbay::cloud
