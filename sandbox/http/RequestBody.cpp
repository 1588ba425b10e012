#include "sandbox/http/RequestBody.h"

#include <charconv>

namespace quillbay::sandbox {

namespace {

std::optional<std::uint64_t> contentLength(const httplib::Request& request) {
  if (request.has_header("Transfer-Encoding")) return std::nullopt;
  const std::string text = request.get_header_value("Content-Length");
  std::uint64_t byteCount = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), byteCount);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return byteCount;
}

}  // namespace

RequestBody::RequestBody(const httplib::Request& request, const httplib::ContentReader* reader)
    : reader_(reader),
      announcedByteCount_(contentLength(request)),
      isPresent_(announcedByteCount_.value_or(0) > 0 || request.has_header("Transfer-Encoding")),
      isMultipart_(request.is_multipart_form_data()) {}

bool RequestBody::read(const std::function<void(std::string_view)>& receive) {
  // Without a length the library would read until the connection closes.
  if (!isPresent_) return true;
  if (isConsumed_ || isMultipart_ || reader_ == nullptr) return false;
  isConsumed_ = true;
  return (*reader_)([&](const char* data, std::size_t byteCount) {
    receive({data, byteCount});
    return true;
  });
}

std::optional<std::string> RequestBody::text(std::size_t byteLimit) {
  if (announcedByteCount_.value_or(0) > byteLimit) return std::nullopt;
  std::string text;
  bool isTooLong = false;
  const bool isWhole = read([&](std::string_view bytes) {
    isTooLong = isTooLong || text.size() + bytes.size() > byteLimit;
    if (!isTooLong) text += bytes;
  });
  if (!isWhole || isTooLong) return std::nullopt;
  return text;
}

void RequestBody::discard() {
  if (reader_ != nullptr && !isConsumed_) read([](std::string_view) {});
}

}  // namespace quillbay::sandbox
