#include "FakeService.h"

#include "TestNetwork.h"

#include <nlohmann/json.hpp>

#include <string_view>
#include <utility>

namespace quillbay::test {
namespace {

using JSON = nlohmann::ordered_json;

std::vector<std::string> pathSegments(const std::string& target) {
  std::vector<std::string> segments;
  const std::string path = target.substr(0, target.find('?'));
  std::size_t begin = 1;
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    segments.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return segments;
}

Reply serviceError(int status, const std::string& message) {
  return Reply::json(JSON{{"message", message}, {"status", status}}.dump(), status);
}

}  // namespace

FakeService::FakeService() {
  server_.onRequest([this](const Request& request) { return answer(request); });
}

void FakeService::install() const { useTestNetwork(server_); }

void FakeService::setHook(Call call, Hook hook) {
  const std::lock_guard lock(mutex_);
  hooks_[call] = std::move(hook);
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
  const auto found = items_.find(itemIdentifier);
  return found == items_.end() ? std::string() : found->second.storedBytes;
}

std::string FakeService::entityTag(const std::string& itemIdentifier) {
  return "\"tag-of-" + itemIdentifier + "\"";
}

std::string FakeService::sessionText() const {
  const std::lock_guard lock(mutex_);
  return sessionTextLocked();
}

FakeService::Route FakeService::routeOf(const Request& request) {
  // cloud/INSTANCE/session[/SESSION[/items/ITEM/upload_url|finalize]] or store/ITEM
  const auto segments = pathSegments(request.target());
  const std::string method = request.method();
  const std::size_t count = segments.size();
  if (count == 2 && segments[0] == "store" && method == "PUT") return {Call::store, segments[1]};
  if (count < 3 || segments[0] != "cloud" || segments[2] != "session") return {};
  if (count == 3 && method == "POST") return {Call::createSession, {}};
  if (count == 4 && method == "DELETE") return {Call::deleteSession, segments[3]};
  if (count != 7 || segments[4] != "items" || method != "PUT") return {};
  if (segments[6] == "upload_url") return {Call::uploadUrl, segments[5]};
  if (segments[6] == "finalize") return {Call::finalize, segments[5]};
  return {};
}

std::string FakeService::nameOf(const Route& route, const Request& request) {
  switch (route.call) {
    case Call::createSession:
      return "create";
    case Call::uploadUrl:
      return "upload_url " + route.identifier;
    case Call::store:
      return "store " + route.identifier;
    case Call::finalize:
      return "finalize " + route.identifier;
    case Call::deleteSession:
      return "delete " + route.identifier;
    case Call::unknown:
      break;
  }
  return request.head.substr(0, request.head.find("\r\n"));
}

Reply FakeService::answer(const Request& request) {
  const Route route = routeOf(request);
  Hook hook;
  Reply reply;
  {
    const std::lock_guard lock(mutex_);
    calls_.push_back(nameOf(route, request));
    requests_.emplace_back(route.call, request);
    reply = perform(route, request);
    if (const auto found = hooks_.find(route.call); found != hooks_.end()) hook = found->second;
  }
  return hook ? hook(request, std::move(reply)) : reply;
}

Reply FakeService::perform(const Route& route, const Request& request) {
  if (route.call == Call::createSession) return createSession(request);
  if (route.call == Call::store) return storeObject(route.identifier, request);
  if (route.call == Call::unknown) return serviceError(404, "no such address");
  if (request.field("X-QUILLBAY-SESSION-TOKEN") != token) return serviceError(403, "wrong token");
  if (route.call == Call::deleteSession) return Reply::empty(204);
  const auto item = items_.find(route.identifier);
  if (item == items_.end()) return serviceError(404, "no such item");
  if (route.call == Call::uploadUrl) {
    const std::string path = "/store/" + route.identifier + "?signature=secret";
    return Reply::json(JSON{{"url", server_.address(path, "localhost")}}.dump());
  }
  const JSON body = JSON::parse(request.body, nullptr, false);
  if (!body.is_object() || body.value("etag", "") != entityTag(route.identifier)) {
    return serviceError(400, "wrong entity tag");
  }
  item->second.isUploaded = true;
  return Reply::json(sessionTextLocked());
}

Reply FakeService::createSession(const Request& request) {
  const JSON body = JSON::parse(request.body, nullptr, false);
  if (!body.is_object() || !body.contains("items") || !body["items"].is_array()) {
    return serviceError(400, "not a session");
  }
  itemOrder_.clear();
  items_.clear();
  for (const JSON& announced : body["items"]) {
    const std::string identifier = "item-" + std::to_string(itemOrder_.size() + 1);
    itemOrder_.push_back(identifier);
    items_[identifier].fingerprint = announced.value("f", "");
  }
  return Reply::json(sessionTextLocked(), 201);
}

Reply FakeService::storeObject(const std::string& itemIdentifier, const Request& request) {
  const auto item = items_.find(itemIdentifier);
  if (item == items_.end()) {
    return {.status = 404,
            .headerFields = {{"Content-Type", "application/xml"}},
            .body = "<Error><Code>NoSuchKey</Code><Message>no such item</Message></Error>"};
  }
  item->second.storedBytes = request.body;
  return {.headerFields = {{"ETag", entityTag(itemIdentifier)}}};
}

std::string FakeService::sessionTextLocked() const {
  JSON items = JSON::array();
  for (const std::string& identifier : itemOrder_) {
    const Item& item = items_.at(identifier);
    items.push_back(
        {{"id", identifier}, {"is_uploaded", item.isUploaded}, {"fingerprint", item.fingerprint}});
  }
  return JSON{{"id", sessionIdentifier}, {"token", token}, {"url", link}, {"items", items}}.dump();
}

}  // namespace quillbay::test
