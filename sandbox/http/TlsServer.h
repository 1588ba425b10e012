#pragma once

#include <httplib.h>

#include <future>

#include "sandbox/http/Endpoint.h"
#include "sandbox/http/OpenConnections.h"
#include "sandbox/http/RequestLog.h"
#include "sandbox/http/TlsConnection.h"
#include "sandbox/tls/TlsIdentity.h"

namespace quillbay::sandbox {

/// The HTTP library's server over connections of our own, which gives what its TLS server lacks:
/// buffered reading, a prompt stop with connections open, and a reply that survives a refused
/// upload.
class TlsServer : private httplib::Server {
 public:
  /// At most `connectionLimit` clients are served at once; more wait.
  TlsServer(TlsContext context, LogSink log, std::size_t connectionLimit);
  ~TlsServer() override;

  /// Binds to loopback; port 0 chooses a free one. Returns the port; throws std::runtime_error.
  int bind(int port);
  /// Serves until `stop`; the endpoint is borrowed.
  void start(Endpoint& endpoint);
  /// Ends all connections at once and waits for their threads.
  void stop();

 private:
  struct Exchange;

  bool process_and_close_socket(socket_t socket) override;
  bool serve(TlsConnection& connection);
  void answer(const httplib::Request& request, httplib::Response& response,
              const httplib::ContentReader* reader);
  int answerExpectation(const httplib::Request& request, httplib::Response& response);

  TlsContext context_;
  LogSink log_;
  Endpoint* endpoint_ = nullptr;
  OpenConnections connections_;
  std::future<bool> listening_;
};

}  // namespace quillbay::sandbox
