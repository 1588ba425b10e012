#include "benchmarks/server/Listener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <thread>
#include <utility>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

constexpr int kBacklog = 128;

sockaddr_in loopback(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

}  // namespace

Listener::Listener() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const sockaddr_in address = loopback(0);
  if (socket_ < 0 ||
      bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(socket_, kBacklog) != 0) {
    fail("cannot listen on loopback");
  }
}

int Listener::port() const {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

void Listener::start(std::function<void(int socket)> serve) const {
  std::thread([listener = socket_, serve = std::move(serve)] {
    for (;;) {
      const int socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
      if (socket < 0) continue;
      sendAtOnce(socket);
      std::thread(serve, socket).detach();
    }
  }).detach();
}

int connectToLoopback(int port) {
  const sockaddr_in address = loopback(port);
  const int result = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (result < 0 ||
      connect(result, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    fail("cannot connect to loopback");
  }
  sendAtOnce(result);
  return result;
}

void sendAtOnce(int socket) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

}  // namespace quillbay::bench
