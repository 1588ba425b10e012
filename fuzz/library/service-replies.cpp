// The records that the service sends, judged by a second reader of JSON. The library's own reader
// differs from it in this, and in nothing else:
//
// - it nests 64 deep at most, the other without end;
// - it ends at the last byte of the text, the other at a NUL;
// - it judges the content of a number or of an escape when a record asks for it: half a surrogate
//   pair, or a number beyond the range of its type, in a member that is not read does no harm;
// - of several members of one name the first counts, not the last; and a name is compared as it is
//   written, so that one with an escape is another name.
#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayCloud/service/AmazonError.h>
#include <QuillbayCloud/service/CloudError.h>
#include <QuillbayCloud/service/ItemUploadUrl.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>
#include <fuzz/support/Expect.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>

using namespace quillbay;
using fuzz::expect;
using nlohmann::json;
using platform::JSONDatePolicy;

namespace {

constexpr int kMaximumDepth = 64;
// From here on, not every whole number is a double.
constexpr double kExactSeconds = 9007199254740992.0;

bool isOneOf(char character, std::string_view set) {
  return set.find(character) != std::string_view::npos;
}

/// A text as the second reader must see it to judge the form alone: without half characters,
/// numbers of more than two digits and the NUL that would end it.
struct Form {
  explicit Form(std::string_view document) {
    bool isInString = false;
    int depth = 0;
    std::size_t digitCount = 0;
    for (std::size_t i = 0; i < document.size(); ++i) {
      const char character = document[i];
      if (isInString && character == '\\') {
        const std::string_view escape = document.substr(i, 3);
        // "\uD8xx" is any other character.
        const bool mayBeHalf = escape == "\\ud" || escape == "\\uD";
        text += mayBeHalf ? "\\u1" : escape.substr(0, 2);
        i += mayBeHalf ? 2 : 1;
        continue;
      }
      if (character == '"') isInString = !isInString;
      if (!isInString) {
        depth += isOneOf(character, "[{") ? 1 : isOneOf(character, "]}") ? -1 : 0;
        deepest = std::max(deepest, depth);
        digitCount = isOneOf(character, "0123456789") ? digitCount + 1 : 0;
        if (digitCount > 2) continue;
      }
      text += character == '\0' ? '\1' : character;
    }
  }

  std::string text;
  int deepest = 0;
};

template <class Record>
std::expected<Record, platform::ErrorPtr> decoded(
    std::string_view text, JSONDatePolicy policy = JSONDatePolicy::secondsSince2001) {
  return platform::JSONDecoder(policy).decode<Record>(text);
}

bool isMalformed(const platform::ErrorPtr& error) {
  return dynamic_cast<const platform::JSONError&>(*error).kind() ==
         platform::JSONError::Kind::invalidSyntax;
}

bool isWellFormed(const std::string& document) {
  const Form form(document);
  return form.deepest <= kMaximumDepth && json::accept(form.text);
}

void expectSameJudgementOfTheForm(const std::string& document) {
  const auto record = decoded<cloud::CloudError>(document);
  expect((record || !isMalformed(record.error())) == isWellFormed(document),
         "exactly what is JSON is well-formed");
}

/// The document, where both readers must find the same in it; null otherwise.
json unambiguous(const std::string& document) {
  if (!isWellFormed(document) || document.find("\\u00") != std::string::npos) return nullptr;
  std::vector<std::set<std::string>> names;
  bool isAmbiguous = false;
  const auto value = json::parse(
      document,
      [&](int, json::parse_event_t event, json& parsed) {
        if (event == json::parse_event_t::object_start) names.emplace_back();
        if (event == json::parse_event_t::object_end) names.pop_back();
        if (event == json::parse_event_t::key) {
          isAmbiguous = isAmbiguous || !names.back().insert(parsed.get<std::string>()).second;
        }
        return true;
      },
      /*allow_exceptions=*/false);
  return isAmbiguous || !value.is_object() ? json() : value;
}

using Text = std::optional<std::string>;

Text textIn(const json& object, const char* key) {
  const auto member = object.find(key);
  return member != object.end() && member->is_string() ? member->get<std::string>() : Text();
}

std::optional<std::int64_t> integerIn(const json& object, const char* key) {
  const auto member = object.find(key);
  if (member == object.end() || !member->is_number_integer()) return std::nullopt;
  constexpr auto kGreatest = std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  if (member->is_number_unsigned() && member->get<std::uint64_t>() > kGreatest) return std::nullopt;
  return member->get<std::int64_t>();
}

bool hasBoolean(const json& object, const char* key) {
  const auto member = object.find(key);
  return member != object.end() && member->is_boolean();
}

bool hasURL(const json& object) {
  const Text text = textIn(object, "url");
  return text && platform::URL::parse(*text);
}

bool isItem(const json& value) {
  return value.is_object() && textIn(value, "id") && hasBoolean(value, "is_uploaded") &&
         textIn(value, "fingerprint");
}

void expectSession(const std::string& document, const json& value) {
  const auto session = decoded<cloud::Session>(document);
  const auto items = value.find("items");
  const bool isSession = textIn(value, "id") && hasURL(value) && items != value.end() &&
                         items->is_array() && std::ranges::all_of(*items, isItem);
  expect(session.has_value() == isSession, "a session reads exactly if it has what is required");
  if (!session) return;
  expect(session->identifier() == textIn(value, "id") && session->title() == textIn(value, "title"),
         "the texts are those of the document");
  expect(session->token() == textIn(value, "token"), "the token is that of the document");
  expect(session->url().absoluteString() == textIn(value, "url"), "so is the link");
  const auto expiration = integerIn(value, "expiration");
  expect(session->expirationDate().has_value() == expiration.has_value(),
         "an expiration is an integer");
  expect(!expiration || platform::secondsSince1970(*session->expirationDate()) ==
                            static_cast<double>(*expiration),
         "an expiration counts seconds since 1970");
  const auto& read = cloud::items(*session);
  expect(read.size() == items->size(), "a session has every item");
  for (std::size_t i = 0; i < read.size(); ++i) {
    const json& item = (*items)[i];
    expect(read[i] == cloud::Item(*textIn(item, "id"), item["is_uploaded"].get<bool>(),
                                  *textIn(item, "fingerprint")),
           "each item is that of the document");
  }
}

/// Whether a member is absent, or of the type that `isOfType` tells.
template <class Predicate>
bool fits(const json& object, const char* key, Predicate isOfType) {
  const auto member = object.find(key);
  return member == object.end() || member->is_null() || isOfType(*member);
}

void expectConfiguration(const std::string& document, const json& value) {
  const auto isText = [](const json& member) { return member.is_string(); };
  const auto isNumber = [](const json& member) { return member.is_number(); };
  const auto date = value.find("expirationDate");
  // The reader refuses a number too small for a double, the other takes it for nought.
  if (date != value.end() && date->is_number_float() && !std::isnormal(date->get<double>())) return;
  const auto configuration = decoded<cloud::SessionConfiguration>(document);
  const Text linkType = textIn(value, "linkType");
  const bool isConfiguration = fits(value, "title", isText) && fits(value, "password", isText) &&
                               fits(value, "expirationDate", isNumber) && linkType &&
                               cloud::SessionLinkType::fromRawValue(*linkType) &&
                               hasBoolean(value, "secret");
  expect(configuration.has_value() == isConfiguration,
         "a configuration reads exactly if every member fits");
  if (!configuration) return;
  expect(configuration->title() == textIn(value, "title") &&
             configuration->password() == textIn(value, "password") &&
             configuration->linkType().rawValue() == linkType &&
             configuration->secret() == value["secret"].get<bool>(),
         "each member is that of the document");
}

void expectSmallRecords(const std::string& document, const json& value) {
  const auto refusal = decoded<cloud::CloudError>(document);
  const Text message = textIn(value, "message");
  const auto status = integerIn(value, "status");
  expect(refusal.has_value() == (message && status), "a refusal has a message and a status");
  expect(!refusal || *refusal == cloud::CloudError{*message, *status}, "and tells both");
  const auto address = decoded<cloud::ItemUploadUrl>(document);
  expect(address.has_value() == hasURL(value), "an upload address is a URL");
  expect(!address || address->url().absoluteString() == textIn(value, "url"), "and that URL");
  const auto storeError = decoded<cloud::AmazonError>(document);
  const Text type = textIn(value, "type");
  expect(storeError.has_value() == (type && message), "the store's error has a type and a message");
  expect(!storeError || *storeError == cloud::AmazonError(*type, *message), "and tells both");
}

template <class Record>
void expectRoundTrip(const std::string& document, JSONDatePolicy policy) {
  const auto record = decoded<Record>(document, policy);
  if (!record) return;
  const auto text = platform::JSONEncoder(policy).encode(*record);
  expect(text.has_value(), "what was read can be written");
  expect(json::accept(*text), "what was written is JSON");
  const auto again = decoded<Record>(*text, policy);
  if constexpr (requires { record->expirationDate(); }) {
    const auto& date = record->expirationDate();
    if (date && std::abs(platform::secondsSince1970(*date)) > kExactSeconds) return;
  }
  expect(again && *again == *record, "what was written is read as the same record");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  const std::string document(reinterpret_cast<const char*>(bytes), byteCount);
  expectSameJudgementOfTheForm(document);
  expectRoundTrip<cloud::Session>(document, JSONDatePolicy::secondsSince1970);
  expectRoundTrip<cloud::SessionConfiguration>(document, JSONDatePolicy::secondsSince2001);
  expectRoundTrip<cloud::ItemUploadUrl>(document, JSONDatePolicy::secondsSince2001);
  const json value = unambiguous(document);
  if (value.is_null()) return 0;
  expectSession(document, value);
  expectConfiguration(document, value);
  expectSmallRecords(document, value);
  return 0;
}
