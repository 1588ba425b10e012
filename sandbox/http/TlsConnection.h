#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/http/Connection.h"
#include "sandbox/tls/OpenSsl.h"

namespace quillbay::sandbox {

/// One accepted connection over TLS. Blocking; a peer that is silent for longer than the time-out
/// counts as gone.
class TlsConnection : public Connection {
 public:
  /// Borrows the socket.
  TlsConnection(SSL_CTX* context, int socket, std::chrono::seconds silenceLimit);

  /// The reason when it fails.
  std::expected<void, std::string> handshake();
  /// False when no request came within the time or the peer closed.
  bool waitForRequest(std::chrono::seconds limit);
  /// Says good-bye and waits until the peer has too: closing on unread bytes would make the system
  /// reset the connection and destroy a reply that is still on its way.
  void closeGently();

  bool flush() override;
  std::uint64_t readByteCount() const override { return readByteCount_; }
  std::uint64_t writtenByteCount() const override { return writtenByteCount_; }

  bool is_readable() const override { return true; }
  bool is_writable() const override { return isAlive_; }
  ssize_t read(char* data, std::size_t byteLimit) override;
  ssize_t write(const char* data, std::size_t byteCount) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return socket_; }

 private:
  bool fill();

  std::unique_ptr<SSL, OpenSslFree<SSL_free>> ssl_;
  int socket_;
  bool isAlive_ = true;
  std::vector<char> input_;
  std::size_t inputStart_ = 0;
  std::size_t inputEnd_ = 0;
  std::string output_;
  std::uint64_t readByteCount_ = 0;
  std::uint64_t writtenByteCount_ = 0;
};

}  // namespace quillbay::sandbox
