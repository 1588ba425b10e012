#include "sandbox/service/ServiceEndpoint.h"

#include <nlohmann/json.hpp>

#include "sandbox/service/ServiceError.h"
#include "sandbox/service/SessionReply.h"
#include "sandbox/store/StoreEndpoint.h"
#include "sandbox/support/Utf8Check.h"

namespace quillbay::sandbox {

namespace {

using nlohmann::json;

constexpr const char* tokenHeader = "X-QUILLBAY-SESSION-TOKEN";
constexpr const char* protocolHeader = "X-QUILLBAY-CLOUD-SCP";
constexpr std::size_t finalizeBodyByteLimit = 4096;

// Segments of /cloud/INSTANCE/session/ID/items/ID/ACTION.
constexpr std::size_t instanceSegment = 1;
constexpr std::size_t sessionSegment = 3;
constexpr std::size_t itemSegment = 5;
constexpr std::size_t actionSegment = 6;

Reply jsonReply(int status, std::string text) {
  return {status, "application/json", std::move(text), {{"Cache-Control", "no-store"}}};
}

Reply errorReply(int status, const std::string& message, const ReplyHeaders& headers = {}) {
  Reply reply = jsonReply(status, json{{"message", message}, {"status", status}}.dump());
  reply.headers.insert(reply.headers.end(), headers.begin(), headers.end());
  return reply;
}

bool isUtf8(std::string_view text) {
  Utf8Check check;
  check.update(text);
  return check.isWellFormed();
}

[[noreturn]] void refuseUnknown() { throw ServiceError(404, "There is nothing at this address."); }

void requireMethod(const Call& call, std::string_view method) {
  if (call.request.method != method) {
    throw ServiceError(405, "This address only takes " + std::string(method) + ".",
                       {{"Allow", std::string(method)}});
  }
}

std::size_t itemIndex(const Call& call, const Session& session) {
  const auto index = session.itemIndex(call.target.segments[itemSegment]);
  if (!index) throw ServiceError(404, "The session has no such item.");
  return *index;
}

std::string requireText(Call& call, std::size_t byteLimit) {
  if (call.request.is_multipart_form_data()) {
    throw ServiceError(415, "The request body must be JSON, not a form.");
  }
  auto text = call.body.text(byteLimit);
  if (!text) throw ServiceError(413, "The request body is too long or incomplete.");
  return *std::move(text);
}

std::string entityTag(Call& call) {
  const json body = json::parse(requireText(call, finalizeBodyByteLimit), nullptr, false);
  if (!body.is_object() || !body.contains("etag") || !body["etag"].is_string()) {
    throw ServiceError(400, "The request body must be an object with the string \"etag\".");
  }
  return body["etag"];
}

}  // namespace

ServiceEndpoint::ServiceEndpoint(SessionStore& sessions, const PresignedAddress& addresses,
                                 Clock clock, std::string host)
    : sessions_(sessions),
      addresses_(addresses),
      clock_(std::move(clock)),
      host_(std::move(host)) {}

Reply ServiceEndpoint::answer(Call& call) {
  try {
    return route(call);
  } catch (const ServiceError& error) {
    return errorReply(error.status(), error.what(), error.headers());
  } catch (const InvalidRequest& error) {
    return errorReply(400, error.what());
  } catch (const SessionConflict& error) {
    return errorReply(409, error.what());
  } catch (const std::exception& error) {
    return errorReply(500, error.what());
  }
}

Reply ServiceEndpoint::route(Call& call) {
  const auto& segments = call.target.segments;
  if (segments.size() < 3 || segments[2] != "session") refuseUnknown();
  // It becomes part of a record in JSON.
  const std::string& instance = segments[instanceSegment];
  if (instance.empty() || !isUtf8(instance)) refuseUnknown();
  if (segments.size() == 3) {
    requireMethod(call, "POST");
    return createSession(call);
  }
  if (segments.size() == 4) {
    requireMethod(call, "DELETE");
    return deleteSession(call);
  }
  if (segments.size() != 7 || segments[4] != "items") refuseUnknown();
  const bool isFinalize = segments[actionSegment] == "finalize";
  if (!isFinalize && segments[actionSegment] != "upload_url") refuseUnknown();
  requireMethod(call, "PUT");
  return isFinalize ? finalize(call) : uploadUrl(call);
}

Reply ServiceEndpoint::createSession(Call& call) {
  const std::string body = requireText(call, CreateRequest::bodyByteLimit);
  NewSession made =
      makeSession(call.target.segments[instanceSegment], CreateRequest::parse(body, clock_()));
  const auto session = sessions_.create(std::move(made.record));
  return jsonReply(201, sessionReply(*session, made.token, linkTo(*session)));
}

Reply ServiceEndpoint::deleteSession(const Call& call) {
  sessions_.remove(*authorizedSession(call));
  return {204, {}, {}, {}};
}

Reply ServiceEndpoint::uploadUrl(const Call& call) {
  if (call.header(protocolHeader) != "1") {
    throw ServiceError(400, std::string(protocolHeader) + " must be \"1\".");
  }
  const auto session = livingSession(call);
  const std::size_t index = itemIndex(call, *session);
  const SessionRecord& record = session->record();
  const Item& item = record.items[index];
  const std::string url =
      addresses_.make("PUT", host_, StoreEndpoint::objectPath(record, item), item.file.contentType);
  return jsonReply(200, json{{"url", url}}.dump());
}

Reply ServiceEndpoint::finalize(Call& call) {
  const auto session = livingSession(call);
  session->finalize(itemIndex(call, *session), entityTag(call));
  return jsonReply(200, sessionReply(*session, call.header(tokenHeader), linkTo(*session)));
}

std::shared_ptr<Session> ServiceEndpoint::authorizedSession(const Call& call) const {
  auto session = sessions_.findByIdentifier(call.target.segments[sessionSegment]);
  // Another instance's session is as unknown as one that never was.
  if (!session || session->record().instance != call.target.segments[instanceSegment]) {
    throw ServiceError(404, "There is no such session.");
  }
  const std::string token = call.header(tokenHeader);
  if (token.empty()) throw ServiceError(401, "The session token is missing.");
  if (!session->record().isTokenRight(token)) {
    throw ServiceError(403, "The session token is wrong.");
  }
  return session;
}

std::shared_ptr<Session> ServiceEndpoint::livingSession(const Call& call) const {
  auto session = authorizedSession(call);
  if (session->record().isExpired(clock_())) throw ServiceError(410, "The session has expired.");
  return session;
}

std::string ServiceEndpoint::linkTo(const Session& session) const {
  return "https://" + host_ + "/s/" + session.record().slug;
}

}  // namespace quillbay::sandbox
