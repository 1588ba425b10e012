#include "sandbox/http/OpenConnections.h"

#include <sys/socket.h>

namespace quillbay::sandbox {

OpenConnections::Entry::Entry(OpenConnections& connections, int socket)
    : connections_(connections), socket_(socket) {
  const std::lock_guard lock(connections_.mutex_);
  connections_.sockets_.insert(socket);
  if (connections_.isShutDown_) ::shutdown(socket, SHUT_RDWR);
}

OpenConnections::Entry::~Entry() {
  const std::lock_guard lock(connections_.mutex_);
  connections_.sockets_.erase(socket_);
}

void OpenConnections::shutDown() {
  const std::lock_guard lock(mutex_);
  isShutDown_ = true;
  for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
}

}  // namespace quillbay::sandbox
