#pragma once

#include <QString>
#include <QWidget>
#include <optional>

class QFrame;
class QLabel;

namespace quillbay::desktop {

/// What became of something the user had asked for.
struct Notice {
  QString title;
  QString text;
};

/// A notice above the content of a page, in a frame; screen readers say it. Main thread only.
class NoticePanel : public QWidget {
 public:
  NoticePanel();

  /// Absent: none is shown. The text can be selected: it may hold a link. The page is visible.
  void show(const std::optional<Notice>& notice);

 private:
  // Children of this widget.
  QFrame& frame_;
  QLabel& title_;
  QLabel& text_;
};

}  // namespace quillbay::desktop
