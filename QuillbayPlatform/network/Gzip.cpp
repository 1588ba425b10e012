#include <QuillbayPlatform/network/Gzip.h>
#include <libdeflate.h>

#include <memory>

namespace quillbay::platform {
namespace {

constexpr std::size_t kSmallestByteCount = 18;
constexpr std::size_t kSizeByteCount = 4;

struct DecompressorDeleter {
  void operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
  }
};

}  // namespace

std::size_t gzipUnpackedByteCount(std::string_view packed) {
  if (packed.size() < kSmallestByteCount) return 0;
  std::size_t byteCount = 0;
  for (std::size_t index = 1; index <= kSizeByteCount; ++index) {
    byteCount = byteCount << 8 | static_cast<unsigned char>(packed[packed.size() - index]);
  }
  return byteCount;
}

std::optional<std::string> unpackGzip(std::string_view packed) {
  const std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> decompressor(
      libdeflate_alloc_decompressor());
  if (!decompressor) return std::nullopt;
  bool isWhole = false;
  std::string unpacked;
  unpacked.resize_and_overwrite(
      gzipUnpackedByteCount(packed), [&](char* bytes, std::size_t byteCount) {
        // Without a place for the true size, any other than the expected one is a failure.
        isWhole = libdeflate_gzip_decompress(decompressor.get(), packed.data(), packed.size(),
                                             bytes, byteCount, nullptr) == LIBDEFLATE_SUCCESS;
        return isWhole ? byteCount : 0;
      });
  if (!isWhole) return std::nullopt;
  return unpacked;
}

}  // namespace quillbay::platform
