#include "Connection.h"

#include <openssl/err.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

namespace quillbay::test {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t maximumHeadByteCount = 1024 * 1024;

}  // namespace

Connection::Connection(FileDescriptor socket, SSL_CTX* tls, std::size_t number, int stopDescriptor,
                       Recorder recorder)
    : socket_(std::move(socket)), stopDescriptor_(stopDescriptor), recorder_(std::move(recorder)) {
  request_.connectionNumber = number;
  ::fcntl(socket_.get(), F_SETFL, ::fcntl(socket_.get(), F_GETFL) | O_NONBLOCK);
  if (tls == nullptr) return;
  ssl_.reset(SSL_new(tls));
  SSL_set_fd(ssl_.get(), socket_.get());
  if (!handshake()) reset();
}

Connection::~Connection() { close(); }

bool Connection::handshake() {
  while (true) {
    const int result = SSL_accept(ssl_.get());
    if (result == 1) return true;
    const short event = eventToWaitFor(result, POLLIN);
    if (event == 0 || !waitForSocket(event)) return false;
  }
}

bool Connection::waitForSocket(short events, int alsoDescriptor) {
  std::array<pollfd, 3> polls{pollfd{stopDescriptor_, POLLIN, 0}, pollfd{socket_.get(), events, 0},
                              pollfd{alsoDescriptor, POLLIN, 0}};
  while (::poll(polls.data(), polls.size(), -1) < 0) {
    if (errno != EINTR) return false;
  }
  return polls[0].revents == 0;
}

short Connection::eventToWaitFor(ssize_t result, short direction) const {
  if (!ssl_) return result < 0 && (errno == EAGAIN || errno == EINTR) ? direction : short{0};
  switch (SSL_get_error(ssl_.get(), static_cast<int>(result))) {
    case SSL_ERROR_WANT_READ:
      return POLLIN;
    case SSL_ERROR_WANT_WRITE:
      return POLLOUT;
    default:
      return 0;
  }
}

bool Connection::receive() {
  std::array<char, 64 * 1024> buffer;
  while (socket_.isOpen()) {
    ERR_clear_error();
    const ssize_t byteCount =
        ssl_ ? SSL_read(ssl_.get(), buffer.data(), static_cast<int>(buffer.size()))
             : ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
    if (byteCount > 0) {
      received_.append(buffer.data(), static_cast<std::size_t>(byteCount));
      return true;
    }
    const short event = eventToWaitFor(byteCount, POLLIN);
    if (event == 0 || !waitForSocket(event)) return false;
  }
  return false;
}

void Connection::limitReceiveBuffer(int byteCount) {
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &byteCount, sizeof(byteCount));
}

std::optional<Request> Connection::readHead() {
  std::size_t end = std::string::npos;
  while ((end = received_.find("\r\n\r\n")) == std::string::npos) {
    if (received_.size() > maximumHeadByteCount || !receive()) return std::nullopt;
  }
  request_ =
      Request{.connectionNumber = request_.connectionNumber, .head = received_.substr(0, end + 4)};
  received_.erase(0, end + 4);
  recorder_(request_);
  return request_;
}

std::uint64_t Connection::readBody(std::uint64_t byteCount) {
  std::uint64_t left = std::min(byteCount, request_.announcedByteCount() - request_.bodyByteCount);
  std::uint64_t readByteCount = 0;
  while (left > 0) {
    if (received_.empty() && !receive()) break;
    const auto taken = static_cast<std::size_t>(std::min<std::uint64_t>(left, received_.size()));
    const std::size_t room = Request::keptBodyByteCount - request_.body.size();
    request_.body.append(received_, 0, std::min(taken, room));
    request_.bodyByteCount += taken;
    received_.erase(0, taken);
    left -= taken;
    readByteCount += taken;
  }
  if (readByteCount > 0) recorder_(request_);
  return readByteCount;
}

std::optional<Request> Connection::readRequest() {
  if (!readHead()) return std::nullopt;
  if (request_.field("Expect") && !send("HTTP/1.1 100 Continue\r\n\r\n")) return std::nullopt;
  readBody();
  if (request_.bodyByteCount < request_.announcedByteCount()) return std::nullopt;
  return request_;
}

bool Connection::send(std::string_view bytes) {
  while (!bytes.empty() && socket_.isOpen()) {
    ERR_clear_error();
    const ssize_t byteCount =
        ssl_ ? SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()))
             : ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (byteCount > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(byteCount));
      continue;
    }
    const short event = eventToWaitFor(byteCount, POLLOUT);
    if (event == 0 || !waitForSocket(event)) return false;
  }
  return bytes.empty();
}

bool Connection::send(const Reply& reply) {
  if (reply.sendAfter && !waitFor(*reply.sendAfter)) return false;
  if (!send(reply.bytes())) return false;
  return !reply.closeAfter && !reply.closeSilentlyAfter;
}

bool Connection::drip(std::string_view bytes, milliseconds interval) {
  for (const char& byte : bytes) {
    if (!pause(interval) || !send(std::string_view(&byte, 1))) return false;
  }
  return true;
}

bool Connection::pause(milliseconds duration) {
  pollfd stop{stopDescriptor_, POLLIN, 0};
  return ::poll(&stop, 1, static_cast<int>(duration.count())) == 0;
}

bool Connection::waitFor(const Gate& gate) {
  // Not POLLIN: what the client sends meanwhile does not matter, only that it leaves.
  if (!socket_.isOpen() || !waitForSocket(POLLRDHUP, gate.descriptor())) return false;
  return gate.isOpen();
}

bool Connection::waitForClient() {
  while (receive()) received_.clear();
  return pause(milliseconds(0));
}

void Connection::shutdownSending() {
  if (!socket_.isOpen()) return;
  if (ssl_) SSL_shutdown(ssl_.get());
  ::shutdown(socket_.get(), SHUT_WR);
}

void Connection::close() {
  shutdownSending();
  ssl_.reset();
  socket_.reset();
}

void Connection::reset() {
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  if (socket_.isOpen()) {
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
  }
  ssl_.reset();
  socket_.reset();
}

}  // namespace quillbay::test
