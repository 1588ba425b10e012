#include "sandbox/http/TlsServer.h"

#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "sandbox/http/ConnectionThreads.h"
#include "sandbox/http/TlsConnection.h"

namespace quillbay::sandbox {

namespace {

constexpr const char* loopback = "127.0.0.1";
constexpr int backlog = 256;
constexpr std::chrono::seconds silenceLimit{60};
constexpr std::chrono::seconds keepAliveLimit{300};
constexpr std::chrono::seconds idleThreadLimit{10};

class OwnedSocket {
 public:
  explicit OwnedSocket(int socket) : socket_(socket) {}
  ~OwnedSocket() { ::close(socket_); }
  OwnedSocket(const OwnedSocket&) = delete;
  OwnedSocket& operator=(const OwnedSocket&) = delete;

 private:
  int socket_;
};

/// What a failed bind says to the person who chose the port.
std::string bindFailure(int error) {
  switch (error) {
    case EADDRINUSE:
      return "another program is using the port (--port 0 finds a free one)";
    case EACCES:
      return "low ports are reserved for the system; choose one above 1023 with --port";
    default:
      return std::generic_category().message(error);
  }
}

}  // namespace

TlsServer::TlsServer(TlsContext context, LogSink log, std::size_t connectionLimit)
    : RequestServer(std::move(log)), context_(std::move(context)) {
  new_task_queue = [this, connectionLimit] {
    return new ConnectionThreads(connectionLimit, idleThreadLimit,
                                 [this] { connections_.makeRoom(); });
  };
  set_tcp_nodelay(true);
  // The library's default would let a second sandbox share the port unnoticed.
  set_socket_options([](socket_t socket) {
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
}

TlsServer::~TlsServer() { stop(); }

int TlsServer::bind(int port) {
  int bound = port;
  errno = 0;
  if (port == 0) bound = bind_to_any_port(loopback);
  if (port != 0 && !bind_to_port(loopback, port)) bound = -1;
  if (bound <= 0) {
    throw std::runtime_error("cannot listen on " + std::string(loopback) + ":" +
                             std::to_string(port) + ": " + bindFailure(errno));
  }
  // The library listens with a backlog of 5, and a full one costs a client a second.
  ::listen(svr_sock_, backlog);
  return bound;
}

void TlsServer::start(Endpoint& endpoint) {
  setEndpoint(endpoint);
  listening_ = std::async(std::launch::async, [this] { return listen_after_bind(); });
}

void TlsServer::stop() {
  if (!listening_.valid()) return;
  connections_.shutDown();
  // The library overlooks a stop that comes before its loop runs, so it is told until it ends.
  do {
    httplib::Server::stop();
  } while (listening_.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready);
  listening_.get();
}

bool TlsServer::process_and_close_socket(socket_t socket) {
  const OwnedSocket owned(socket);
  OpenConnections::Entry entry(connections_, socket);
  TlsConnection connection(context_.get(), socket, silenceLimit);
  if (const auto handshake = connection.handshake(); !handshake) {
    log(failedHandshakeLine(handshake.error()));
    return false;
  }
  while (connection.waitForRequest(keepAliveLimit)) {
    entry.endIdling();
    if (!serve(connection)) break;
    entry.beginIdling();
  }
  connection.closeGently();
  return true;
}

}  // namespace quillbay::sandbox
