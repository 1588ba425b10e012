#include "TestCertificates.h"

namespace quillbay::test {
namespace {

int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* chosenByteCount,
                   const unsigned char* offered, unsigned int offeredByteCount, void*) {
  static constexpr unsigned char preferred[] = "\x02h2\x08http/1.1";
  const int result =
      SSL_select_next_proto(const_cast<unsigned char**>(chosen), chosenByteCount, preferred,
                            sizeof(preferred) - 1, offered, offeredByteCount);
  return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_NOACK;
}

}  // namespace

TestCertificates::TestCertificates() {
  // A script that reads little must not take more off the line.
  SSL_CTX_set_read_ahead(serverContext_.get(), 0);
  SSL_CTX_set_alpn_select_cb(serverContext_.get(), chooseProtocol, nullptr);
}

const TestCertificates& TestCertificates::shared() {
  static const TestCertificates certificates;
  return certificates;
}

}  // namespace quillbay::test
