#pragma once

#include <openssl/ssl.h>

#include <filesystem>
#include <memory>

namespace quillbay::test {

/// The certificates of this test process, made at first use: an authority, and servers'
/// certificates by it or (for refusals) not by it.
class TestCertificates {
 public:
  enum class Server {
    trusted,            ///< for cloud.quillbay.example, store.quillbay.example and loopback
    ofAnotherHost,      ///< by the same authority, for other.quillbay.example alone
    ofAnotherAuthority  ///< for the right names, by an authority that is not in the PEM file
  };

  static const TestCertificates& shared();

  /// PEM file with the authority's certificate; there until the process ends.
  const std::filesystem::path& authorityPath() const;

  /// What a TLS server needs. It chooses HTTP/2 if that is offered, and then no test that speaks
  /// HTTP/1.1 gets through: the library must not offer it.
  std::shared_ptr<SSL_CTX> serverContext(Server server) const;

 private:
  TestCertificates();

  struct State;
  std::shared_ptr<const State> state_;
};

}  // namespace quillbay::test
