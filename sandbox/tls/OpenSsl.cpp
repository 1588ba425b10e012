#include "sandbox/tls/OpenSsl.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <array>
#include <stdexcept>

#include "sandbox/support/Files.h"

namespace quillbay::sandbox {

namespace {

using Bio = std::unique_ptr<BIO, OpenSslFree<BIO_free>>;

Bio memoryReader(const std::string& text) {
  return Bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

std::string textOf(const Bio& bio) {
  char* data = nullptr;
  const long length = BIO_get_mem_data(bio.get(), &data);
  return {data, static_cast<std::size_t>(length)};
}

}  // namespace

void failOpenSsl(const std::string& what) {
  std::array<char, 256> reason{};
  ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
  throw std::runtime_error(what + ": " + reason.data());
}

PrivateKey generateKey() {
  PrivateKey key(EVP_EC_gen("P-256"));
  if (!key) failOpenSsl("cannot generate a key");
  return key;
}

PrivateKey loadKey(const std::filesystem::path& path) {
  const std::string text = readFile(path);
  PrivateKey key(PEM_read_bio_PrivateKey(memoryReader(text).get(), nullptr, nullptr, nullptr));
  if (!key) failOpenSsl("cannot read the key " + path.string());
  return key;
}

Certificate loadCertificate(const std::filesystem::path& path) {
  const std::string text = readFile(path);
  Certificate certificate(PEM_read_bio_X509(memoryReader(text).get(), nullptr, nullptr, nullptr));
  if (!certificate) failOpenSsl("cannot read the certificate " + path.string());
  return certificate;
}

std::string pemText(EVP_PKEY* key) {
  const Bio bio(BIO_new(BIO_s_mem()));
  if (PEM_write_bio_PKCS8PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1) {
    failOpenSsl("cannot write a key");
  }
  return textOf(bio);
}

std::string pemText(X509* certificate) {
  const Bio bio(BIO_new(BIO_s_mem()));
  if (PEM_write_bio_X509(bio.get(), certificate) != 1) failOpenSsl("cannot write a certificate");
  return textOf(bio);
}

}  // namespace quillbay::sandbox
