#include "sandbox/service/SessionReply.h"

#include <nlohmann/json.hpp>

namespace quillbay::sandbox {

namespace {

/// Written by hand because it is the bulk of every finalize reply; none of it needs escaping.
void appendItem(std::string& text, const Item& item, const ItemState& state) {
  text += "{\"id\":\"";
  text += item.identifier;
  text += state.isUploaded ? "\",\"is_uploaded\":true" : "\",\"is_uploaded\":false";
  text += ",\"fingerprint\":\"";
  if (item.file.fingerprint) {
    text += *item.file.fingerprint;
  } else if (state.object) {
    text += state.object->fingerprint;
  }
  text += "\"}";
}

}  // namespace

std::string sessionReply(const Session& session, std::string_view token, std::string_view link) {
  constexpr std::size_t itemByteEstimate = 140;
  const SessionRecord& record = session.record();
  nlohmann::ordered_json head{{"id", record.identifier}, {"token", token}, {"url", link}};
  if (record.title) head["title"] = *record.title;
  if (record.expiration) head["expiration"] = record.expiration->time_since_epoch().count();
  std::string text = head.dump();
  text.pop_back();
  text.reserve(text.size() + record.items.size() * itemByteEstimate);
  text += ",\"items\":[";
  session.visitItems([&](std::span<const ItemState> states) {
    for (std::size_t i = 0; i < states.size(); ++i) {
      if (i > 0) text += ',';
      appendItem(text, record.items[i], states[i]);
    }
  });
  return text += "]}";
}

}  // namespace quillbay::sandbox
