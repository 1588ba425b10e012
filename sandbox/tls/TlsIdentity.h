#pragma once

#include <openssl/ssl.h>

#include <filesystem>
#include <memory>

#include "sandbox/tls/OpenSsl.h"

namespace quillbay::sandbox {

using TlsContext = std::unique_ptr<SSL_CTX, OpenSslFree<SSL_CTX_free>>;

/// The authority and the server certificate kept in a folder: made at first use, kept over
/// restarts, renewed when they are about to expire.
class TlsIdentity {
 public:
  explicit TlsIdentity(std::filesystem::path folder);

  std::filesystem::path authorityFile() const { return folder_ / "ca.pem"; }
  TlsContext serverContext() const;

 private:
  void renewWhereNeeded() const;

  std::filesystem::path folder_;
};

}  // namespace quillbay::sandbox
