#pragma once

#include <atomic>
#include <utility>

namespace quillbay::platform {

/// Internal: a setting of the whole process, replaced a few times at most and read by any thread at
/// any time, also in a forked child and at exit. Declare it `constinit`.
///
/// It has no lock, which a thread that a forked child lacks could hold. What was replaced is kept,
/// since another thread may still be reading it.
template <class T>
class RarelySet {
 public:
  constexpr RarelySet() = default;
  RarelySet(const RarelySet&) = delete;
  RarelySet& operator=(const RarelySet&) = delete;

  void set(T value) {
    auto* const entry = new Entry{std::move(value), latest_.load()};
    while (!latest_.compare_exchange_weak(entry->replaced, entry)) {
    }
  }

  /// What was set last; a default value before that.
  T get() const {
    const Entry* const entry = latest_.load();
    return entry != nullptr ? entry->value : T();
  }

 private:
  struct Entry {
    const T value;
    Entry* replaced;
  };

  std::atomic<Entry*> latest_ = nullptr;
};

}  // namespace quillbay::platform
