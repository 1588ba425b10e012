#pragma once

#include <openssl/evp.h>
#include <openssl/x509v3.h>

#include <filesystem>
#include <memory>
#include <string>

namespace quillbay::sandbox {

template <auto release>
struct OpenSslFree {
  template <typename Handle>
  void operator()(Handle* handle) const noexcept {
    release(handle);
  }
};

using PrivateKey = std::unique_ptr<EVP_PKEY, OpenSslFree<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, OpenSslFree<X509_free>>;

/// Throws std::runtime_error with `what` and the library's own reason.
[[noreturn]] void failOpenSsl(const std::string& what);

PrivateKey generateKey();
PrivateKey loadKey(const std::filesystem::path& path);
Certificate loadCertificate(const std::filesystem::path& path);

std::string pemText(EVP_PKEY* key);
std::string pemText(X509* certificate);

}  // namespace quillbay::sandbox
