#include "sandbox/http/TlsServer.h"

#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "sandbox/http/ConnectionThreads.h"
#include "sandbox/http/RequestStream.h"

namespace quillbay::sandbox {

namespace {

constexpr const char* loopback = "127.0.0.1";
constexpr int backlog = 256;
constexpr std::chrono::seconds silenceLimit{60};
constexpr std::chrono::seconds keepAliveLimit{300};
constexpr std::chrono::seconds idleThreadLimit{10};
constexpr std::size_t targetByteLimit = 4096;

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

/// What is known of the request being served on a thread.
struct TlsServer::Exchange {
  FinishedRequest summary;
  std::uint64_t bodyStart = 0;
  std::uint64_t bodyByteCount = 0;
  /// The body has no length to check, or will not be read: nothing can follow.
  bool isLast = false;

  /// The library's log hook tells the status but not the connection.
  static thread_local Exchange* current;
};

thread_local TlsServer::Exchange* TlsServer::Exchange::current = nullptr;

TlsServer::TlsServer(TlsContext context, LogSink log, std::size_t connectionLimit)
    : context_(std::move(context)), log_(std::move(log)) {
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
  set_logger([](const httplib::Request&, const httplib::Response& response) {
    Exchange::current->summary.status = response.status;
  });
  set_expect_100_continue_handler(
      [this](const httplib::Request& request, httplib::Response& response) {
        return answerExpectation(request, response);
      });

  // The library would announce limits here that `process_and_close_socket` does not have.
  set_post_routing_handler([](const httplib::Request&, httplib::Response& response) {
    response.headers.erase("Keep-Alive");
    // RFC 9110, section 8.6: these have no content to tell the length of.
    if (response.status == 204 || response.status == 304) response.headers.erase("Content-Length");
    if (Exchange::current->isLast) response.set_header("Connection", "close");
  });

  const Handler plain = [this](const httplib::Request& request, httplib::Response& response) {
    answer(request, response, nullptr);
  };
  const HandlerWithContentReader withBody =
      [this](const httplib::Request& request, httplib::Response& response,
             const httplib::ContentReader& reader) { answer(request, response, &reader); };
  // `serve` makes every path this one.
  Get("/", plain);
  Options("/", plain);
  Post("/", withBody);
  Put("/", withBody);
  Patch("/", withBody);
  Delete("/", withBody);
  Delete("/", plain);
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
  endpoint_ = &endpoint;
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
    log_(failedHandshakeLine(handshake.error()));
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

/// Serves one request; false when the connection cannot carry another.
bool TlsServer::serve(TlsConnection& connection) {
  Exchange exchange;
  Exchange::current = &exchange;
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t readBefore = connection.readByteCount();
  const std::uint64_t writtenBefore = connection.writtenByteCount();
  bool isClosing = false;
  RequestStream stream(connection);
  const bool isServed = process_request(stream, false, isClosing, [&](httplib::Request& request) {
    exchange.summary.method = request.method;
    exchange.summary.path = Target(request.target).path;
    exchange.bodyStart = connection.readByteCount();
    exchange.bodyByteCount = RequestBody(request, nullptr).announcedByteCount().value_or(0);
    exchange.isLast = request.has_header("Transfer-Encoding");
    // Routes are ours: the library would match paths by regular expression.
    request.path = request.target.size() > targetByteLimit ? "" : "/";
  });
  const bool isSent = connection.flush();
  exchange.summary.receivedByteCount = connection.readByteCount() - readBefore;
  exchange.summary.sentByteCount = connection.writtenByteCount() - writtenBefore;
  exchange.summary.duration = std::chrono::steady_clock::now() - start;
  if (exchange.summary.status != 0) log_(logLine(exchange.summary));
  // What is left of a refused body would be taken for the next request.
  const bool isBodyConsumed =
      exchange.bodyByteCount == connection.readByteCount() - exchange.bodyStart;
  return isServed && isSent && !isClosing && !exchange.isLast && isBodyConsumed;
}

void TlsServer::answer(const httplib::Request& request, httplib::Response& response,
                       const httplib::ContentReader* reader) {
  const Target target(request.target);
  RequestBody body(request, reader);
  Call call{request, target, body};
  Reply reply = endpoint_->answer(call);
  body.discard();
  transfer(std::move(reply), request, response);
}

int TlsServer::answerExpectation(const httplib::Request& request, httplib::Response& response) {
  constexpr int letItCome = 100;
  const Target target(request.target);
  RequestBody body(request, nullptr);
  Call call{request, target, body};
  std::optional<Reply> refusal = endpoint_->refuseEarly(call);
  if (!refusal) return letItCome;
  transfer(std::move(*refusal), request, response);
  Exchange::current->isLast = true;
  // The library counts the body of routed replies only.
  response.set_header("Content-Length", std::to_string(response.content_length_));
  return response.status;
}

}  // namespace quillbay::sandbox
