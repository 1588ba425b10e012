#pragma once

#include <openssl/bio.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <stdexcept>

#include "sandbox/tls/OpenSsl.h"

namespace quillbay::sandbox {

/// A TLS connection that sends what a well-behaved client would not. Waits 10 s for the server.
class RawClient {
 public:
  /// Begins with these bytes.
  explicit RawClient(int port, std::string_view bytes = "")
      : context_(SSL_CTX_new(TLS_client_method())), bio_(BIO_new_ssl(context_.get(), 1)) {
    BIO* const socket = BIO_new_connect(("127.0.0.1:" + std::to_string(port)).c_str());
    BIO_push(bio_.get(), socket);
    const bool isConnected = BIO_do_connect(socket) == 1;
    const timeval limit{.tv_sec = 10, .tv_usec = 0};
    ::setsockopt(static_cast<int>(BIO_get_fd(socket, nullptr)), SOL_SOCKET, SO_RCVTIMEO, &limit,
                 sizeof limit);
    if (!isConnected || BIO_do_handshake(bio_.get()) != 1) {
      throw std::runtime_error("the sandbox does not take the connection");
    }
    if (!bytes.empty()) send(bytes);
  }

  void send(std::string_view bytes) {
    BIO_write(bio_.get(), bytes.data(), static_cast<int>(bytes.size()));
  }

  /// No more bytes will come from here; the other direction stays open.
  void endSending() {
    SSL* ssl = nullptr;
    BIO_get_ssl(bio_.get(), &ssl);
    SSL_shutdown(ssl);
  }

  /// Up to and with the first occurrence of `end`, or what came before the connection closed.
  std::string receiveUntil(std::string_view end) {
    std::array<char, 4096> buffer;
    while (!received_.contains(end)) {
      const int count = BIO_read(bio_.get(), buffer.data(), static_cast<int>(buffer.size()));
      if (count <= 0) return std::exchange(received_, {});
      received_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    const std::size_t length = received_.find(end) + end.size();
    return std::exchange(received_, received_.substr(length)).substr(0, length);
  }

  /// Until the connection closes; no reply contains this end.
  std::string receiveAll() { return receiveUntil("no such end"); }

 private:
  std::unique_ptr<SSL_CTX, OpenSslFree<SSL_CTX_free>> context_;
  std::unique_ptr<BIO, OpenSslFree<BIO_free_all>> bio_;
  std::string received_;
};

}  // namespace quillbay::sandbox
