#include "benchmarks/server/CannedService.h"

#include <zlib.h>

#include <charconv>

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/SessionText.h"

namespace quillbay::bench {
namespace {

constexpr int kGzipWindowBits = 15 + 16;
constexpr int kMemoryLevel = 8;

std::string gzipped(std::string text) {
  z_stream stream = {};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzipWindowBits, kMemoryLevel,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    fail("cannot compress");
  }
  std::string result(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(text.data());
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  const int code = deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  if (code != Z_STREAM_END) fail("cannot compress");
  return result;
}

std::string jsonReply(const std::string& body, const std::string& fields = {}) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n" + fields +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::size_t countOf(std::string_view word, std::string_view text) {
  std::size_t count = 0;
  for (auto at = text.find(word); at != std::string_view::npos;
       at = text.find(word, at + word.size())) {
    ++count;
  }
  return count;
}

/// The text between `before` and the next slash.
std::string_view segmentAfter(std::string_view before, std::string_view target) {
  const auto found = target.find(before);
  if (found == std::string_view::npos) return {};
  const std::string_view rest = target.substr(found + before.size());
  return rest.substr(0, rest.find('/'));
}

std::size_t itemCountIn(std::string_view target) {
  const std::string_view digits = segmentAfter("/session/bench-", target);
  std::size_t count = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), count);
  return count;
}

}  // namespace

std::string CannedService::reply(const RequestHead& head, std::string_view body) {
  const std::string_view target = head.target();
  if (target.ends_with("/upload_url")) {
    const std::string item(segmentAfter("/items/", target));
    return jsonReply(R"({"url":")" + storeAddress(item) + R"("})");
  }
  if (!target.ends_with("/session") && !target.ends_with("/finalize")) {
    return "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
  }
  const std::size_t itemCount =
      target.ends_with("/session") ? countOf("\"file_name\"", body) : itemCountIn(target);
  const bool isShort = segmentAfter("/cloud/", target) == kShortReplyInstance;
  const auto& replies = sessionReplies(itemCount, sessionIdentifier(isShort ? 1 : itemCount));
  const bool acceptsGzip = head.field("Accept-Encoding").find("gzip") != std::string_view::npos;
  return acceptsGzip ? replies.compressed : replies.plain;
}

const CannedService::SessionReplies& CannedService::sessionReplies(std::size_t itemCount,
                                                                   const std::string& identifier) {
  const std::lock_guard lock(mutex_);
  auto& replies = sessionReplies_[{itemCount, identifier}];
  if (replies.plain.empty()) {
    const std::string text = sessionText(itemCount, identifier);
    replies.plain = jsonReply(text);
    replies.compressed = jsonReply(gzipped(text), "Content-Encoding: gzip\r\n");
  }
  return replies;
}

}  // namespace quillbay::bench
