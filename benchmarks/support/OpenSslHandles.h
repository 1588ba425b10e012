#pragma once

#include <openssl/evp.h>
#include <openssl/ssl.h>

#include <memory>

namespace quillbay::bench {

template <auto release>
struct OpenSslRelease {
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    release(handle);
  }
};

using DigestContext = std::unique_ptr<EVP_MD_CTX, OpenSslRelease<EVP_MD_CTX_free>>;
using TlsStream = std::unique_ptr<SSL, OpenSslRelease<SSL_free>>;

}  // namespace quillbay::bench
