#include "benchmarks/server/TlsIdentity.h"

#include <openssl/pem.h>

#include <cstdio>
#include <string>

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

constexpr long kValidSeconds = 86'400;
constexpr std::size_t kReadBufferByteCount = 256UZ * 1024;

PrivateKey makeKey() {
  PrivateKey key(EVP_EC_gen("P-256"));
  if (!key) fail("cannot make a key");
  return key;
}

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const CertificateExtension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
  if (!extension || X509_add_ext(certificate, extension.get(), -1) != 1) {
    fail("cannot extend a certificate");
  }
}

Certificate makeCertificate(const char* name, EVP_PKEY* key, long serialNumber) {
  Certificate certificate(X509_new());
  if (!certificate) fail("cannot make a certificate");
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serialNumber);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kValidSeconds);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), kValidSeconds);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name), -1, -1, 0);
  return certificate;
}

void sign(X509* certificate, X509* issuer, EVP_PKEY* issuerKey) {
  X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
  if (X509_sign(certificate, issuerKey, EVP_sha256()) == 0) fail("cannot sign a certificate");
}

Certificate makeAuthority(EVP_PKEY* key) {
  Certificate authority = makeCertificate("Quillbay benchmark CA", key, 1);
  addExtension(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE");
  addExtension(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign");
  sign(authority.get(), authority.get(), key);
  return authority;
}

Certificate makeServerCertificate(EVP_PKEY* key, X509* authority, EVP_PKEY* authorityKey) {
  Certificate certificate = makeCertificate("Quillbay benchmark", key, 2);
  addExtension(certificate.get(), authority, NID_subject_alt_name,
               "DNS:" + kServiceHost + ",DNS:" + kStoreHost);
  sign(certificate.get(), authority, authorityKey);
  return certificate;
}

void writePem(const std::filesystem::path& path, X509* certificate) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "we"),
                                                             std::fclose);
  if (!file || PEM_write_X509(file.get(), certificate) != 1) fail("cannot write " + path.string());
}

}  // namespace

TlsContext makeServerContext(const std::filesystem::path& authorityFile) {
  const PrivateKey authorityKey = makeKey();
  const Certificate authority = makeAuthority(authorityKey.get());
  const PrivateKey key = makeKey();
  const Certificate certificate =
      makeServerCertificate(key.get(), authority.get(), authorityKey.get());
  writePem(authorityFile, authority.get());

  TlsContext context(SSL_CTX_new(TLS_server_method()));
  if (!context || SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
      SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1) {
    fail("cannot make a TLS context");
  }
  // Several records a system call, so that the client is what is measured.
  SSL_CTX_set_read_ahead(context.get(), 1);
  SSL_CTX_set_default_read_buffer_len(context.get(), kReadBufferByteCount);
  return context;
}

}  // namespace quillbay::bench
