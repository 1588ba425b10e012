#pragma once

#include <string_view>

namespace quillbay::platform {

/// Receives the events of an `XMLParser`, in document order, during its `parse()`.
///
/// Its operations must not throw.
class XMLParserDelegate {
 public:
  virtual ~XMLParserDelegate() = default;
  virtual void didStartElement(std::string_view name) = 0;
  virtual void didEndElement(std::string_view name) = 0;
  /// All character data between two tags, in one piece, entities resolved, as UTF-8.
  virtual void foundCharacters(std::string_view text) = 0;
};

/// An event-driven parser of one XML 1.0 document without namespace processing. It fetches
/// nothing, and it stops at a DOCTYPE, so that a document cannot define entities.
class XMLParser {
 public:
  /// `document` and `delegate` must outlive the parser.
  XMLParser(std::string_view document, XMLParserDelegate& delegate)
      : document_(document), delegate_(delegate) {}

  /// Runs to the end of the document or to its first error; true if it was well-formed. Character
  /// data that an error cuts off is still reported.
  bool parse();

 private:
  std::string_view document_;
  XMLParserDelegate& delegate_;
};

}  // namespace quillbay::platform
