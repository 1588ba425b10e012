#pragma once

#include <QKeySequence>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <optional>

#include "NoticePanel.h"
#include "SharesModel.h"

class QLabel;
class QPushButton;

namespace quillbay::host {
class History;
}

namespace quillbay::desktop {

class CopyButton;
class RowsView;

/// The shares that the history remembers, but for the deleted ones, the newest first, and what can
/// be done with them. Return and Ctrl-C copy the link, Delete deletes, Escape goes back. Main
/// thread only.
class SharesPage : public QWidget {
 public:
  /// What the user asked for.
  struct Actions {
    std::function<void(const host::RememberedShare& share)> resume;
    std::function<void(const host::RememberedShare& share)> deleteShare;
    std::function<void()> back;
  };

  /// `history` outlives the page.
  SharesPage(host::History& history, Actions actions);

  /// Reads the history; the same share stays selected, or else the first one is.
  void reload();
  void select(std::int64_t identifier);
  /// Absent: none is shown.
  void showNotice(const std::optional<Notice>& notice) { notice_.show(notice); }
  /// While a deletion runs, no button can be pressed.
  void setBusy(bool isBusy);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void setUpList();
  void addKey(const char* textKey, QKeySequence::StandardKey key,
              const std::function<void()>& perform);
  void setUpButtons();
  void layOut();
  void updateButtons();
  const host::RememberedShare* current() const;
  QString link() const;
  void copyLink();

  host::History& history_;
  const Actions actions_;
  SharesModel model_;
  bool isBusy_ = false;
  // Children of this widget, made in the constructor.
  NoticePanel& notice_;
  QLabel& headline_;
  RowsView& list_;
  CopyButton& copyButton_;
  QPushButton& openButton_;
  QPushButton& resumeButton_;
  QPushButton& deleteButton_;
  QPushButton& backButton_;
};

}  // namespace quillbay::desktop
