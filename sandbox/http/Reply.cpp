#include "sandbox/http/Reply.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "sandbox/http/Gzip.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t pieceByteCount = 256 * 1024;
// Below this the packed text is hardly shorter.
constexpr std::size_t worthCompressingByteCount = 256;

/// A file cut short under our hands ends the reply early, never with made-up bytes.
bool sendFile(const FileSlice& slice, std::size_t position, httplib::DataSink& sink) {
  static thread_local std::vector<char> piece(pieceByteCount);
  const std::size_t wanted = std::min<std::size_t>(piece.size(), slice.byteCount - position);
  ssize_t count = 0;
  do {
    count = ::pread(slice.file->get(), piece.data(), wanted,
                    static_cast<off_t>(slice.offset + position));
  } while (count < 0 && errno == EINTR);
  return count > 0 && sink.write(piece.data(), static_cast<std::size_t>(count));
}

void setText(std::string text, const std::string& contentType, httplib::Response& response) {
  if (text.empty()) return;
  // As a plain body the library would compress it once more, and slower.
  const auto shared = std::make_shared<const std::string>(std::move(text));
  response.set_content_provider(
      shared->size(), contentType,
      [shared](std::size_t offset, std::size_t byteCount, httplib::DataSink& sink) {
        return sink.write(shared->data() + offset, byteCount);
      });
}

void setBody(FileSlice slice, const std::string& contentType, httplib::Response& response) {
  if (slice.byteCount == 0) {
    response.set_header("Content-Type", contentType);
    return;
  }
  const std::size_t byteCount = slice.byteCount;
  response.set_content_provider(
      byteCount, contentType,
      [slice = std::move(slice)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        return sendFile(slice, offset, sink);
      });
}

void setBody(Producer producer, const std::string& contentType, httplib::Response& response) {
  response.set_chunked_content_provider(contentType, [producer = std::move(producer)](
                                                         std::size_t, httplib::DataSink& sink) {
    if (!producer([&](std::string_view bytes) { return sink.write(bytes.data(), bytes.size()); }))
      return false;
    sink.done();
    return true;
  });
}

}  // namespace

void transfer(Reply reply, const httplib::Request& request, httplib::Response& response) {
  response.status = reply.status;
  for (const auto& [name, value] : reply.headers) response.set_header(name, value);
  if (auto* slice = std::get_if<FileSlice>(&reply.body)) {
    setBody(std::move(*slice), reply.contentType, response);
    return;
  }
  if (auto* producer = std::get_if<Producer>(&reply.body)) {
    setBody(std::move(*producer), reply.contentType, response);
    return;
  }
  auto& text = std::get<std::string>(reply.body);
  if (text.size() >= worthCompressingByteCount) {
    response.set_header("Vary", "Accept-Encoding");
    if (acceptsGzip(request.get_header_value("Accept-Encoding"))) {
      text = gzip(text);
      response.set_header("Content-Encoding", "gzip");
    }
  }
  setText(std::move(text), reply.contentType, response);
}

}  // namespace quillbay::sandbox
