#pragma once

#include <functional>

namespace quillbay::bench {

/// A port of loopback. Lives as long as the program.
class Listener {
 public:
  /// Any free port; throws if there is none.
  Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int port() const;

  /// Accepts connections on a thread of its own, and serves each on another. The socket becomes
  /// `serve`'s.
  void start(std::function<void(int socket)> serve) const;

 private:
  const int socket_;
};

/// A socket that sends at once what it is given; throws if there is no connection to be had.
int connectToLoopback(int port);

/// Without it, the end of a message would wait for the peer's acknowledgement.
void sendAtOnce(int socket);

}  // namespace quillbay::bench
