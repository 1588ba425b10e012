#pragma once

#include <chrono>
#include <optional>

namespace quillbay::platform {

/// Internal: one thread's waits for a kind of event, and whether the next one begins awake.
///
/// A thread that sleeps must be woken, which takes longer than many small things that it waits for.
/// While its waits were short on average, a wait therefore looks for the event again and again for
/// a moment, and lets other threads run in between, before the thread sleeps. While waits are long,
/// as with a distant server or nothing to do, every wait sleeps at once. This halves the time of a
/// share of 1,000 small files with a server on the same machine, and takes an eighth off its
/// processor time, since waking costs that, too. One thread.
class ShortWaits {
 public:
  /// One wait, as long as this object lives. Sleep during it, if the event has not come.
  class Wait {
   public:
    /// Returns when `condition` holds, or when it is time to sleep.
    template <class Condition>
    Wait(ShortWaits& waits, Condition condition) : waits_(waits), hasCome_(condition()) {
      // That was no wait.
      if (hasCome_) return;
      begin_ = Clock::now();
      if (!waits_.areShort()) return;
      const Clock::time_point sleepTime = *begin_ + kLongestSpin;
      while (!hasCome_ && Clock::now() < sleepTime) {
        letOthersRun();
        hasCome_ = condition();
      }
    }
    ~Wait() {
      if (begin_) waits_.add(Clock::now() - *begin_);
    }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    /// Whether the condition held.
    bool hasCome() const { return hasCome_; }

   private:
    ShortWaits& waits_;
    bool hasCome_;
    std::optional<std::chrono::steady_clock::time_point> begin_;
  };

 private:
  using Clock = std::chrono::steady_clock;

  /// Waking a thread takes about this long, and so does a small request to a near server. With
  /// 0.03 ms a tenth of the gain is lost; more than this gains nothing.
  static constexpr Clock::duration kLongestSpin = std::chrono::microseconds(60);
  /// An average below this is short. A wait for a large reply is longer, between many short ones.
  static constexpr Clock::duration kShort = std::chrono::microseconds(200);
  /// A longer wait counts as one of this length.
  static constexpr Clock::duration kLongestCounted = std::chrono::milliseconds(10);

  static void letOthersRun();
  bool areShort() const;
  void add(Clock::duration wait);

  Clock::duration average_ = kLongestCounted;
};

}  // namespace quillbay::platform
