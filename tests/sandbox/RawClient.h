#pragma once

#include <openssl/bio.h>
#include <openssl/ssl.h>

#include <memory>
#include <string>
#include <string_view>

#include "sandbox/tls/OpenSsl.h"

namespace quillbay::sandbox {

/// A TLS connection that sends what a well-behaved client would not.
class RawClient {
 public:
  explicit RawClient(int port);

  void send(std::string_view bytes);
  /// No more bytes will come from here; the other direction stays open.
  void endSending();
  /// Up to and with the first occurrence of `end`, or what came before the connection closed.
  std::string receiveUntil(std::string_view end);
  /// Until the connection closes; no reply contains this end.
  std::string receiveAll() { return receiveUntil("no such end"); }

 private:
  std::unique_ptr<SSL_CTX, OpenSslFree<SSL_CTX_free>> context_;
  std::unique_ptr<BIO, OpenSslFree<BIO_free_all>> bio_;
  std::string received_;
};

}  // namespace quillbay::sandbox
