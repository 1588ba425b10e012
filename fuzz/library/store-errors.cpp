#include <QuillbayCloud/service/AmazonErrorParser.h>
#include <fuzz/support/Expect.h>
#include <simdjson.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace quillbay;
using fuzz::expect;

namespace {

std::optional<cloud::AmazonError> parsed(std::string document) {
  return cloud::AmazonErrorParser::create(std::move(document))->parse();
}

/// The bytes as characters that XML 1.0 allows in UTF-8: printable ASCII.
std::string asText(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes)
    text += static_cast<char>(' ' + static_cast<unsigned char>(byte) % 95);
  return text;
}

void expectOnlyTextOfTheDocument(const std::string& document) {
  const auto error = parsed(document);
  if (!error) return;
  expect(!error->type().empty() && !error->message().empty(), "no text is empty");
  expect(simdjson::validate_utf8(error->type()) && simdjson::validate_utf8(error->message()),
         "texts are UTF-8");
  // ISO 8859-1 grows the most: to twice its length.
  expect(error->type().size() + error->message().size() <= 2 * document.size(),
         "no entity makes a text longer than the document");
  expect(error->description().find('\n') == std::string::npos, "a description is a single line");
  expect(parsed("<!DOCTYPE a>" + document) == std::nullopt, "nothing is read after a DOCTYPE");
}

/// Whatever else is in the element, and even if the document breaks off.
void expectTextsFoundAmong(std::string_view other, const std::string& type,
                           const std::string& message) {
  const std::string head =
      "<Error><Code><![CDATA[" + type + "]]></Code><Message><![CDATA[" + message + "]]></Message>";
  if (type.empty() || message.empty()) return;
  expect(parsed(head + "</Error>") == cloud::AmazonError(type, message), "both texts are found");
  const auto error = parsed(head + "<Other>" + std::string(other));
  expect(error.has_value(), "what follows the texts does not take them away");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  const std::string document(reinterpret_cast<const char*>(bytes), byteCount);
  expectOnlyTextOfTheDocument(document);
  std::string text = asText(document.substr(0, 64));
  // The end of a CDATA section cannot be part of one.
  for (std::size_t end; (end = text.find("]]>")) != std::string::npos;) text.erase(end, 3);
  expectTextsFoundAmong(document, text.substr(0, text.size() / 2), text.substr(text.size() / 2));
  return 0;
}
