#pragma once

#include <atomic>
#include <memory>

namespace quillbay::platform {

/// Internal: an object of the whole process, made with its first use and never destroyed, so that
/// it can be used while static objects are being torn down. Declare it `constinit`. Any thread.
///
/// Unlike a function's static it has no guard: a child that is forked while another thread
/// constructs a static waits for that thread for ever. Threads that come first at the same time
/// make one object each, and all but one are destroyed, so making it must have no other effect.
template <class T>
class OnFirstUse {
 public:
  constexpr OnFirstUse() = default;
  OnFirstUse(const OnFirstUse&) = delete;
  OnFirstUse& operator=(const OnFirstUse&) = delete;

  T& get() {
    return get([] { return std::make_unique<T>(); });
  }

  /// `make` returns a `std::unique_ptr<T>`.
  template <class Make>
  T& get(Make make) {
    if (T* const made = object_.load(std::memory_order_acquire)) return *made;
    std::unique_ptr<T> mine = make();
    T* first = nullptr;
    if (!object_.compare_exchange_strong(first, mine.get(), std::memory_order_acq_rel)) {
      return *first;
    }
    return *mine.release();
  }

 private:
  std::atomic<T*> object_ = nullptr;
};

}  // namespace quillbay::platform
