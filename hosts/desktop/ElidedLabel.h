#pragma once

#include <QLabel>

namespace quillbay::desktop {

/// One line of plain text that is shortened in the middle where there is no room for all of it.
/// Main thread only.
class ElidedLabel : public QLabel {
 public:
  explicit ElidedLabel(const QString& text);

  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillbay::desktop
