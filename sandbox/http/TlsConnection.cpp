#include "sandbox/http/TlsConnection.h"

#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace quillbay::sandbox {

namespace {

constexpr std::size_t inputByteCount = 64 * 1024;
constexpr std::size_t outputByteCount = 64 * 1024;
constexpr std::chrono::seconds goodbyeLimit{2};

void limitSilence(int socket, std::chrono::seconds limit) {
  const timeval time{.tv_sec = limit.count(), .tv_usec = 0};
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
  ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
}

bool waitReadable(int socket, std::chrono::milliseconds limit) {
  pollfd entry{.fd = socket, .events = POLLIN, .revents = 0};
  return ::poll(&entry, 1, static_cast<int>(limit.count())) > 0;
}

}  // namespace

TlsConnection::TlsConnection(SSL_CTX* context, int socket, std::chrono::seconds silenceLimit)
    : ssl_(SSL_new(context)), socket_(socket), input_(inputByteCount) {
  limitSilence(socket, silenceLimit);
  isAlive_ = ssl_ && SSL_set_fd(ssl_.get(), socket) == 1;
}

std::expected<void, std::string> TlsConnection::handshake() {
  ERR_clear_error();
  isAlive_ = isAlive_ && SSL_accept(ssl_.get()) == 1;
  if (isAlive_) return {};
  const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
  return std::unexpected(reason == nullptr ? "the client has gone or fell silent" : reason);
}

bool TlsConnection::waitForRequest(std::chrono::seconds limit) {
  if (inputStart_ < inputEnd_) return true;
  if (SSL_has_pending(ssl_.get()) == 0 && !waitReadable(socket_, limit)) return false;
  return fill();
}

bool TlsConnection::flush() {
  if (!isAlive_) return false;
  if (output_.empty()) return true;
  ERR_clear_error();
  isAlive_ = SSL_write(ssl_.get(), output_.data(), static_cast<int>(output_.size())) > 0;
  output_.clear();
  return isAlive_;
}

void TlsConnection::closeGently() {
  if (!flush()) return;
  SSL_shutdown(ssl_.get());
  ::shutdown(socket_, SHUT_WR);
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + goodbyeLimit;
  std::array<char, 16384> unread;
  while (true) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - steady_clock::now());
    if (left.count() <= 0 || !waitReadable(socket_, left)) return;
    if (::recv(socket_, unread.data(), unread.size(), MSG_DONTWAIT) <= 0) return;
  }
}

bool TlsConnection::fill() {
  // The peer may be waiting for what we have said before it says more.
  if (!flush()) return false;
  ERR_clear_error();
  const int count = SSL_read(ssl_.get(), input_.data(), static_cast<int>(input_.size()));
  // After a good-bye or a silence the peer can still be told why its request failed.
  const int error = SSL_get_error(ssl_.get(), count);
  isAlive_ = error != SSL_ERROR_SSL && error != SSL_ERROR_SYSCALL;
  inputStart_ = 0;
  inputEnd_ = static_cast<std::size_t>(std::max(count, 0));
  return count > 0;
}

ssize_t TlsConnection::read(char* data, std::size_t byteLimit) {
  if (inputStart_ == inputEnd_ && !fill()) return -1;
  const std::size_t count = std::min(byteLimit, inputEnd_ - inputStart_);
  std::memcpy(data, input_.data() + inputStart_, count);
  inputStart_ += count;
  readByteCount_ += count;
  return static_cast<ssize_t>(count);
}

ssize_t TlsConnection::write(const char* data, std::size_t byteCount) {
  output_.append(data, byteCount);
  writtenByteCount_ += byteCount;
  if (output_.size() >= outputByteCount && !flush()) return -1;
  return static_cast<ssize_t>(byteCount);
}

void TlsConnection::get_remote_ip_and_port(std::string&, int&) const {}

void TlsConnection::get_local_ip_and_port(std::string&, int&) const {}

}  // namespace quillbay::sandbox
