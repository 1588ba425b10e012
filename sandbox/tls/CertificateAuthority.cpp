#include "sandbox/tls/CertificateAuthority.h"

#include <openssl/rand.h>

#include <cstdint>

namespace quillbay::sandbox {

namespace {

constexpr long secondsPerDay = 86'400;
constexpr long authorityDays = 3'650;
// The longest time that browsers accept for a server.
constexpr long serverDays = 397;

void setSerialNumber(X509* certificate) {
  std::uint64_t number = 0;
  if (RAND_bytes(reinterpret_cast<unsigned char*>(&number), sizeof number) != 1) {
    failOpenSsl("cannot draw a serial number");
  }
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), number >> 1);
}

void setCommonName(X509* certificate, const char* name) {
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name), -1, -1, 0);
}

Certificate newCertificate(const char* commonName, EVP_PKEY* publicKey, long validDays) {
  Certificate certificate(X509_new());
  if (!certificate) failOpenSsl("cannot create a certificate");
  X509_set_version(certificate.get(), X509_VERSION_3);
  setSerialNumber(certificate.get());
  setCommonName(certificate.get(), commonName);
  // Begins a day early, for clocks that are a little behind.
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -secondsPerDay);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), validDays * secondsPerDay);
  X509_set_pubkey(certificate.get(), publicKey);
  return certificate;
}

void addExtension(X509* certificate, X509* issuer, int identifier, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  using Extension = std::unique_ptr<X509_EXTENSION, OpenSslFree<X509_EXTENSION_free>>;
  const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, identifier, value));
  if (!extension || X509_add_ext(certificate, extension.get(), -1) != 1) {
    failOpenSsl("cannot add a certificate extension");
  }
}

void sign(X509* certificate, EVP_PKEY* key) {
  if (X509_sign(certificate, key, EVP_sha256()) == 0) failOpenSsl("cannot sign a certificate");
}

}  // namespace

CertificateAuthority::CertificateAuthority(PrivateKey key, Certificate certificate)
    : key_(std::move(key)), certificate_(std::move(certificate)) {}

CertificateAuthority CertificateAuthority::create() {
  PrivateKey key = generateKey();
  Certificate made = newCertificate("Quillbay Sandbox CA", key.get(), authorityDays);
  X509* const certificate = made.get();
  X509_set_issuer_name(certificate, X509_get_subject_name(certificate));
  addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
  addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
  addExtension(certificate, certificate, NID_name_constraints,
               "critical,permitted;DNS:cloud.quillbay.example,permitted;DNS:localhost,"
               "permitted;IP:127.0.0.1/255.255.255.255,"
               "permitted;IP:::1/ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff");
  addExtension(certificate, certificate, NID_subject_key_identifier, "hash");
  sign(certificate, key.get());
  return {std::move(key), std::move(made)};
}

Certificate CertificateAuthority::issueServerCertificate(EVP_PKEY* serverKey) const {
  Certificate issued = newCertificate("Quillbay Sandbox", serverKey, serverDays);
  X509* const certificate = issued.get();
  X509* const issuer = certificate_.get();
  X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
  addExtension(certificate, issuer, NID_basic_constraints, "critical,CA:FALSE");
  addExtension(certificate, issuer, NID_key_usage, "critical,digitalSignature");
  addExtension(certificate, issuer, NID_ext_key_usage, "serverAuth");
  addExtension(certificate, issuer, NID_subject_alt_name,
               "DNS:cloud.quillbay.example,DNS:localhost,IP:127.0.0.1,IP:::1");
  addExtension(certificate, issuer, NID_subject_key_identifier, "hash");
  addExtension(certificate, issuer, NID_authority_key_identifier, "keyid:always");
  sign(certificate, key_.get());
  return issued;
}

}  // namespace quillbay::sandbox
