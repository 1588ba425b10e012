// Unpacking of replies, judged by zlib. The input is taken three times: as it is; as the packed
// content of a file whose frame is in order, which random bytes never have; and as plain bytes that
// zlib packs.
#include <QuillbayPlatform/network/Gzip.h>
#include <fuzz/support/Expect.h>
#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

using namespace quillbay;
using fuzz::expect;

namespace {

constexpr std::size_t kLimitByteCount = std::size_t{1} << 16;
constexpr int kRawWindowBits = -15;
constexpr int kGzipWindowBits = 15 + 16;

/// What one stream holds, whose own bytes are taken off `packed`; nothing if it is not in order or
/// holds more than the limit.
std::optional<std::string> inflated(std::string_view& packed, int windowBits) {
  z_stream stream = {};
  if (inflateInit2(&stream, windowBits) != Z_OK) return std::nullopt;
  std::string plain(kLimitByteCount, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(plain.data());
  stream.avail_out = static_cast<uInt>(plain.size());
  const int end = inflate(&stream, Z_FINISH);
  plain.resize(stream.total_out);
  packed.remove_prefix(stream.total_in);
  inflateEnd(&stream);
  return end == Z_STREAM_END ? std::optional(plain) : std::nullopt;
}

/// All members of a file.
std::optional<std::string> inflatedMembers(std::string_view packed) {
  std::string plain;
  do {
    const auto member = inflated(packed, kGzipWindowBits);
    if (!member) return std::nullopt;
    plain += *member;
  } while (packed.starts_with("\x1F\x8B"));
  return plain;
}

std::string deflated(std::string_view plain, int level, int strategy) {
  z_stream stream = {};
  expect(deflateInit2(&stream, level, Z_DEFLATED, kGzipWindowBits, 8, strategy) == Z_OK, "zlib");
  std::string packed(deflateBound(&stream, plain.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  expect(deflate(&stream, Z_FINISH) == Z_STREAM_END, "zlib");
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

std::string littleEndian(std::size_t number) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift);
  return bytes;
}

/// `content` with a head and a tail that fit it.
std::optional<std::string> framed(std::string_view content) {
  std::string_view rest = content;
  const auto plain = inflated(rest, kRawWindowBits);
  if (!plain) return std::nullopt;
  const auto checksum =
      crc32(0, reinterpret_cast<const Bytef*>(plain->data()), static_cast<uInt>(plain->size()));
  return std::string("\x1F\x8B\x08\0\0\0\0\0\0\x03", 10)
      .append(content.substr(0, content.size() - rest.size()))
      .append(littleEndian(checksum))
      .append(littleEndian(plain->size()));
}

void expectUnpacked(std::string_view packed, const std::string& plain) {
  const auto exactly = platform::unpackGzip(packed, plain.size());
  expect(exactly && *exactly == plain, "what fits the limit exactly is unpacked");
  if (plain.empty()) return;
  const auto tooLarge = platform::unpackGzip(packed, plain.size() - 1);
  expect(!tooLarge && tooLarge.error() == platform::GzipError::tooLarge,
         "one byte over the limit is too large");
}

void expectAsByZlib(std::string_view packed) {
  const auto plain = inflatedMembers(packed);
  if (plain) return expectUnpacked(packed, *plain);
  const auto unpacked = platform::unpackGzip(packed, kLimitByteCount);
  expect(!unpacked || unpacked->size() <= kLimitByteCount, "the limit holds");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), byteCount);
  expectAsByZlib(input);
  if (input.empty()) return 0;
  if (const auto file = framed(input)) expectAsByZlib(*file + *file);
  const int choice = input.front() & 0xFF;
  const std::string packed = deflated(input, choice % 10, choice / 10 % 5);
  expectUnpacked(packed, std::string(input));
  expectUnpacked(packed + packed + "padding", std::string(input).append(input));
  const auto damaged = platform::unpackGzip(packed.substr(0, packed.size() - 1), kLimitByteCount);
  expect(!damaged, "a file that breaks off is refused");
  return 0;
}
