#pragma once

#include <mutex>
#include <set>

namespace quillbay::sandbox {

/// The sockets of the open connections, so that stopping can wake their threads.
class OpenConnections {
 public:
  /// Keeps the socket listed while it lives; destroy it before the socket is closed.
  class Entry {
   public:
    Entry(OpenConnections& connections, int socket);
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

   private:
    OpenConnections& connections_;
    int socket_;
  };

  /// Ends all transfers, and those of connections still to come.
  void shutDown();

 private:
  std::mutex mutex_;
  std::set<int> sockets_;
  bool isShutDown_ = false;
};

}  // namespace quillbay::sandbox
