#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace quillbay::platform {

/// Ends an observation when destroyed. It may outlive what is observed. Main queue only.
class Observation {
 public:
  /// Observes nothing.
  Observation() = default;
  /// Keeps `registration` until the observation ends: what an object hands out.
  explicit Observation(std::shared_ptr<void> registration)
      : registration_(std::move(registration)) {}

 private:
  std::shared_ptr<void> registration_;
};

/// Internal: the observers of one object. Main queue only.
template <class Subject>
class ObserverList {
 public:
  /// Gets the object after its change.
  using Observer = std::function<void(const Subject&)>;

  /// Adds `observer`, which is called until the observation that is returned has ended.
  [[nodiscard]] Observation add(Observer observer) {
    auto registration = std::make_shared<Observer>(std::move(observer));
    observers_.push_back(registration);
    return Observation(std::move(registration));
  }

  /// Also forgets the observers whose observation has ended.
  bool isEmpty() {
    std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
    return observers_.empty();
  }

  /// Calls all observers. Each may add observers and end any observation.
  void notify(const Subject& subject) const {
    const auto observers = observers_;
    for (const auto& weakObserver : observers) {
      if (const auto observer = weakObserver.lock()) (*observer)(subject);
    }
  }

 private:
  std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace quillbay::platform
