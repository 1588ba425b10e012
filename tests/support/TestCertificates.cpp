#include "TestCertificates.h"

#include "TemporaryFolder.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstring>
#include <map>
#include <stdexcept>
#include <string>

namespace quillbay::test {
namespace {

struct KeyDeleter {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct CertificateDeleter {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
struct ExtensionDeleter {
  void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
};
struct BIODeleter {
  void operator()(BIO* bio) const { BIO_free(bio); }
};

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(std::string("OpenSSL: ") + what);
}

/// A certificate with its key.
struct Identity {
  std::unique_ptr<EVP_PKEY, KeyDeleter> key;
  std::unique_ptr<X509, CertificateDeleter> certificate;
};

Identity makeUnsigned(const char* commonName) {
  Identity identity{.key = std::unique_ptr<EVP_PKEY, KeyDeleter>(EVP_EC_gen("P-256")),
                    .certificate = std::unique_ptr<X509, CertificateDeleter>(X509_new())};
  require(identity.key && identity.certificate, "allocation");
  X509* certificate = identity.certificate.get();
  std::uint32_t serial = 0;
  require(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof(serial)) == 1, "random");
  constexpr long day = 24L * 60 * 60;
  X509_set_version(certificate, X509_VERSION_3);
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial);
  X509_gmtime_adj(X509_getm_notBefore(certificate), -day);
  X509_gmtime_adj(X509_getm_notAfter(certificate), 2 * day);
  X509_set_pubkey(certificate, identity.key.get());
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(commonName), -1, -1, 0);
  return identity;
}

void addExtension(X509* certificate, int nid, const char* value) {
  const std::unique_ptr<X509_EXTENSION, ExtensionDeleter> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, nid, value));
  require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

void sign(X509* certificate, const Identity& issuer) {
  X509_set_issuer_name(certificate, X509_get_subject_name(issuer.certificate.get()));
  require(X509_sign(certificate, issuer.key.get(), EVP_sha256()) > 0, "signing");
}

Identity makeAuthority(const char* commonName) {
  Identity authority = makeUnsigned(commonName);
  addExtension(authority.certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
  addExtension(authority.certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
  sign(authority.certificate.get(), authority);
  return authority;
}

Identity makeServer(const Identity& authority, const char* names) {
  Identity server = makeUnsigned("Quillbay test server");
  addExtension(server.certificate.get(), NID_subject_alt_name, names);
  addExtension(server.certificate.get(), NID_ext_key_usage, "serverAuth");
  sign(server.certificate.get(), authority);
  return server;
}

std::string pem(X509* certificate) {
  const std::unique_ptr<BIO, BIODeleter> memory(BIO_new(BIO_s_mem()));
  require(memory && PEM_write_bio_X509(memory.get(), certificate) == 1, "PEM");
  char* bytes = nullptr;
  const long byteCount = BIO_get_mem_data(memory.get(), &bytes);
  return std::string(bytes, static_cast<std::size_t>(byteCount));
}

int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* chosenByteCount,
                   const unsigned char* offered, unsigned int offeredByteCount, void*) {
  static constexpr unsigned char preferred[] = "\x02h2\x08http/1.1";
  unsigned char* protocol = nullptr;
  if (SSL_select_next_proto(&protocol, chosenByteCount, preferred, sizeof(preferred) - 1, offered,
                            offeredByteCount) != OPENSSL_NPN_NEGOTIATED) {
    return SSL_TLSEXT_ERR_NOACK;
  }
  *chosen = protocol;
  return SSL_TLSEXT_ERR_OK;
}

std::shared_ptr<SSL_CTX> makeContext(const Identity& server) {
  std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  require(context != nullptr &&
              SSL_CTX_use_certificate(context.get(), server.certificate.get()) == 1 &&
              SSL_CTX_use_PrivateKey(context.get(), server.key.get()) == 1,
          "server context");
  SSL_CTX_set_mode(context.get(),
                   SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  SSL_CTX_set_alpn_select_cb(context.get(), chooseProtocol, nullptr);
  return context;
}

constexpr const char* servedNames =
    "DNS:cloud.quillbay.example,DNS:store.quillbay.example,DNS:localhost,IP:127.0.0.1,IP:::1";

}  // namespace

struct TestCertificates::State {
  TemporaryFolder folder;
  std::filesystem::path authorityPath;
  std::map<Server, std::shared_ptr<SSL_CTX>> contexts;
};

TestCertificates::TestCertificates() {
  auto state = std::make_shared<State>();
  const Identity authority = makeAuthority("Quillbay test authority");
  const Identity otherAuthority = makeAuthority("Another test authority");
  state->authorityPath = state->folder.write("authority.pem", pem(authority.certificate.get()));
  state->contexts = {
      {Server::trusted, makeContext(makeServer(authority, servedNames))},
      {Server::ofAnotherHost, makeContext(makeServer(authority, "DNS:other.quillbay.example"))},
      {Server::ofAnotherAuthority, makeContext(makeServer(otherAuthority, servedNames))},
  };
  state_ = std::move(state);
}

const TestCertificates& TestCertificates::shared() {
  static const TestCertificates certificates;
  return certificates;
}

const std::filesystem::path& TestCertificates::authorityPath() const {
  return state_->authorityPath;
}

std::shared_ptr<SSL_CTX> TestCertificates::serverContext(Server server) const {
  return state_->contexts.at(server);
}

}  // namespace quillbay::test
