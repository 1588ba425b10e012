#pragma once

#include "TemporaryFolder.h"
#include "sandbox/tls/TlsIdentity.h"

#include <filesystem>

namespace quillbay::test {

/// The certificate of this test process, for cloud.quillbay.example and loopback. Made at first
/// use.
class TestCertificates {
 public:
  static const TestCertificates& shared();

  /// PEM file with the authority's certificate; there until the process ends.
  std::filesystem::path authorityPath() const { return identity_.authorityFile(); }

  /// What a TLS server needs. It chooses HTTP/2 if that is offered, and then no test that speaks
  /// HTTP/1.1 gets through: the library must not offer it.
  const sandbox::TlsContext& serverContext() const { return serverContext_; }

 private:
  TestCertificates();

  TemporaryFolder folder_;
  sandbox::TlsIdentity identity_{folder_.path()};
  sandbox::TlsContext serverContext_ = identity_.serverContext();
};

}  // namespace quillbay::test
