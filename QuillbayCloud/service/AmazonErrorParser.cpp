#include <QuillbayCloud/service/AmazonErrorParser.h>

#include <utility>

namespace quillbay::cloud {

std::shared_ptr<AmazonErrorParser> AmazonErrorParser::create(std::string data) {
  return std::shared_ptr<AmazonErrorParser>(new AmazonErrorParser(std::move(data)));
}

AmazonErrorParser::AmazonErrorParser(std::string data) : data_(std::move(data)) {}

std::optional<AmazonError> AmazonErrorParser::parse() {
  // Whether the document is well-formed does not matter: what was captured before its end counts.
  platform::XMLParser(data_, *this).parse();
  if (!parsedResponseErrorType_ || !parsedMessage_) return std::nullopt;
  return AmazonError(*parsedResponseErrorType_, *parsedMessage_);
}

void AmazonErrorParser::didStartElement(std::string_view name) { currentElement_ = name; }

void AmazonErrorParser::didEndElement(std::string_view /*name*/) { currentElement_.reset(); }

void AmazonErrorParser::foundCharacters(std::string_view text) {
  if (currentElement_ == "Code") parsedResponseErrorType_ = text;
  if (currentElement_ == "Message") parsedMessage_ = text;
}

}  // namespace quillbay::cloud
