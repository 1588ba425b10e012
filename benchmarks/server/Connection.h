#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/support/OpenSslHandles.h"

namespace quillbay::bench {

/// The first line and the header fields of a request, as one text.
class RequestHead {
 public:
  explicit RequestHead(std::string text) : text_(std::move(text)) {}

  std::string_view method() const;
  std::string_view target() const;
  /// Empty when absent. `name` as the clients measured here write it.
  std::string_view field(std::string_view name) const;
  std::uint64_t contentLength() const;

 private:
  std::string text_;
};

/// One accepted TLS connection, read and written by one thread. Closes the socket.
class Connection {
 public:
  /// Shakes hands; throws if that fails.
  Connection(SSL_CTX* context, int socket);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// The host that the client asked for in the handshake.
  std::string serverName() const;

  /// False at the end of the connection.
  bool readHead(std::string& head);
  std::string readBody(std::uint64_t byteCount);
  void discardBody(std::uint64_t byteCount);
  void write(std::string_view bytes);

 private:
  bool fill();

  TlsStream stream_;
  int socket_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace quillbay::bench
