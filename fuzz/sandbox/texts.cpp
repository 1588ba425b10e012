// Codings, names, markup and other texts of strangers.
#include <fuzz/support/Expect.h>

#include <algorithm>
#include <string>

#include "fuzz/sandbox/Utf8.h"
#include "sandbox/http/ContentDisposition.h"
#include "sandbox/http/Target.h"
#include "sandbox/support/Base64.h"
#include "sandbox/support/Hex.h"
#include "sandbox/support/Markup.h"
#include "sandbox/support/MediaType.h"
#include "sandbox/support/PercentCoding.h"
#include "sandbox/support/Utf8Check.h"

using namespace quillbay::sandbox;
using quillbay::fuzz::expect;
using quillbay::fuzz::isUtf8;

namespace {

bool isPrintableAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

void expectCodingsRoundTrip(std::string_view text) {
  expect(percentDecode(percentEncode(text)) == text, "percent-encoding can be undone");
  expect(isPrintableAscii(percentEncode(text)), "an encoded text fits into an address");
  expect(base64Decode(base64Encode(text)) == text, "Base64 can be undone");
  expect(percentDecode(text).size() <= text.size(), "a decoded text is not longer");
  const auto decoded = base64Decode(text);
  expect(!decoded || base64Encode(*decoded) == text, "bytes have one form in Base64");
  expect(hexEncode(text).size() == 2 * text.size(), "a byte is two digits");
}

void expectUtf8Known(std::string_view text) {
  const bool isProof =
      isUtf8(text) && std::ranges::any_of(text, [](char c) { return (c & 0x80) != 0; });
  for (std::size_t cut = 0; cut <= std::min<std::size_t>(text.size(), 8); ++cut) {
    Utf8Check check;
    check.update(text.substr(0, cut));
    check.update(text.substr(cut));
    expect(check.isProven() == isProof && check.isWellFormed() == isUtf8(text),
           "UTF-8 is known in any pieces");
  }
}

/// Control characters of ASCII, and those beyond it in UTF-8.
bool hasControls(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < ' ' || byte == 0x7F) return true;
    const bool isPair = byte == 0xC2 && i + 1 < text.size();
    if (isPair && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
        static_cast<unsigned char>(text[i + 1]) < 0xA0)
      return true;
  }
  return false;
}

void expectSafeName(std::string_view text) {
  const std::string name = safeFileName(text);
  expect(!hasControls(name), "a name has no control characters");
  expect(name.find_first_of("/\\") == std::string::npos, "a name is no path");
  expect(!isUtf8(text) || isUtf8(name), "UTF-8 stays UTF-8");
  expect(safeFileName(name) == name, "a safe name is safe");

  const std::string header = contentDisposition(false, text);
  const std::string start = "attachment; filename=\"";
  expect(isPrintableAscii(header) && header.starts_with(start), "a name fits into a header");
  const std::size_t quote = header.find('"', start.size());
  const std::string separator = "\"; filename*=UTF-8''";
  expect(header.compare(quote, separator.size(), separator) == 0, "no name ends the quotes");
  expect(percentDecode(header.substr(quote + separator.size())) == name,
         "the exact name is in the header");
}

void expectEscaped(std::string_view text) {
  const std::string escaped = escapeMarkup(text);
  expect(escaped.find_first_of("<>\"'") == std::string::npos, "no text ends its element");
  for (std::size_t at = 0; (at = escaped.find('&', at)) != std::string::npos; ++at) {
    const std::string entity = escaped.substr(at, escaped.find(';', at) - at);
    expect(entity == "&amp" || entity == "&lt" || entity == "&gt" || entity == "&quot" ||
               entity == "&#39",
           "an ampersand starts a known entity");
  }
  expect(isUtf8(escaped) == isUtf8(text), "UTF-8 stays UTF-8");
}

void expectMediaTypeCompared(std::string_view text) {
  const auto type = parseMediaType(text);
  if (!type) return;
  expect(std::ranges::count(type->essence, '/') == 1 && isPrintableAscii(type->essence),
         "a type has two parts");
  expect(parseMediaType(type->essence)->essence == type->essence, "a type is a type");
  expect(parseMediaType(std::string(text) + "; charset=utf-8")->hasCharset,
         "a parameter can be added");
}

void expectTargetTakenApart(std::string_view text) {
  const Target target(text);
  expect(target.path + (text.contains('?') ? "?" : "") + target.query == text,
         "a target is its path and its query");
  std::string joined;
  for (const std::string& segment : target.segments) joined += "/" + percentEncode(segment);
  const Target again(joined);
  expect(again.segments == target.segments, "segments can be joined again");
  std::string query;
  const auto parameters = parseParameters(text);
  for (const auto& [name, value] : parameters) {
    query += "&" + percentEncode(name) + "=" + percentEncode(value);
  }
  expect(parseParameters(query) == parameters, "parameters can be joined again");
  parseParameters(text, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  // Nothing follows the bytes, so that reading too far is noticed.
  const std::string_view text(reinterpret_cast<const char*>(bytes), byteCount);
  expectCodingsRoundTrip(text);
  expectUtf8Known(text);
  expectSafeName(text);
  expectEscaped(text);
  expectMediaTypeCompared(text);
  expectTargetTakenApart(text);
  return 0;
}
