#include "benchmarks/server/Connection.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

constexpr std::size_t kBufferByteCount = 64UZ * 1024;
constexpr std::string_view kHeadEnd = "\r\n\r\n";

}  // namespace

std::string_view RequestHead::method() const {
  return std::string_view(text_).substr(0, text_.find(' '));
}

std::string_view RequestHead::target() const {
  const auto begin = text_.find(' ') + 1;
  return std::string_view(text_).substr(begin, text_.find(' ', begin) - begin);
}

std::string_view RequestHead::field(std::string_view name) const {
  const std::string start = "\r\n" + std::string(name) + ": ";
  const auto found = text_.find(start);
  if (found == std::string::npos) return {};
  const auto begin = found + start.size();
  return std::string_view(text_).substr(begin, text_.find('\r', begin) - begin);
}

std::uint64_t RequestHead::contentLength() const {
  const std::string_view text = field("Content-Length");
  std::uint64_t byteCount = 0;
  std::from_chars(text.data(), text.data() + text.size(), byteCount);
  return byteCount;
}

Connection::Connection(SSL_CTX* context, int socket)
    : stream_(SSL_new(context)), socket_(socket), buffer_(kBufferByteCount) {
  SSL_set_fd(stream_.get(), socket_);
  if (SSL_accept(stream_.get()) == 1) return;
  close(socket_);
  fail("a TLS handshake failed");
}

Connection::~Connection() { close(socket_); }

std::string Connection::serverName() const {
  const char* name = SSL_get_servername(stream_.get(), TLSEXT_NAMETYPE_host_name);
  return name != nullptr ? name : "unnamed";
}

bool Connection::fill() {
  const int count = SSL_read(stream_.get(), buffer_.data(), static_cast<int>(buffer_.size()));
  begin_ = 0;
  end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
  return count > 0;
}

bool Connection::readHead(std::string& head) {
  head.clear();
  for (;;) {
    const std::size_t searchFrom =
        head.size() < kHeadEnd.size() ? 0 : head.size() - kHeadEnd.size();
    const std::size_t before = head.size();
    head.append(buffer_.data() + begin_, end_ - begin_);
    const auto found = head.find(kHeadEnd, searchFrom);
    if (found != std::string::npos) {
      const std::size_t headSize = found + kHeadEnd.size();
      begin_ += headSize - before;
      head.resize(headSize);
      return true;
    }
    if (!fill()) return false;
  }
}

std::string Connection::readBody(std::uint64_t byteCount) {
  std::string body;
  while (body.size() < byteCount) {
    if (begin_ == end_ && !fill()) fail("a request body broke off");
    const std::size_t count = std::min<std::uint64_t>(end_ - begin_, byteCount - body.size());
    body.append(buffer_.data() + begin_, count);
    begin_ += count;
  }
  return body;
}

void Connection::discardBody(std::uint64_t byteCount) {
  while (byteCount > 0) {
    if (begin_ == end_ && !fill()) fail("an upload broke off");
    const std::size_t count = std::min<std::uint64_t>(end_ - begin_, byteCount);
    byteCount -= count;
    begin_ += count;
  }
}

void Connection::write(std::string_view bytes) {
  if (SSL_write(stream_.get(), bytes.data(), static_cast<int>(bytes.size())) <= 0) {
    fail("the client has gone");
  }
}

}  // namespace quillbay::bench
