#include <QuillbayPlatform/network/Gzip.h>
#include <QuillbayPlatform/network/ReplyCollector.h>
#include <strings.h>

#include <charconv>

namespace quillbay::platform {
namespace {

constexpr std::size_t kMaximumHeadByteCount = 256 * 1024;

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool isStatusLine(std::string_view line) { return line.starts_with("HTTP/"); }

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
  // Lines after the complete head are the trailer of a chunked body.
  if (headComplete_) return true;
  if (isStatusLine(line)) {
    statusCode_ = statusIn(line);
    headerFields_.clear();
    return true;
  }
  const std::string_view content = trimmed(line);
  if (content.empty()) {
    headComplete_ = statusCode_ >= 200;
    return true;
  }
  const auto colon = content.find(':');
  if (colon == std::string_view::npos) return true;
  headerFields_.emplace_back(trimmed(content.substr(0, colon)), trimmed(content.substr(colon + 1)));
  return true;
}

bool ReplyCollector::appendBody(std::string_view bytes) {
  if (bytes.size() > maximumByteCount_ - body_.size()) {
    overLimit_ = true;
    return false;
  }
  body_.append(bytes);
  return true;
}

std::optional<std::string> ReplyCollector::takeUnpackedBody(const std::string& coding) {
  const auto isNamed = [&](const char* name) { return strcasecmp(coding.c_str(), name) == 0; };
  if (body_.empty() || coding.empty() || isNamed("identity")) return takeBody();
  if (!isNamed("gzip") && !isNamed("x-gzip")) return std::nullopt;
  overLimit_ = gzipUnpackedByteCount(body_) > maximumByteCount_;
  return overLimit_ ? std::nullopt : unpackGzip(body_);
}

std::optional<HTTPURLResponse> ReplyCollector::response(const URL& url) const {
  if (!headComplete_) return std::nullopt;
  return HTTPURLResponse(url, statusCode_, headerFields_);
}

}  // namespace quillbay::platform
