#pragma once

#include <QuillbayCloud/service/AmazonError.h>
#include <QuillbayPlatform/XMLParser.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::cloud {

/// Internal: finds code and message in an object store's XML error document, wherever they stand.
/// For one `parse()`; one thread.
class AmazonErrorParser final : private platform::XMLParserDelegate {
 public:
  /// `data`: the body of the reply.
  static std::shared_ptr<AmazonErrorParser> create(std::string data);

  /// Nothing if either text is missing. A body that breaks off counts up to where it does.
  std::optional<AmazonError> parse();

 private:
  explicit AmazonErrorParser(std::string data);

  void didStartElement(std::string_view name) override;
  void didEndElement(std::string_view name) override;
  void foundCharacters(std::string_view text) override;

  const std::string data_;
  std::optional<std::string> parsedResponseErrorType_;
  std::optional<std::string> parsedMessage_;
  std::optional<std::string> currentElement_;
};

}  // namespace quillbay::cloud
