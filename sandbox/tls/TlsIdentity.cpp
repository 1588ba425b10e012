#include "sandbox/tls/TlsIdentity.h"

#include <ctime>

#include "sandbox/support/Files.h"
#include "sandbox/tls/CertificateAuthority.h"

namespace quillbay::sandbox {

namespace {

constexpr std::time_t renewalLeadSeconds = 7 * 86'400;

bool isUsable(const std::filesystem::path& certificateFile, const std::filesystem::path& keyFile) {
  if (!std::filesystem::exists(certificateFile) || !std::filesystem::exists(keyFile)) return false;
  std::time_t soon = std::time(nullptr) + renewalLeadSeconds;
  return X509_cmp_time(X509_get0_notAfter(loadCertificate(certificateFile).get()), &soon) > 0;
}

void save(const std::filesystem::path& keyFile, EVP_PKEY* key,
          const std::filesystem::path& certificateFile, X509* certificate) {
  writeFileAtomically(keyFile, pemText(key));
  writeFileAtomically(certificateFile, pemText(certificate), 0644);
}

}  // namespace

TlsIdentity::TlsIdentity(std::filesystem::path folder) : folder_(std::move(folder)) {
  createPrivateFolder(folder_);
  renewWhereNeeded();
}

void TlsIdentity::renewWhereNeeded() const {
  const auto authorityKeyFile = folder_ / "ca.key";
  const auto serverFile = folder_ / "server.pem";
  const auto serverKeyFile = folder_ / "server.key";
  const bool isAuthorityUsable = isUsable(authorityFile(), authorityKeyFile);
  if (isAuthorityUsable && isUsable(serverFile, serverKeyFile)) return;

  const CertificateAuthority authority =
      isAuthorityUsable
          ? CertificateAuthority(loadKey(authorityKeyFile), loadCertificate(authorityFile()))
          : CertificateAuthority::create();
  if (!isAuthorityUsable) {
    save(authorityKeyFile, authority.key(), authorityFile(), authority.certificate());
  }
  const PrivateKey serverKey = generateKey();
  const Certificate server = authority.issueServerCertificate(serverKey.get());
  save(serverKeyFile, serverKey.get(), serverFile, server.get());
}

TlsContext TlsIdentity::serverContext() const {
  TlsContext context(SSL_CTX_new(TLS_server_method()));
  if (!context) failOpenSsl("TLS is not available");
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  // Many records a system call.
  constexpr std::size_t readBufferByteCount = 256 * 1024;
  SSL_CTX_set_read_ahead(context.get(), 1);
  SSL_CTX_set_default_read_buffer_len(context.get(), readBufferByteCount);
  // Without an identity for its sessions the server could not resume one.
  constexpr std::string_view sessionContext = "quillbay-sandbox";
  SSL_CTX_set_session_id_context(context.get(),
                                 reinterpret_cast<const unsigned char*>(sessionContext.data()),
                                 static_cast<unsigned int>(sessionContext.size()));
  if (SSL_CTX_use_certificate_chain_file(context.get(), (folder_ / "server.pem").c_str()) != 1 ||
      SSL_CTX_use_PrivateKey_file(context.get(), (folder_ / "server.key").c_str(),
                                  SSL_FILETYPE_PEM) != 1) {
    failOpenSsl("cannot use the server certificate in " + folder_.string());
  }
  return context;
}

}  // namespace quillbay::sandbox
