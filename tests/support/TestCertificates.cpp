#include "TestCertificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>
#include <string>

namespace quillbay::test {
namespace {

template <auto kFree>
struct Deleter {
  void operator()(auto* object) const { kFree(object); }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION_free>>;
using File = std::unique_ptr<BIO, Deleter<BIO_free>>;

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(std::string("OpenSSL: ") + what);
}

Certificate makeCertificate(EVP_PKEY* key) {
  Certificate certificate(X509_new());
  constexpr long day = 24L * 60 * 60;
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 2 * day);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME* const name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("Quillbay tests"), -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  const Extension names(X509V3_EXT_conf_nid(
      nullptr, nullptr, NID_subject_alt_name,
      "DNS:cloud.quillbay.example,DNS:store.quillbay.example,DNS:localhost,IP:127.0.0.1"));
  require(names && X509_add_ext(certificate.get(), names.get(), -1) == 1, "names");
  require(X509_sign(certificate.get(), key, EVP_sha256()) > 0, "signing");
  return certificate;
}

int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* chosenByteCount,
                   const unsigned char* offered, unsigned int offeredByteCount, void*) {
  static constexpr unsigned char preferred[] = "\x02h2\x08http/1.1";
  const int result =
      SSL_select_next_proto(const_cast<unsigned char**>(chosen), chosenByteCount, preferred,
                            sizeof(preferred) - 1, offered, offeredByteCount);
  return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_NOACK;
}

}  // namespace

TestCertificates::TestCertificates()
    : serverContext_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free) {
  const Key key(EVP_EC_gen("P-256"));
  const Certificate certificate = makeCertificate(key.get());
  const File file(BIO_new_file(authorityPath().c_str(), "w"));
  require(file && PEM_write_bio_X509(file.get(), certificate.get()) == 1, "PEM");
  require(SSL_CTX_use_certificate(serverContext_.get(), certificate.get()) == 1 &&
              SSL_CTX_use_PrivateKey(serverContext_.get(), key.get()) == 1,
          "server context");
  SSL_CTX_set_alpn_select_cb(serverContext_.get(), chooseProtocol, nullptr);
}

const TestCertificates& TestCertificates::shared() {
  static const TestCertificates certificates;
  return certificates;
}

}  // namespace quillbay::test
