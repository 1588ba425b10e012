#include "Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

namespace quillbay::test {

Connection::Connection(host::FileDescriptor socket, SSL_CTX* tls, Recorder recorder)
    : socket_(std::move(socket)), recorder_(std::move(recorder)) {
  if (tls == nullptr) return;
  ssl_.reset(SSL_new(tls));
  SSL_set_fd(ssl_.get(), socket_.get());
  SSL_set_accept_state(ssl_.get());
}

bool Connection::receive() {
  std::array<char, 64 * 1024> buffer;
  const ssize_t byteCount =
      ssl_ ? SSL_read(ssl_.get(), buffer.data(), static_cast<int>(buffer.size()))
           : ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
  if (byteCount <= 0) return false;
  received_.append(buffer.data(), static_cast<std::size_t>(byteCount));
  return true;
}

void Connection::limitReceiveBuffer(int byteCount) {
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &byteCount, sizeof(byteCount));
}

std::optional<Request> Connection::readHead() {
  std::size_t end = std::string::npos;
  while ((end = received_.find("\r\n\r\n")) == std::string::npos) {
    if (!receive()) return std::nullopt;
  }
  request_ = Request{.head = received_.substr(0, end + 4)};
  received_.erase(0, end + 4);
  recorder_(request_);
  return request_;
}

std::uint64_t Connection::readBody(std::uint64_t byteCount) {
  const std::uint64_t before = request_.bodyByteCount;
  std::uint64_t left = std::min(byteCount, request_.announcedByteCount() - before);
  while (left > 0 && (!received_.empty() || receive())) {
    const auto taken = static_cast<std::size_t>(std::min<std::uint64_t>(left, received_.size()));
    const std::size_t room = Request::keptBodyByteCount - request_.body.size();
    request_.body.append(received_, 0, std::min(taken, room));
    request_.bodyByteCount += taken;
    received_.erase(0, taken);
    left -= taken;
  }
  if (request_.bodyByteCount > before) recorder_(request_);
  return request_.bodyByteCount - before;
}

std::optional<Request> Connection::readRequest(std::uint64_t bodyByteCount) {
  if (!readHead()) return std::nullopt;
  if (request_.field("Expect") && !send("HTTP/1.1 100 Continue\r\n\r\n")) return std::nullopt;
  readBody(bodyByteCount);
  if (request_.bodyByteCount < std::min(bodyByteCount, request_.announcedByteCount())) {
    return std::nullopt;
  }
  return request_;
}

bool Connection::send(std::string_view bytes) {
  if (bytes.empty()) return true;
  const ssize_t byteCount =
      ssl_ ? SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()))
           : ::send(socket_.get(), bytes.data(), bytes.size(), 0);
  return std::cmp_equal(byteCount, bytes.size());
}

bool Connection::send(const Reply& reply) {
  if (reply.sendAfter && !waitFor(*reply.sendAfter)) return false;
  return send(reply.bytes()) && reply.raw.empty() && reply.status != 0;
}

bool Connection::pause(std::chrono::milliseconds duration) {
  // No events asked for: only the end of both directions counts.
  pollfd end{socket_.get(), 0, 0};
  return ::poll(&end, 1, static_cast<int>(duration.count())) == 0;
}

bool Connection::waitFor(const Gate& gate) {
  // Not POLLIN: what the client sends meanwhile does not matter, only that it leaves.
  std::array<pollfd, 2> polls{pollfd{socket_.get(), POLLRDHUP, 0},
                              pollfd{gate.descriptor(), POLLIN, 0}};
  ::poll(polls.data(), polls.size(), -1);
  return gate.isOpen();
}

void Connection::shutdownSending() {
  // A second time it would wait for the client's end.
  if (ssl_ && (SSL_get_shutdown(ssl_.get()) & SSL_SENT_SHUTDOWN) == 0) SSL_shutdown(ssl_.get());
  ::shutdown(socket_.get(), SHUT_WR);
}

void Connection::reset() {
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
  release();
}

void Connection::release() {
  ssl_.reset();
  const std::lock_guard lock(mutex_);
  socket_.reset();
}

void Connection::interrupt() {
  const std::lock_guard lock(mutex_);
  ::shutdown(socket_.get(), SHUT_RDWR);
}

}  // namespace quillbay::test
