#include <QuillbayPlatform/ASCIICase.h>
#include <QuillbayPlatform/network/Gzip.h>
#include <QuillbayPlatform/network/ReplyCollector.h>

#include <charconv>

namespace quillbay::platform {
namespace {

constexpr std::size_t kMaximumHeadByteCount = 256 * 1024;

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// No field's name holds a slash.
bool isStatusLine(std::string_view line) { return line.starts_with("HTTP/"); }

bool isEmptyLine(std::string_view line) { return line == "\r\n" || line == "\n"; }

/// A line that goes on with the value before it (RFC 9112, section 5.2).
bool isContinuation(std::string_view line) {
  return line.starts_with(' ') || line.starts_with('\t');
}

bool isGzip(std::string_view coding) {
  return equalsIgnoringASCIICase(coding, "gzip") || equalsIgnoringASCIICase(coding, "x-gzip");
}

int statusIn(std::string_view statusLine) {
  const auto space = statusLine.find(' ');
  if (space == std::string_view::npos) return 0;
  const auto digits = statusLine.substr(space + 1, 3);
  int status = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), status);
  return status;
}

}  // namespace

void ReplyCollector::reset() {
  headByteCount_ = 0;
  statusCode_ = 0;
  headComplete_ = false;
  headerFields_.clear();
  body_.clear();
}

bool ReplyCollector::appendHeaderLine(std::string_view line) {
  headByteCount_ += line.size();
  if (headByteCount_ > kMaximumHeadByteCount) {
    overLimit_ = true;
    return false;
  }
  if (isStatusLine(line)) {
    beginReply(line);
  } else if (isEmptyLine(line)) {
    headComplete_ = statusCode_ >= 200;
  } else if (!headComplete_) {
    // Lines after the complete head are the trailer of a chunked body.
    appendField(line);
  }
  return true;
}

void ReplyCollector::beginReply(std::string_view statusLine) {
  statusCode_ = statusIn(statusLine);
  headComplete_ = false;
  headerFields_.clear();
  body_.clear();
}

void ReplyCollector::appendField(std::string_view line) {
  if (isContinuation(line)) {
    const std::string_view more = trimmed(line);
    if (!headerFields_.empty() && !more.empty())
      headerFields_.back().second.append(" ").append(more);
    return;
  }
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return;
  headerFields_.emplace_back(trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 1)));
}

bool ReplyCollector::appendBody(std::string_view bytes) {
  if (bytes.size() > maximumByteCount_ - body_.size()) {
    overLimit_ = true;
    return false;
  }
  body_.append(bytes);
  return true;
}

std::optional<std::string> ReplyCollector::takeUnpackedBody(std::string_view coding) {
  if (body_.empty() || !isGzip(coding)) return takeBody();
  auto unpacked = unpackGzip(body_, maximumByteCount_);
  if (unpacked) return std::move(*unpacked);
  overLimit_ = unpacked.error() == GzipError::tooLarge;
  if (overLimit_) return std::nullopt;
  return takeBody();
}

std::optional<HTTPURLResponse> ReplyCollector::response(const URL& url) const {
  if (!headComplete_) return std::nullopt;
  return HTTPURLResponse(url, statusCode_, headerFields_);
}

}  // namespace quillbay::platform
