#include <QuillbayPlatform/network/Gzip.h>
#include <libdeflate.h>

#include <algorithm>
#include <memory>

namespace quillbay::platform {
namespace {

constexpr std::string_view kMemberBeginning = "\x1F\x8B";
constexpr std::size_t kSizeByteCount = 4;
constexpr std::size_t kSmallestRoomByteCount = 1024;
// DEFLATE packs no byte into less than two bits of every 258.
constexpr std::size_t kGreatestRatio = 1032;

struct DecompressorDeleter {
  void operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
  }
};

/// The last four bytes: the unpacked size modulo 2^32 where one member is all there is.
std::size_t statedByteCount(std::string_view packed) {
  std::size_t byteCount = 0;
  for (std::size_t index = 1; index <= std::min(kSizeByteCount, packed.size()); ++index) {
    byteCount = byteCount << 8 | static_cast<unsigned char>(packed[packed.size() - index]);
  }
  return byteCount;
}

/// Appends what one member after another holds to one text.
class Unpacker {
 public:
  explicit Unpacker(std::size_t maximumByteCount) : maximumByteCount_(maximumByteCount) {}

  /// Takes the first member off `packed`.
  std::expected<void, GzipError> unpackMember(std::string_view& packed) {
    if (!decompressor_) return std::unexpected(GzipError::damaged);
    const std::size_t roomLeft = maximumByteCount_ - unpacked_.size();
    const std::size_t possible = packed.size() * kGreatestRatio;
    std::size_t room = std::max(statedByteCount(packed), kSmallestRoomByteCount);
    for (;; room *= 2) {
      room = std::min({room, possible, roomLeft});
      const libdeflate_result result = decompress(packed, room);
      if (result == LIBDEFLATE_SUCCESS) return {};
      if (result != LIBDEFLATE_INSUFFICIENT_SPACE) return std::unexpected(GzipError::damaged);
      if (room == roomLeft) return std::unexpected(GzipError::tooLarge);
      if (room == possible) return std::unexpected(GzipError::damaged);
    }
  }

  std::string takeUnpacked() { return std::move(unpacked_); }

 private:
  libdeflate_result decompress(std::string_view& packed, std::size_t room) {
    libdeflate_result result = LIBDEFLATE_BAD_DATA;
    const std::size_t before = unpacked_.size();
    unpacked_.resize_and_overwrite(before + room, [&](char* bytes, std::size_t) {
      std::size_t packedByteCount = 0;
      std::size_t byteCount = 0;
      result = libdeflate_gzip_decompress_ex(decompressor_.get(), packed.data(), packed.size(),
                                             bytes + before, room, &packedByteCount, &byteCount);
      if (result != LIBDEFLATE_SUCCESS) return before;
      packed.remove_prefix(packedByteCount);
      return before + byteCount;
    });
    return result;
  }

  const std::size_t maximumByteCount_;
  const std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> decompressor_{
      libdeflate_alloc_decompressor()};
  std::string unpacked_;
};

}  // namespace

std::expected<std::string, GzipError> unpackGzip(std::string_view packed,
                                                 std::size_t maximumByteCount) {
  Unpacker unpacker(maximumByteCount);
  do {
    const auto unpacked = unpacker.unpackMember(packed);
    if (!unpacked) return std::unexpected(unpacked.error());
  } while (packed.starts_with(kMemberBeginning));
  return unpacker.takeUnpacked();
}

}  // namespace quillbay::platform
