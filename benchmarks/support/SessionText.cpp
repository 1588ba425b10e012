#include "benchmarks/support/SessionText.h"

#include <cstdint>
#include <string_view>

#include "benchmarks/support/Addresses.h"

namespace quillbay::bench {
namespace {

constexpr std::size_t kFingerprintDigitCount = 64;

std::uint64_t scrambled(std::uint64_t value) {
  value += 0x9e3779b97f4a7c15;
  value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
  value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
  return value ^ (value >> 31);
}

void appendFingerprint(std::string& text, std::uint64_t seed) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < kFingerprintDigitCount; ++i, bits >>= 4) {
    if (i % 16 == 0) bits = scrambled((seed * 4) + (i / 16));
    text += digits[bits & 15];
  }
}

}  // namespace

std::string itemIdentifier(std::size_t index) {
  const std::string digits = std::to_string(index);
  return "item-" + std::string(digits.size() < 6 ? 6 - digits.size() : 0, '0') + digits;
}

std::string sessionIdentifier(std::size_t replyItemCount) {
  return "bench-" + std::to_string(replyItemCount);
}

std::string sessionText(std::size_t itemCount, const std::string& identifier) {
  std::string text = R"({"id":")" + identifier + R"(","token":")" + kSessionToken +
                     R"(","url":"https://)" + kServiceHost +
                     R"(/s/Qb7xT2","title":"Benchmark","expiration":1893456000,"items":[)";
  for (std::size_t i = 0; i < itemCount; ++i) {
    if (i > 0) text += ',';
    text += R"({"id":")" + itemIdentifier(i) + R"(","is_uploaded":true,"fingerprint":")";
    appendFingerprint(text, i);
    text += R"("})";
  }
  return text + "]}";
}

}  // namespace quillbay::bench
