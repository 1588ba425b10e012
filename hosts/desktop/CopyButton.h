#pragma once

#include <QPushButton>
#include <QTimer>

namespace quillbay::desktop {

/// "Copy Link"; after it has copied one it says so for a while. Main thread only.
class CopyButton : public QPushButton {
 public:
  CopyButton();

  void copy(const QString& link);

 private:
  QTimer copiedTimer_;
};

}  // namespace quillbay::desktop
