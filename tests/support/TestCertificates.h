#pragma once

#include "TemporaryFolder.h"

#include <openssl/ssl.h>

#include <filesystem>
#include <memory>

namespace quillbay::test {

/// The certificate of this test process, made at first use: for cloud.quillbay.example,
/// store.quillbay.example and loopback. It is its own authority.
class TestCertificates {
 public:
  static const TestCertificates& shared();

  /// PEM file with the authority's certificate; there until the process ends.
  std::filesystem::path authorityPath() const { return folder_ / "authority.pem"; }

  /// What a TLS server needs. It chooses HTTP/2 if that is offered, and then no test that speaks
  /// HTTP/1.1 gets through: the library must not offer it.
  const std::shared_ptr<SSL_CTX>& serverContext() const { return serverContext_; }

 private:
  TestCertificates();

  TemporaryFolder folder_;
  std::shared_ptr<SSL_CTX> serverContext_;
};

}  // namespace quillbay::test
