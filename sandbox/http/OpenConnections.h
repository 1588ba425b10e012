#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace quillbay::sandbox {

/// The sockets of the open connections: stopping wakes their threads, and a client that waits for a
/// thread gets that of a connection without a request under way.
class OpenConnections {
 public:
  /// Keeps the socket listed while it lives; destroy it before the socket is closed. It counts as
  /// idle from the start.
  class Entry {
   public:
    Entry(OpenConnections& connections, int socket);
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    void beginIdling();
    void endIdling();

   private:
    OpenConnections& connections_;
    int socket_;
  };

  /// Closes the connection that has been idle for longest, or the next one to become idle.
  void makeRoom();

  /// Ends all transfers, and those of connections still to come.
  void shutDown();

 private:
  using IdleOrder = std::optional<std::uint64_t>;

  std::mutex mutex_;
  std::map<int, IdleOrder> idleOrderBySocket_;
  std::uint64_t nextIdleOrder_ = 0;
  /// Clients that wait while no connection is idle.
  std::size_t waitingCount_ = 0;
  bool isShutDown_ = false;
};

}  // namespace quillbay::sandbox
