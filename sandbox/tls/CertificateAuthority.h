#pragma once

#include "sandbox/tls/OpenSsl.h"

namespace quillbay::sandbox {

/// The authority that a client of the sandbox trusts. Its name constraints make it worthless for
/// any other host, so trusting it endangers nothing.
class CertificateAuthority {
 public:
  static CertificateAuthority create();
  CertificateAuthority(PrivateKey key, Certificate certificate);

  /// For the service's host name and for the loopback addresses.
  Certificate issueServerCertificate(EVP_PKEY* serverKey) const;

  EVP_PKEY* key() const { return key_.get(); }
  X509* certificate() const { return certificate_.get(); }

 private:
  PrivateKey key_;
  Certificate certificate_;
};

}  // namespace quillbay::sandbox
