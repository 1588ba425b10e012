#include "ScriptedServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace quillbay::test {
namespace {

FileDescriptor bindToLoopback(int& port) {
  FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t byteCount = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.get(), generic, byteCount) != 0 ||
      ::getsockname(socket.get(), generic, &byteCount) != 0) {
    throw std::runtime_error("cannot bind to 127.0.0.1");
  }
  port = ntohs(address.sin_port);
  return socket;
}

/// OpenSSL writes without MSG_NOSIGNAL, and no signal of the process belongs on these threads.
void blockAllSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

}  // namespace

ScriptedServer::ScriptedServer(std::optional<TestCertificates::Server> certificate)
    : isTLS_(certificate.has_value()) {
  if (certificate) tls_ = TestCertificates::shared().serverContext(*certificate);
  listener_ = bindToLoopback(port_);
  if (::listen(listener_.get(), SOMAXCONN) != 0) throw std::runtime_error("listen");
  acceptThread_ = std::thread([this] { acceptConnections(); });
}

ScriptedServer::~ScriptedServer() { stop(); }

void ScriptedServer::stop() {
  stopped_.open();
  if (acceptThread_.joinable()) acceptThread_.join();
  for (std::thread& thread : connectionThreads_) thread.join();
  connectionThreads_.clear();
  listener_.reset();
}

void ScriptedServer::onRequest(RequestHandler handler) {
  const std::lock_guard lock(mutex_);
  requestHandler_ = std::move(handler);
}

void ScriptedServer::onConnection(ConnectionHandler script) {
  const std::lock_guard lock(mutex_);
  connectionHandler_ = std::move(script);
}

std::string ScriptedServer::address(std::string_view path, std::string_view host) const {
  std::string text(isTLS_ ? "https://" : "http://");
  text.append(host).append(":").append(std::to_string(port_)).append(path);
  return text;
}

std::size_t ScriptedServer::connectionCount() const {
  const std::lock_guard lock(mutex_);
  return connectionCount_;
}

std::vector<Request> ScriptedServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void ScriptedServer::acceptConnections() {
  blockAllSignals();
  std::array<pollfd, 2> polls{pollfd{stopped_.descriptor(), POLLIN, 0},
                              pollfd{listener_.get(), POLLIN, 0}};
  while (true) {
    if (::poll(polls.data(), polls.size(), -1) < 0 && errno != EINTR) return;
    if (polls[0].revents != 0) return;
    FileDescriptor socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket.isOpen()) continue;
    const int noDelay = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof(noDelay));
    std::size_t number = 0;
    {
      const std::lock_guard lock(mutex_);
      number = connectionCount_++;
    }
    connectionThreads_.emplace_back([this, number, accepted = std::move(socket)]() mutable {
      serve(std::move(accepted), number);
    });
  }
}

void ScriptedServer::serve(FileDescriptor socket, std::size_t number) {
  blockAllSignals();
  std::size_t recordIndex = 0;
  Connection connection(std::move(socket), tls_.get(), number, stopped_.descriptor(),
                        [this, &recordIndex](const Request& request) {
                          const std::lock_guard lock(mutex_);
                          if (request.bodyByteCount == 0) {
                            recordIndex = requests_.size();
                            requests_.push_back(request);
                          } else {
                            requests_[recordIndex] = request;
                          }
                        });
  ConnectionHandler script;
  {
    const std::lock_guard lock(mutex_);
    script = connectionHandler_;
  }
  if (script) {
    script(connection);
  } else {
    serveRequests(connection);
  }
}

void ScriptedServer::serveRequests(Connection& connection) {
  while (const auto request = connection.readRequest()) {
    RequestHandler handler;
    {
      const std::lock_guard lock(mutex_);
      handler = requestHandler_;
    }
    if (!connection.send(handler ? handler(*request) : Reply::empty(200))) return;
  }
}

int unusedPort() {
  int port = 0;
  bindToLoopback(port);
  return port;
}

}  // namespace quillbay::test
