#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::fuzz {

/// The other end of every connection of this process: each `connect` to an Internet address ends
/// here, so that nothing reaches the network and no port is used up. It is the host's event loop,
/// too. Main thread, but for `take`.
///
/// It plays a script of bytes, with these marks among them:
///
///     \0h  ends a reply by closing its connection, and awaits the head of a request
///     \0b  awaits the body of that request as well
///     \0k  awaits the head of another request on the same connection, for a moment
///
/// After the script it closes every connection.
class WirePeer {
 public:
  static WirePeer& shared();

  /// Plays the script and runs the main queue until `isFinished`. Returns what was received on each
  /// connection.
  std::vector<std::string> play(std::string_view script, const std::function<bool()>& isFinished);

  /// The far end of a new connection. Any thread.
  void take(int descriptor);

 private:
  struct Connection {
    int descriptor;
    std::string received = {};
    std::size_t answeredRequestCount = 0;
    bool isAnswering = false;
    bool saidContinue = false;
    bool isOver = false;  ///< the other side has closed it
  };
  enum class Step { played, waiting, over };

  WirePeer();

  void post(std::function<void()> runOneItem);
  void runPosted();
  void acceptTaken();
  void receiveAll();
  /// False if nothing happened in that time; -1 waits for ever.
  bool awaitEvents(int milliseconds);
  Step playOne(std::string_view& script);
  Step awaitHead(bool onSameConnection);
  Step awaitBody();
  Step send(std::string_view bytes);
  void closeSending();

  int wakeup_;
  std::mutex mutex_;
  std::vector<int> taken_;                    // guarded by mutex_
  std::deque<std::function<void()>> posted_;  // guarded by mutex_

  /// In the order of their coming; a deque, since `current_` points into it.
  std::deque<Connection> connections_;
  Connection* current_ = nullptr;
};

}  // namespace quillbay::fuzz
