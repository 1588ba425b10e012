#pragma once

#include "TemporaryFolder.h"
#include "sandbox/tls/TlsIdentity.h"

#include <filesystem>

namespace quillbay::test {

/// The certificate of this test process, for cloud.quillbay.example and loopback. Made at first
/// use.
class TestCertificates {
 public:
  static const TestCertificates& shared() {
    static const TestCertificates certificates;
    return certificates;
  }

  /// PEM file with the authority's certificate; there until the process ends.
  std::filesystem::path authorityPath() const { return identity_.authorityFile(); }

  /// What a TLS server needs. It chooses HTTP/2 if that is offered, and then no test that speaks
  /// HTTP/1.1 gets through: the library must not offer it.
  const sandbox::TlsContext& serverContext() const { return serverContext_; }

 private:
  TestCertificates() {
    // A script that reads little must not take more off the line.
    SSL_CTX_set_read_ahead(serverContext_.get(), 0);
    SSL_CTX_set_alpn_select_cb(serverContext_.get(), chooseProtocol, nullptr);
  }

  static int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* chosenByteCount,
                            const unsigned char* offered, unsigned int offeredByteCount, void*) {
    static constexpr unsigned char preferred[] = "\x02h2\x08http/1.1";
    const int result =
        SSL_select_next_proto(const_cast<unsigned char**>(chosen), chosenByteCount, preferred,
                              sizeof(preferred) - 1, offered, offeredByteCount);
    return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_NOACK;
  }

  TemporaryFolder folder_;
  sandbox::TlsIdentity identity_{folder_.path()};
  sandbox::TlsContext serverContext_ = identity_.serverContext();
};

}  // namespace quillbay::test
