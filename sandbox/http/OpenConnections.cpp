#include "sandbox/http/OpenConnections.h"

#include <sys/socket.h>

#include <algorithm>

namespace quillbay::sandbox {

namespace {

/// The connection's thread wakes up and finds that no further request comes. One that has come just
/// now is still read and answered.
void closeForReading(int socket) { ::shutdown(socket, SHUT_RD); }

}  // namespace

OpenConnections::Entry::Entry(OpenConnections& connections, int socket)
    : connections_(connections), socket_(socket) {
  const std::lock_guard lock(connections_.mutex_);
  connections_.idleOrderBySocket_[socket] = connections_.nextIdleOrder_++;
  if (connections_.isShutDown_) ::shutdown(socket, SHUT_RDWR);
}

OpenConnections::Entry::~Entry() {
  const std::lock_guard lock(connections_.mutex_);
  connections_.idleOrderBySocket_.erase(socket_);
  // The thread is free for a client that waits.
  if (connections_.waitingCount_ > 0) --connections_.waitingCount_;
}

void OpenConnections::Entry::beginIdling() {
  const std::lock_guard lock(connections_.mutex_);
  if (connections_.waitingCount_ == 0) {
    connections_.idleOrderBySocket_[socket_] = connections_.nextIdleOrder_++;
    return;
  }
  --connections_.waitingCount_;
  closeForReading(socket_);
}

void OpenConnections::Entry::endIdling() {
  const std::lock_guard lock(connections_.mutex_);
  connections_.idleOrderBySocket_[socket_] = std::nullopt;
}

void OpenConnections::makeRoom() {
  const std::lock_guard lock(mutex_);
  const auto longestIdle = std::ranges::min_element(
      idleOrderBySocket_, {}, [](const auto& entry) { return entry.second.value_or(UINT64_MAX); });
  if (longestIdle == idleOrderBySocket_.end() || !longestIdle->second) {
    ++waitingCount_;
    return;
  }
  longestIdle->second = std::nullopt;
  closeForReading(longestIdle->first);
}

void OpenConnections::shutDown() {
  const std::lock_guard lock(mutex_);
  isShutDown_ = true;
  for (const auto& [socket, idleOrder] : idleOrderBySocket_) ::shutdown(socket, SHUT_RDWR);
}

}  // namespace quillbay::sandbox
