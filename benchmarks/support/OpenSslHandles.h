#pragma once

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>

namespace quillbay::bench {

template <auto release>
struct OpenSslRelease {
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    release(handle);
  }
};

using PrivateKey = std::unique_ptr<EVP_PKEY, OpenSslRelease<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, OpenSslRelease<X509_free>>;
using CertificateExtension = std::unique_ptr<X509_EXTENSION, OpenSslRelease<X509_EXTENSION_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, OpenSslRelease<EVP_MD_CTX_free>>;
using TlsContext = std::unique_ptr<SSL_CTX, OpenSslRelease<SSL_CTX_free>>;
using TlsStream = std::unique_ptr<SSL, OpenSslRelease<SSL_free>>;

}  // namespace quillbay::bench
