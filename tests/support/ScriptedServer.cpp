#include "ScriptedServer.h"

#include "TestCertificates.h"

#include <QuillbayPlatform/NetworkSettings.h>
#include <QuillbayPlatform/SignalMask.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace quillbay::test {

ScriptedServer::ScriptedServer(Protocol protocol)
    : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (protocol == https) tls_ = TestCertificates::shared().serverContext().get();
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t byteCount = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_.get(), generic, byteCount) != 0 ||
      ::getsockname(listener_.get(), generic, &byteCount) != 0 ||
      ::listen(listener_.get(), SOMAXCONN) != 0) {
    throw std::runtime_error("cannot listen at 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  onRequest([](const Request&) { return Reply::empty(200); });
  // For all threads of the server: a client that left must not end the process.
  const platform::SignalMask allBlocked;
  acceptThread_ = std::jthread([this] { acceptConnections(); });
}

ScriptedServer::~ScriptedServer() { stop(); }

void ScriptedServer::stop() {
  ::shutdown(listener_.get(), SHUT_RDWR);
  acceptThread_ = {};
  listener_.reset();
  for (Connection& connection : connections_) connection.interrupt();
  connectionThreads_.clear();
}

void ScriptedServer::onRequest(RequestHandler handler) {
  onConnection([handler = std::move(handler)](Connection& connection) {
    while (const auto request = connection.readRequest()) {
      if (!connection.send(handler(*request))) return;
    }
  });
}

std::string ScriptedServer::address(std::string_view path, std::string_view host) const {
  const std::string scheme = tls_ == nullptr ? "http://" : "https://";
  return scheme + std::string(host) + ":" + std::to_string(port_) + std::string(path);
}

void ScriptedServer::acceptConnections() {
  while (true) {
    host::FileDescriptor socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket.isOpen() && errno == EINVAL) return;  // shut down by `stop`
    if (!socket.isOpen()) continue;
    const int noDelay = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof(noDelay));
    const std::lock_guard lock(mutex_);
    Connection& connection = connections_.emplace_back(std::move(socket), tls_, recorder());
    connectionThreads_.emplace_back([&connection, script = script_] {
      script(connection);
      connection.close();
    });
  }
}

/// Notes one connection's requests, each at the place where it began.
Connection::Recorder ScriptedServer::recorder() {
  return [this, index = std::size_t{0}](const Request& request) mutable {
    const std::lock_guard lock(mutex_);
    if (request.bodyByteCount == 0) {
      index = requests_.size();
      requests_.push_back(request);
    } else {
      requests_[index] = request;
    }
  };
}

void useTestNetwork(const ScriptedServer* server) {
  for (const char* name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
    // Written only where there is something to remove: other threads may read the environment.
    if (std::getenv(name) != nullptr) ::unsetenv(name);
  }
  platform::NetworkSettings settings;
  settings.caBundlePath = TestCertificates::shared().authorityPath().string();
  if (server != nullptr) {
    const std::string place = ":443:127.0.0.1:" + std::to_string(server->port());
    settings.connectTo = {"cloud.quillbay.example" + place, "localhost" + place};
  }
  platform::NetworkSettings::set(std::move(settings));
}

}  // namespace quillbay::test
