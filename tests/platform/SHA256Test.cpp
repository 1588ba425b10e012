#include <QuillbayPlatform/SHA256.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace quillbay::platform {
namespace {

std::string digestInPieces(SHA256& hash, std::string_view text, std::size_t pieceByteCount) {
  auto bytes = std::as_bytes(std::span(text));
  while (!bytes.empty()) {
    const auto piece = bytes.first(std::min(pieceByteCount, bytes.size()));
    hash.update(piece);
    bytes = bytes.subspan(piece.size());
  }
  return lowercaseHexadecimal(hash.finalize());
}

TEST(SHA256, GivesTheStandardsDigestsHoweverTheBytesAreCut) {
  struct Case {
    std::string text;
    const char* digest;
  };
  const Case cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1'000'000, 'a'),
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  SHA256 hash;
  for (const Case& row : cases) {
    for (const std::size_t pieceByteCount : {63U, 64U, 65U, 131072U}) {
      EXPECT_EQ(digestInPieces(hash, row.text, pieceByteCount), row.digest) << pieceByteCount;
    }
  }
}

}  // namespace
}  // namespace quillbay::platform
