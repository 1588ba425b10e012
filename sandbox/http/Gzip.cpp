#include "sandbox/http/Gzip.h"

#include <zlib.h>

#include <memory>
#include <stdexcept>

namespace quillbay::sandbox {

namespace {

struct EndDeflate {
  void operator()(z_stream* stream) const noexcept { deflateEnd(stream); }
};

}  // namespace

bool acceptsGzip(std::string_view acceptEncoding) {
  const std::size_t start = acceptEncoding.find("gzip");
  if (start == std::string_view::npos) return false;
  std::string_view parameters = acceptEncoding.substr(start + 4);
  parameters = parameters.substr(0, parameters.find(','));
  // "gzip;q=0" is a refusal.
  const std::size_t weight = parameters.find("q=0");
  return weight == std::string_view::npos ||
         parameters.find_first_of("123456789", weight) != std::string_view::npos;
}

std::string gzip(std::string_view text) {
  // A finalize reply repeats the whole session, so speed counts for more than the last per cent.
  constexpr int level = 1;
  constexpr int gzipWindowBits = 15 + 16;
  constexpr int memoryLevel = 8;
  z_stream stream{};
  if (deflateInit2(&stream, level, Z_DEFLATED, gzipWindowBits, memoryLevel, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw std::runtime_error("compression is not available");
  }
  const std::unique_ptr<z_stream, EndDeflate> end(&stream);
  std::string packed(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::runtime_error("compression failed");
  packed.resize(stream.total_out);
  return packed;
}

}  // namespace quillbay::sandbox
