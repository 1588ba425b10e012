#include <QuillbayPlatform/XMLParser.h>
#include <expat.h>

#include <limits>
#include <memory>
#include <string>
#include <type_traits>

namespace quillbay::platform {
namespace {

struct ParserDeleter {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

/// Joins the pieces in which expat reports character data.
class EventJoiner {
 public:
  EventJoiner(XML_Parser parser, XMLParserDelegate& delegate)
      : parser_(parser), delegate_(delegate) {
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, didStartElement, didEndElement);
    XML_SetCharacterDataHandler(parser, foundCharacters);
    XML_SetStartDoctypeDeclHandler(parser, didStartDoctype);
  }

  void reportCharacters() {
    if (characters_.empty()) return;
    delegate_.foundCharacters(characters_);
    characters_.clear();
  }

 private:
  static EventJoiner& self(void* userData) { return *static_cast<EventJoiner*>(userData); }

  static void didStartElement(void* userData, const XML_Char* name,
                              const XML_Char** /*attributes*/) noexcept {
    self(userData).reportCharacters();
    self(userData).delegate_.didStartElement(name);
  }

  static void didEndElement(void* userData, const XML_Char* name) noexcept {
    self(userData).reportCharacters();
    self(userData).delegate_.didEndElement(name);
  }

  static void foundCharacters(void* userData, const XML_Char* text, int byteCount) noexcept {
    self(userData).characters_.append(text, static_cast<std::size_t>(byteCount));
  }

  static void didStartDoctype(void* userData, const XML_Char* /*name*/,
                              const XML_Char* /*systemId*/, const XML_Char* /*publicId*/,
                              int /*hasInternalSubset*/) noexcept {
    XML_StopParser(self(userData).parser_, XML_FALSE);
  }

  XML_Parser parser_;
  XMLParserDelegate& delegate_;
  std::string characters_;
};

}  // namespace

bool XMLParser::parse() {
  const std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter> parser(
      XML_ParserCreate(nullptr));
  if (!parser || document_.size() > std::numeric_limits<int>::max()) return false;
  EventJoiner joiner(parser.get(), delegate_);
  const bool isWellFormed =
      XML_Parse(parser.get(), document_.data(), static_cast<int>(document_.size()), XML_TRUE) ==
      XML_STATUS_OK;
  joiner.reportCharacters();
  return isWellFormed;
}

}  // namespace quillbay::platform
