#pragma once

#include <QWidget>
#include <functional>

namespace quillbay::desktop {

/// What the window shows while there is nothing to share: an invitation to drop files, and a
/// button to choose some. Main thread only.
class DropPage : public QWidget {
 public:
  explicit DropPage(std::function<void()> choose);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillbay::desktop
