#pragma once

#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/Observation.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace quillbay::platform {

/// Counts completed units of a total, its own and those of its children: a child that is done by
/// the fraction f contributes f times its pending units to its parent.
///
/// Main queue only. A parent owns its children until they finish, then keeps their units alone,
/// so that a run of many children stays small; a child holds its parent weakly.
class QUILLBAY_EXPORT Progress : public std::enable_shared_from_this<Progress> {
 public:
  /// Called on the main queue after a change, at most once a turn of it.
  using Observer = ObserverList<Progress>::Observer;

  /// Ends the observation when it is destroyed.
  using Observation = platform::Observation;

  /// `totalUnitCount` may be 0; the fraction is then 0 until a total is set.
  static std::shared_ptr<Progress> create(std::int64_t totalUnitCount);

  /// How many units are the whole, the children's pending units included.
  std::int64_t totalUnitCount() const { return totalUnitCount_; }
  /// `count`: 0 or more; less counts as 0.
  void setTotalUnitCount(std::int64_t count);

  /// Units completed by this object itself and by its finished children.
  std::int64_t completedUnitCount() const { return completedUnitCount_; }
  /// `count`: 0 or more; less counts as 0. It may be greater than the total.
  void setCompletedUnitCount(std::int64_t count);

  /// Sets both counts as one change.
  void setUnitCounts(std::int64_t completed, std::int64_t total);

  /// Adds a child worth `pendingUnitCount` of this object's units. A child has one parent: one
  /// that has another parent, or that is above this object, is not added.
  void addChild(const std::shared_ptr<Progress>& child, std::int64_t pendingUnitCount);

  /// 0 to 1, children included.
  double fractionCompleted() const;
  /// Whether a total is set, and as many units are completed.
  bool isFinished() const;

  /// Calls `observer` after changes, of the children too, until the observation is destroyed.
  [[nodiscard]] Observation observe(Observer observer);

 private:
  struct Child {
    std::shared_ptr<Progress> progress;
    std::int64_t pendingUnitCount;
  };

  explicit Progress(std::int64_t totalUnitCount) : totalUnitCount_(totalUnitCount) {}

  QUILLBAY_HIDDEN bool isSelfOrAncestor(const Progress& other) const;
  QUILLBAY_HIDDEN void didChange();
  QUILLBAY_HIDDEN void absorb(Progress& child);
  QUILLBAY_HIDDEN void scheduleNotification();
  QUILLBAY_HIDDEN void notify();

  std::int64_t totalUnitCount_;
  std::int64_t completedUnitCount_ = 0;
  std::vector<Child> children_;
  std::weak_ptr<Progress> parent_;
  ObserverList<Progress> observers_;
  bool isNotificationPending_ = false;
};

}  // namespace quillbay::platform
