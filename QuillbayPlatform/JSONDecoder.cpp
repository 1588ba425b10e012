#include <QuillbayPlatform/JSONDecoder.h>
#include <simdjson.h>

#include <algorithm>
#include <atomic>
#include <charconv>

namespace quillbay::platform {
namespace {

namespace ondemand = simdjson::ondemand;

std::string_view withoutTrailingWhitespace(std::string_view token) {
  const std::size_t last = token.find_last_not_of(" \t\r\n");
  return token.substr(0, last + 1);
}

/// Whether simdjson had a value to give.
template <class Result, class Value>
bool get(Result&& result, Value& value) {
  return std::forward<Result>(result).get(value) == simdjson::SUCCESS;
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

/// Removes the digits at the front; false if there are none.
bool skipDigits(std::string_view& text) {
  const auto count =
      static_cast<std::size_t>(std::ranges::find_if_not(text, isDigit) - text.begin());
  text.remove_prefix(count);
  return count > 0;
}

bool isNumber(std::string_view token) {
  if (token.starts_with('-')) token.remove_prefix(1);
  const bool startsWithZero = token.starts_with('0');
  const std::size_t length = token.size();
  if (!skipDigits(token)) return false;
  if (startsWithZero && length - token.size() > 1) return false;
  if (token.starts_with('.')) {
    token.remove_prefix(1);
    if (!skipDigits(token)) return false;
  }
  if (token.starts_with('e') || token.starts_with('E')) {
    token.remove_prefix(1);
    if (token.starts_with('+') || token.starts_with('-')) token.remove_prefix(1);
    if (!skipDigits(token)) return false;
  }
  return token.empty();
}

bool isHexadecimal(char character) {
  return isDigit(character) || (character >= 'a' && character <= 'f') ||
         (character >= 'A' && character <= 'F');
}

/// Whether each backslash begins an escape of RFC 8259. Control characters and the closing quote
/// are the parser's matter.
bool areEscapesValid(std::string_view content) {
  constexpr std::string_view kEscapes = "\"\\/bfnrtu";
  for (std::size_t i = content.find('\\'); i != std::string_view::npos; i = content.find('\\', i)) {
    const std::string_view escape = content.substr(i + 1);
    if (escape.empty() || !kEscapes.contains(escape.front())) return false;
    i += 2;
    if (escape.front() != 'u') continue;
    if (escape.size() < 5 || !std::ranges::all_of(escape.substr(1, 4), isHexadecimal)) return false;
  }
  return true;
}

bool isString(std::string_view token) {
  return token.size() >= 2 && token.starts_with('"') && token.ends_with('"') &&
         areEscapesValid(token.substr(1, token.size() - 2));
}

bool isScalar(std::string_view token) {
  if (token.starts_with('"')) return isString(token);
  return token == "true" || token == "false" || token == "null" || isNumber(token);
}

/// Moves the parser past a scalar. What it finds unconsumed it skips, and a string before a colon
/// it then takes for a key, with everything up to the next closing bracket.
bool consume(ondemand::value& value, std::string_view token) {
  if (!token.starts_with('"')) return true;
  ondemand::raw_json_string string;
  return get(value.get_raw_json_string(), string);
}

}  // namespace

/// A text that was walked through once: the places of all its values, in document order. The walk
/// checks the whole text, so that reading a record can take members in any order and meets no
/// malformed value; content is converted only where a record asks for it.
class JSONReader::Document {
 public:
  /// A parsed text. One set of buffers is kept for the next one.
  static std::unique_ptr<Document> parse(std::string_view text, JSONDatePolicy datePolicy);
  static void giveBack(std::unique_ptr<Document> document);

  bool isWellFormed() const { return isWellFormed_; }
  JSONDatePolicy datePolicy() const { return datePolicy_; }

  char firstCharacter(Place place) const { return buffer_[values_[place].text]; }
  bool isObject(Place place) const { return firstCharacter(place) == '{'; }
  bool isNull(Place place) const { return firstCharacter(place) == 'n'; }

  std::string_view token(Place place) const {
    return std::string_view(buffer_).substr(values_[place].text, values_[place].extent);
  }

  Place placeAfter(Place place) const {
    const bool isContainer = isObject(place) || firstCharacter(place) == '[';
    return isContainer ? values_[place].extent : place + 1;
  }

  std::optional<Place> findMember(Place object, std::string_view key) const;

  /// The content of a string's token; nothing if it has an escaped lone surrogate.
  std::optional<std::string> unescaped(std::string_view token) const;

 private:
  static constexpr int kMaximumDepth = 64;
  /// Of texts longer than any usual reply the buffers are not kept.
  static constexpr std::size_t kMaximumKeptByteCount = 4 << 20;

  struct Value {
    std::uint32_t key;     // offset of the key's first character, if it is a member
    std::uint32_t text;    // offset of the token
    std::uint32_t extent;  // a scalar: length of its token; else: the place after its last child
  };

  static std::atomic<Document*>& spare();

  std::string_view text() const {
    return std::string_view(buffer_).substr(0, buffer_.size() - simdjson::SIMDJSON_PADDING);
  }

  bool walk();
  bool walkValue(ondemand::value value, const char* key, int depth);
  bool walkObject(ondemand::object object, int depth);
  bool walkArray(ondemand::array array, int depth);
  bool isKeyValid(const char* key, std::size_t valueOffset) const;

  ondemand::parser parser_;
  std::string buffer_;
  std::vector<Value> values_;
  JSONDatePolicy datePolicy_ = JSONDatePolicy::secondsSince2001;
  bool isWellFormed_ = false;
};

std::atomic<JSONReader::Document*>& JSONReader::Document::spare() {
  static std::atomic<Document*> spare = nullptr;
  return spare;
}

std::unique_ptr<JSONReader::Document> JSONReader::Document::parse(std::string_view text,
                                                                  JSONDatePolicy datePolicy) {
  std::unique_ptr<Document> document(spare().exchange(nullptr));
  if (!document) document = std::make_unique<Document>();
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  document->datePolicy_ = datePolicy;
  document->values_.clear();
  document->buffer_.reserve(text.size() + simdjson::SIMDJSON_PADDING);
  document->buffer_.assign(text).append(simdjson::SIMDJSON_PADDING, '\0');
  document->isWellFormed_ = document->walk();
  return document;
}

void JSONReader::Document::giveBack(std::unique_ptr<Document> document) {
  const std::size_t keptByteCount =
      document->buffer_.capacity() + (document->values_.capacity() * sizeof(Value));
  if (keptByteCount > kMaximumKeptByteCount) return;
  delete spare().exchange(document.release());
}

std::optional<JSONReader::Place> JSONReader::Document::findMember(Place object,
                                                                  std::string_view key) const {
  const Place end = values_[object].extent;
  for (Place place = object + 1; place < end; place = placeAfter(place)) {
    const std::string_view text = std::string_view(buffer_).substr(values_[place].key);
    if (text.starts_with(key) && text[key.size()] == '"') return place;
  }
  return std::nullopt;
}

std::optional<std::string> JSONReader::Document::unescaped(std::string_view token) const {
  const std::string_view content = token.substr(1, token.size() - 2);
  if (content.find('\\') == std::string_view::npos) return std::string(content);
  std::string text(content.size() + simdjson::SIMDJSON_PADDING, '\0');
  auto* end = reinterpret_cast<std::uint8_t*>(text.data());
  const auto* begin = reinterpret_cast<const std::uint8_t*>(content.data());
  std::string_view result;
  if (!get(parser_.unescape(ondemand::raw_json_string(begin), end), result)) return std::nullopt;
  if (!simdjson::validate_utf8(result)) return std::nullopt;
  text.resize(result.size());
  return text;
}

bool JSONReader::Document::walk() {
  ondemand::document root;
  if (!get(parser_.iterate(buffer_.data(), text().size(), buffer_.size()), root)) return false;
  std::string_view token;
  if (!get(root.raw_json_token(), token)) return false;
  token = withoutTrailingWhitespace(token);
  const auto offset = static_cast<std::uint32_t>(token.data() - buffer_.data());
  values_.push_back({0, offset, static_cast<std::uint32_t>(token.size())});
  if (!token.starts_with('{') && !token.starts_with('[')) {
    return isScalar(token) && withoutTrailingWhitespace(text().substr(offset)) == token;
  }
  if (token.starts_with('{')) {
    ondemand::object object;
    if (!get(root.get_object(), object) || !walkObject(object, 1)) return false;
  } else {
    ondemand::array array;
    if (!get(root.get_array(), array) || !walkArray(array, 1)) return false;
  }
  // Nothing may follow: at the end there is no location any more.
  return root.current_location().error() == simdjson::OUT_OF_BOUNDS;
}

bool JSONReader::Document::walkValue(ondemand::value value, const char* key, int depth) {
  const std::string_view rest = value.raw_json_token();
  const auto offset = static_cast<std::size_t>(rest.data() - buffer_.data());
  if (offset >= text().size() || !isKeyValid(key, offset)) return false;
  const auto keyOffset = static_cast<std::uint32_t>(key != nullptr ? key - buffer_.data() : 0);
  const std::string_view token = withoutTrailingWhitespace(text().substr(offset, rest.size()));
  values_.push_back(
      {keyOffset, static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(token.size())});
  if (token.starts_with('{')) {
    ondemand::object object;
    return get(value.get_object(), object) && walkObject(object, depth + 1);
  }
  if (token.starts_with('[')) {
    ondemand::array array;
    return get(value.get_array(), array) && walkArray(array, depth + 1);
  }
  return isScalar(token) && consume(value, token);
}

bool JSONReader::Document::walkObject(ondemand::object object, int depth) {
  if (depth > kMaximumDepth) return false;
  const std::size_t place = values_.size() - 1;
  for (auto member : object) {
    ondemand::field field;
    if (!get(std::move(member), field)) return false;
    if (!walkValue(field.value(), field.key().raw(), depth)) return false;
  }
  values_[place].extent = static_cast<std::uint32_t>(values_.size());
  return true;
}

bool JSONReader::Document::walkArray(ondemand::array array, int depth) {
  if (depth > kMaximumDepth) return false;
  const std::size_t place = values_.size() - 1;
  // Reading ends at the first element that is no record: places behind it would only let a long
  // list of numbers take up many times its size.
  bool isRecordList = true;
  for (auto element : array) {
    ondemand::value value;
    if (!get(element, value)) return false;
    const std::size_t elementPlace = values_.size();
    if (!walkValue(value, nullptr, depth)) return false;
    if (!isRecordList) values_.resize(elementPlace);
    isRecordList = isRecordList && isObject(static_cast<Place>(elementPlace));
  }
  values_[place].extent = static_cast<std::uint32_t>(values_.size());
  return true;
}

bool JSONReader::Document::isKeyValid(const char* key, std::size_t valueOffset) const {
  if (key == nullptr) return true;
  // Between a key's closing quote and its value stand a colon and blanks alone.
  const std::string_view beforeValue(key, buffer_.data() + valueOffset);
  return areEscapesValid(beforeValue.substr(0, beforeValue.rfind('"')));
}

JSONReader::JSONReader(std::string_view text, JSONDatePolicy datePolicy)
    : ownedDocument_(Document::parse(text, datePolicy)), document_(ownedDocument_.get()) {
  if (!document_->isWellFormed()) {
    failure_ = error(JSONError::Kind::invalidSyntax, {});
  } else if (!document_->isObject(object_)) {
    failure_ = error(JSONError::Kind::wrongType, {});
  }
}

JSONReader::JSONReader(const JSONReader& parent, Place place, std::optional<std::size_t> index)
    : document_(parent.document_), parent_(&parent), index_(index), object_(place) {
  if (document_->isObject(place)) return;
  const bool isNull = document_->isNull(place);
  failure_ = error(isNull ? JSONError::Kind::nullValue : JSONError::Kind::wrongType, {});
}

JSONReader::~JSONReader() {
  if (ownedDocument_) Document::giveBack(std::move(ownedDocument_));
}

bool JSONReader::find(std::string_view key, Rule rule) {
  if (failure_) return false;
  const auto place = document_->findMember(object_, key);
  if (place && !document_->isNull(*place)) {
    found_ = *place;
    foundKey_ = key;
    isCorrupt_ = false;
    nestedFailure_ = nullptr;
    return true;
  }
  if (rule == Rule::required) {
    failure_ = error(place ? JSONError::Kind::nullValue : JSONError::Kind::missingKey, key);
  }
  return false;
}

void JSONReader::reject(Rule rule) {
  if (rule == Rule::tolerant) return;
  const auto kind = isCorrupt_ ? JSONError::Kind::corruptValue : JSONError::Kind::wrongType;
  failure_ = nestedFailure_ ? nestedFailure_ : error(kind, foundKey_);
}

void JSONReader::take(std::optional<std::string>& value) {
  const std::string_view token = document_->token(found_);
  if (!token.starts_with('"')) return;
  value = document_->unescaped(token);
  isCorrupt_ = !value;
}

void JSONReader::take(std::optional<bool>& value) {
  const std::string_view token = document_->token(found_);
  if (token == "true" || token == "false") value = token == "true";
}

void JSONReader::take(std::optional<std::int64_t>& value) {
  const std::string_view token = document_->token(found_);
  std::int64_t number = 0;
  const auto conversion = std::from_chars(token.data(), token.data() + token.size(), number);
  // A fraction or an exponent is left over.
  const bool isWhole = conversion.ptr == token.data() + token.size();
  if (conversion.ec == std::errc() && isWhole) value = number;
}

void JSONReader::take(std::optional<Date>& value) {
  const std::string_view token = document_->token(found_);
  if (!isNumber(token)) return;
  double seconds = 0;
  const auto conversion = std::from_chars(token.data(), token.data() + token.size(), seconds);
  isCorrupt_ = conversion.ec != std::errc();
  if (isCorrupt_) return;
  const bool countsFrom2001 = document_->datePolicy() == JSONDatePolicy::secondsSince2001;
  value = countsFrom2001 ? dateFromSecondsSince2001(seconds) : dateFromSecondsSince1970(seconds);
}

void JSONReader::take(std::optional<URL>& value) {
  std::optional<std::string> text;
  take(text);
  if (!text) return;
  value = URL::parse(*text);
  isCorrupt_ = !value;
}

std::optional<std::size_t> JSONReader::elementCount() const {
  if (document_->firstCharacter(found_) != '[') return std::nullopt;
  std::size_t count = 0;
  const Place end = document_->placeAfter(found_);
  for (Place place = found_ + 1; place < end; place = placeAfter(place)) ++count;
  return count;
}

JSONReader::Place JSONReader::placeAfter(Place place) const { return document_->placeAfter(place); }

ErrorPtr JSONReader::error(JSONError::Kind kind, std::string_view key) const {
  std::string path = keyPath();
  if (!path.empty() && !key.empty()) path += '.';
  path += key;
  return std::make_shared<JSONError>(kind, std::move(path));
}

/// Built for an error only: reading a record that is in order makes no path.
std::string JSONReader::keyPath() const {
  if (parent_ == nullptr) return {};
  std::string path = parent_->keyPath();
  if (!path.empty()) path += '.';
  path += parent_->foundKey_;
  if (index_) path += '.' + std::to_string(*index_);
  return path;
}

}  // namespace quillbay::platform
