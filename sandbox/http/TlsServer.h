#pragma once

#include <future>

#include "sandbox/http/OpenConnections.h"
#include "sandbox/http/RequestServer.h"
#include "sandbox/tls/TlsIdentity.h"

namespace quillbay::sandbox {

/// Serves TLS connections of our own, which give what the HTTP library's TLS server lacks: buffered
/// reading, a prompt stop with connections open, and a reply that survives a refused upload.
class TlsServer : private RequestServer {
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
  bool process_and_close_socket(socket_t socket) override;

  TlsContext context_;
  OpenConnections connections_;
  std::future<bool> listening_;
};

}  // namespace quillbay::sandbox
