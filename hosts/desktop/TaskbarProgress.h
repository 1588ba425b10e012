#pragma once

#include <optional>

namespace quillbay::desktop {

/// The bar on the program's icon in the dock or task bar, where the desktop has one (Unity
/// LauncherEntry). Main thread only.
class TaskbarProgress {
 public:
  TaskbarProgress() = default;
  TaskbarProgress(const TaskbarProgress&) = delete;
  TaskbarProgress& operator=(const TaskbarProgress&) = delete;
  /// Takes the bar away.
  ~TaskbarProgress();

  /// 0 to 1; nothing: no bar. Tells the desktop of whole percents only.
  void show(std::optional<double> fraction);

 private:
  std::optional<int> shownPercent_;
};

}  // namespace quillbay::desktop
