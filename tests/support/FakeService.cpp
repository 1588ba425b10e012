#include "FakeService.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <regex>
#include <utility>

namespace quillbay::test {
namespace {

using JSON = nlohmann::ordered_json;
using Call = FakeService::Call;

struct Pattern {
  Call call;
  const char* name;
  std::regex request;  // method and path; its group is an identifier
};

Reply serviceError(int status, const std::string& message) {
  return Reply::json(JSON{{"message", message}, {"status", status}}.dump(), status);
}

}  // namespace

FakeService::FakeService() {
  server_.onRequest([this](const Request& request) { return replyTo(request); });
}

void FakeService::install() const { useTestNetwork(&server_); }

void FakeService::setHook(Call call, Hook hook) {
  const std::lock_guard lock(mutex_);
  hooks_[call] = std::move(hook);
}

void FakeService::answer(Call call, const Reply& reply) {
  setHook(call, [reply](const Request&, const Reply&) { return reply; });
}

std::shared_ptr<Gate> FakeService::hold(Call call, const std::optional<Reply>& reply) {
  const auto gate = std::make_shared<Gate>();
  setHook(call, [reply, gate](const Request&, const Reply& ordinary) {
    Reply held = reply.value_or(ordinary);
    held.sendAfter = gate;
    return held;
  });
  return gate;
}

std::vector<std::string> FakeService::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<Request> FakeService::requests(Call call) const {
  const std::lock_guard lock(mutex_);
  std::vector<Request> found;
  for (const auto& [kind, request] : requests_) {
    if (kind == call) found.push_back(request);
  }
  return found;
}

std::string FakeService::storedBytes(const std::string& itemIdentifier) const {
  const std::lock_guard lock(mutex_);
  const auto item = std::ranges::find(items_, itemIdentifier, &Item::identifier);
  return item == items_.end() ? std::string() : item->storedBytes;
}

FakeService::Route FakeService::routeOf(const Request& request) {
  static const Pattern patterns[] = {
      {Call::createSession, "create", std::regex("POST /cloud/[^/]+/session")},
      {Call::deleteSession, "delete ", std::regex("DELETE /cloud/[^/]+/session/([^/]+)")},
      {Call::uploadUrl, "upload_url ",
       std::regex("PUT /cloud/[^/]+/session/[^/]+/items/([^/]+)/upload_url")},
      {Call::finalize, "finalize ",
       std::regex("PUT /cloud/[^/]+/session/[^/]+/items/([^/]+)/finalize")},
      {Call::store, "store ", std::regex("PUT /store/([^/]+)")},
  };
  const std::string target = request.target();
  const std::string line = request.method() + " " + target.substr(0, target.find('?'));
  for (const Pattern& pattern : patterns) {
    std::smatch match;
    if (!std::regex_match(line, match, pattern.request)) continue;
    return {pattern.call, match[1], pattern.name + match[1].str()};
  }
  return {.name = request.head.substr(0, request.head.find("\r\n"))};
}

Reply FakeService::replyTo(const Request& request) {
  const Route route = routeOf(request);
  Hook hook;
  Reply reply;
  {
    const std::lock_guard lock(mutex_);
    calls_.push_back(route.name);
    requests_.emplace_back(route.call, request);
    try {
      reply = perform(route, request);
    } catch (const JSON::exception& error) {
      reply = serviceError(400, error.what());
    }
    hook = hooks_[route.call];
  }
  return hook ? hook(request, std::move(reply)) : reply;
}

Reply FakeService::perform(const Route& route, const Request& request) {
  if (route.call == Call::unknown) return serviceError(404, "no such address");
  if (route.call == Call::createSession) return createSession(request);
  if (route.call != Call::store && request.field("X-QUILLBAY-SESSION-TOKEN") != token) {
    return serviceError(403, "wrong token");
  }
  if (route.call == Call::deleteSession) return Reply::empty(204);
  const auto item = std::ranges::find(items_, route.identifier, &Item::identifier);
  if (item == items_.end()) return serviceError(404, "no such item");
  if (route.call == Call::uploadUrl) {
    const std::string path = "/store/" + route.identifier + "?signature=secret";
    return Reply::json(JSON{{"url", server_.address(path, "localhost")}}.dump());
  }
  const std::string entityTag = "\"tag-of-" + route.identifier + "\"";
  if (route.call == Call::store) {
    item->storedBytes = request.body;
    return {.headerFields = {{"ETag", entityTag}}};
  }
  if (JSON::parse(request.body).at("etag") != entityTag) return serviceError(400, "wrong tag");
  item->isUploaded = true;
  return sessionReply(200);
}

Reply FakeService::createSession(const Request& request) {
  const JSON body = JSON::parse(request.body);
  items_.clear();
  for (const JSON& announced : body.at("items")) {
    items_.push_back({.identifier = "item-" + std::to_string(items_.size() + 1),
                      .fingerprint = announced.value("f", "")});
  }
  return sessionReply(201);
}

Reply FakeService::sessionReply(int status) const {
  JSON items = JSON::array();
  for (const Item& item : items_) {
    items.push_back({{"id", item.identifier},
                     {"is_uploaded", item.isUploaded},
                     {"fingerprint", item.fingerprint}});
  }
  const JSON session{{"id", sessionIdentifier}, {"token", token}, {"url", link}, {"items", items}};
  return Reply::json(session.dump(), status);
}

}  // namespace quillbay::test
