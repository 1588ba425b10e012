#include "sandbox/model/SessionRecord.h"

#include <nlohmann/json.hpp>

#include "sandbox/support/Digest.h"
#include "sandbox/support/Hex.h"
#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

namespace {

using nlohmann::json;

// Bits of randomness: 5.95 a character.
constexpr std::size_t identifierLength = 16;
constexpr std::size_t tokenLength = 43;
constexpr std::size_t shortSlugLength = 11;
constexpr std::size_t longSlugLength = 32;

/// A random 43-character token needs neither salt nor a slow hash.
std::string hashToken(std::string_view token) { return hexEncode(sha256(token)); }

json itemToJson(const Item& item) {
  json object{{"id", item.identifier},
              {"name", item.file.name},
              {"type", item.file.contentType},
              {"byteCount", item.file.byteCount}};
  if (item.file.fingerprint) object["fingerprint"] = *item.file.fingerprint;
  return object;
}

Item itemFromJson(const json& object) {
  Item item{object.at("id"),
            {object.at("name"), object.at("type"), object.at("byteCount"), std::nullopt}};
  if (object.contains("fingerprint")) item.file.fingerprint = object["fingerprint"];
  return item;
}

}  // namespace

bool SessionRecord::isTokenRight(std::string_view token) const {
  return constantTimeEquals(hashToken(token), tokenHash);
}

std::string SessionRecord::toJson() const {
  json object{{"id", identifier}, {"instance", instance},       {"tokenHash", tokenHash},
              {"slug", slug},     {"linkType", text(linkType)}, {"items", json::array()}};
  if (title) object["title"] = *title;
  if (expiration) object["expiration"] = expiration->time_since_epoch().count();
  if (passwordHash) object["passwordHash"] = passwordHash->text();
  for (const Item& item : items) object["items"].push_back(itemToJson(item));
  return object.dump();
}

SessionRecord SessionRecord::fromJson(std::string_view text) {
  const json object = json::parse(text);
  SessionRecord record;
  record.identifier = object.at("id");
  record.instance = object.at("instance");
  record.tokenHash = object.at("tokenHash");
  record.slug = object.at("slug");
  record.linkType = linkTypeFromText(object.at("linkType").get<std::string>()).value();
  if (object.contains("title")) record.title = object["title"];
  if (object.contains("expiration")) {
    record.expiration = Instant(std::chrono::seconds(object["expiration"].get<std::int64_t>()));
  }
  if (object.contains("passwordHash")) {
    record.passwordHash = PasswordHash::fromText(object["passwordHash"].get<std::string>());
  }
  for (const json& item : object.at("items")) record.items.push_back(itemFromJson(item));
  return record;
}

NewSession makeSession(std::string instance, CreateRequest request) {
  NewSession made;
  made.token = randomText(tokenLength);
  made.record.identifier = randomText(identifierLength);
  made.record.instance = std::move(instance);
  made.record.tokenHash = hashToken(made.token);
  made.record.slug = randomText(request.isSecret ? longSlugLength : shortSlugLength);
  made.record.linkType = request.linkType;
  made.record.title = std::move(request.title);
  made.record.expiration = request.expiration;
  if (request.password) made.record.passwordHash = PasswordHash::of(*request.password);
  made.record.items.reserve(request.files.size());
  for (AnnouncedFile& file : request.files) {
    made.record.items.push_back({randomText(identifierLength), std::move(file)});
  }
  return made;
}

}  // namespace quillbay::sandbox
