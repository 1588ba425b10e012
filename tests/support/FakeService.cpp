#include "FakeService.h"

#include <nlohmann/json.hpp>
#include <regex>

namespace quillbay::test {

using JSON = nlohmann::ordered_json;

FakeService::FakeService() {
  server_.onRequest([this](const Request& request) { return replyTo(request); });
}

std::shared_ptr<Gate> FakeService::hold(Call call, const std::optional<Reply>& reply, int item) {
  const auto gate = std::make_shared<Gate>();
  const std::string name = item == 0 ? "" : "/item-" + std::to_string(item);
  setHook(call, [=](const Request& request, const Reply& ordinary) {
    if (!request.target().contains(name)) return ordinary;
    Reply held = reply.value_or(ordinary);
    held.sendAfter = gate;
    return held;
  });
  return gate;
}

Reply FakeService::refusal(int status, const std::string& message) {
  return Reply::json(JSON{{"message", message}, {"status", status}}.dump(), status);
}

Reply FakeService::storeRefusal(const std::string& message) {
  return {.status = 403,
          .body = "<Error><Code>AccessDenied</Code><Message>" + message + "</Message></Error>"};
}

std::vector<std::string> FakeService::calls() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> names;
  for (const Arrival& arrival : arrivals_) names.push_back(arrival.name);
  return names;
}

std::vector<Request> FakeService::requests(Call call) const {
  const std::lock_guard lock(mutex_);
  std::vector<Request> found;
  for (const Arrival& arrival : arrivals_) {
    if (arrival.call == call) found.push_back(arrival.request);
  }
  return found;
}

std::string FakeService::storedBytes(const std::string& itemIdentifier) const {
  const std::lock_guard lock(mutex_);
  std::string bytes;
  for (const Arrival& arrival : arrivals_) {
    if (arrival.name == "store " + itemIdentifier) bytes = arrival.request.body;
  }
  return bytes;
}

FakeService::Arrival FakeService::recognized(const Request& request) {
  static const std::string session = "/cloud/[^/]+/session";
  static const std::string item = session + "/[^/]+/items/item-(\\d+)";
  static const std::tuple<Call, const char*, std::regex> patterns[] = {
      {Call::createSession, "create", std::regex("POST " + session + "()")},
      {Call::deleteSession, "delete ", std::regex("DELETE " + session + "/([^/]+)")},
      {Call::uploadUrl, "upload_url item-", std::regex("PUT " + item + "/upload_url")},
      {Call::finalize, "finalize item-", std::regex("PUT " + item + "/finalize")},
      {Call::store, "store item-", std::regex("PUT /store/item-(\\d+)\\?.*")},
  };
  const std::string line = request.method() + " " + request.target();
  for (const auto& [call, name, pattern] : patterns) {
    std::smatch match;
    if (std::regex_match(line, match, pattern))
      return {request, call, name + match.str(1), match[1]};
  }
  return {.request = request, .name = request.head.substr(0, request.head.find("\r\n"))};
}

Reply FakeService::replyTo(const Request& request) {
  Hook hook;
  Reply reply;
  {
    const std::lock_guard lock(mutex_);
    const Arrival& arrival = arrivals_.emplace_back(recognized(request));
    try {
      reply = perform(arrival);
    } catch (const JSON::exception& error) {
      reply = refusal(400, error.what());
    }
    hook = hooks_[arrival.call];
  }
  return hook ? hook(request, std::move(reply)) : reply;
}

Reply FakeService::perform(const Arrival& arrival) {
  const auto& [request, call, name, identifier] = arrival;
  if (call == Call::unknown) return refusal(404, "no such address");
  if (call == Call::createSession) {
    const JSON body = JSON::parse(request.body);
    items_ = JSON::array();
    for (const JSON& announced : body.at("items")) {
      items_.push_back({{"id", "item-" + std::to_string(items_.size() + 1)},
                        {"is_uploaded", false},
                        {"fingerprint", announced.value("f", "")}});
    }
    return sessionReply(201);
  }
  if (call != Call::store && request.field("X-QUILLBAY-SESSION-TOKEN") != token) {
    return refusal(403, "wrong token");
  }
  if (call == Call::deleteSession) return Reply::empty(204);
  const std::size_t index = std::stoul(identifier) - 1;
  if (index >= items_.size()) return refusal(404, "no such item");
  if (call == Call::uploadUrl) {
    const std::string path = "/store/item-" + identifier + "?signature=secret";
    return Reply::json(JSON{{"url", server_.address(path, "localhost")}}.dump());
  }
  const std::string entityTag = "\"tag-of-item-" + identifier + "\"";
  if (call == Call::store) return {.headerFields = {{"ETag", entityTag}}};
  if (JSON::parse(request.body).at("etag") != entityTag) return refusal(400, "wrong tag");
  items_[index]["is_uploaded"] = true;
  return sessionReply(200);
}

Reply FakeService::sessionReply(int status) const {
  const JSON session{{"id", "session-1"}, {"token", token}, {"url", link}, {"items", items_}};
  return Reply::json(session.dump(), status);
}

}  // namespace quillbay::test
