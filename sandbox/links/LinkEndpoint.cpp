#include "sandbox/links/LinkEndpoint.h"

#include <algorithm>
#include <array>

#include "sandbox/http/ByteRange.h"
#include "sandbox/http/ContentDisposition.h"
#include "sandbox/http/RequestStream.h"
#include "sandbox/links/Page.h"
#include "sandbox/links/SharePage.h"
#include "sandbox/links/ZipStream.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t formByteLimit = 8192;

Reply unknownPage() {
  return messageReply(404, "Nothing here",
                      "This link does not exist, or its files have been deleted.");
}

bool hasArrived(const Session& session) {
  bool isComplete = false;
  session.visitItems([&](std::span<const ItemState> states) {
    isComplete = std::ranges::all_of(states, &ItemState::isUploaded);
  });
  return isComplete;
}

/// Content that a browser shows without running any of it.
bool isPassive(std::string_view contentType) {
  constexpr std::array<std::string_view, 5> passive{"image/", "audio/", "video/", "text/plain",
                                                    "application/pdf"};
  return !contentType.starts_with("image/svg") &&
         std::ranges::any_of(passive, [&](auto start) { return contentType.starts_with(start); });
}

/// Strangers' content under our own origin: never guessed to be something else, and what could hold
/// scripts is put into an origin of its own.
void addContentProtection(Reply& reply) {
  reply.headers.emplace_back("X-Content-Type-Options", "nosniff");
  reply.headers.emplace_back("Referrer-Policy", "no-referrer");
  reply.headers.emplace_back("Cache-Control", "private, no-cache");
  if (!isPassive(reply.contentType)) {
    reply.headers.emplace_back("Content-Security-Policy", "sandbox");
  }
}

void applyRange(const Call& call, const std::string& entityTag, Reply& reply) {
  auto& slice = std::get<FileSlice>(reply.body);
  const std::uint64_t whole = slice.byteCount;
  reply.headers.emplace_back("Accept-Ranges", "bytes");
  reply.headers.emplace_back("ETag", entityTag);
  const std::string condition = call.header("If-Range");
  if (!condition.empty() && condition != entityTag) return;
  ByteRange range;
  switch (evaluateRange(call.header(RequestStream::rangeAlias), whole, range)) {
    case RangeRequest::whole:
      return;
    case RangeRequest::unsatisfiable:
      reply.status = 416;
      reply.body = std::string();
      reply.headers.emplace_back("Content-Range", "bytes */" + std::to_string(whole));
      return;
    case RangeRequest::part:
      reply.status = 206;
      slice.offset = range.offset;
      slice.byteCount = range.byteCount;
      reply.headers.emplace_back("Content-Range",
                                 "bytes " + std::to_string(range.offset) + "-" +
                                     std::to_string(range.offset + range.byteCount - 1) + "/" +
                                     std::to_string(whole));
  }
}

Reply fileReply(const Call& call, Session& session, std::size_t index) {
  const SessionRecord& record = session.record();
  const ItemState state = session.item(index);
  if (!state.isUploaded) return sharePage(session, 503);
  const StoredObject& object = *state.object;
  const bool isInline = record.linkType == LinkType::direct && object.isInline;
  Reply reply;
  reply.contentType = object.contentType.empty() ? "application/octet-stream" : object.contentType;
  reply.body = FileSlice{session.openObject(object), 0, object.byteCount};
  reply.headers.emplace_back("Content-Disposition",
                             contentDisposition(isInline, record.items[index].file.name));
  addContentProtection(reply);
  applyRange(call, object.entityTag, reply);
  return reply;
}

Reply zipReply(const std::shared_ptr<Session>& session) {
  if (!hasArrived(*session)) return sharePage(*session, 503);
  const SessionRecord& record = session->record();
  std::vector<ZipEntry> entries;
  entries.reserve(record.items.size());
  for (std::size_t i = 0; i < record.items.size(); ++i) {
    entries.push_back({record.items[i].file.name, record.items[i].file.byteCount,
                       [session, i] { return session->openObject(*session->item(i).object); }});
  }
  Reply reply{200, "application/zip", zipStream(std::move(entries)), {}};
  const std::string name = record.title.value_or("").empty() ? "Shared files" : *record.title;
  reply.headers.emplace_back("Content-Disposition", contentDisposition(false, name + ".zip"));
  addContentProtection(reply);
  return reply;
}

Reply startReply(const Call& call, const std::shared_ptr<Session>& session) {
  const SessionRecord& record = session->record();
  if (record.linkType == LinkType::page || record.items.empty()) return sharePage(*session);
  if (record.items.size() == 1) return fileReply(call, *session, 0);
  return record.linkType == LinkType::download ? zipReply(session) : sharePage(*session);
}

bool isPost(const Call& call) { return call.request.method == "POST"; }

bool isRead(const Call& call) {
  return call.request.method == "GET" || call.request.method == "HEAD";
}

std::string submittedPassword(Call& call) {
  const auto form = call.body.text(formByteLimit);
  if (!form) return {};
  for (const auto& [name, value] : parseParameters(*form, true)) {
    if (name == "password") return value;
  }
  return {};
}

}  // namespace

LinkEndpoint::LinkEndpoint(SessionStore& sessions, PasswordGate& gate, Clock clock)
    : sessions_(sessions), gate_(gate), clock_(std::move(clock)) {}

Reply LinkEndpoint::answer(Call& call) {
  try {
    return route(call);
  } catch (const std::exception& error) {
    return messageReply(500, "Something went wrong", error.what());
  }
}

Reply LinkEndpoint::route(Call& call) {
  const auto& segments = call.target.segments;
  if (segments.size() < 2 || segments[0] != "s") return unknownPage();
  const auto session = sessions_.findBySlug(segments[1]);
  if (!session) return unknownPage();
  if (session->record().isExpired(clock_())) {
    return messageReply(410, "This link has expired",
                        "Its files are no longer available. Ask for a new link.");
  }
  const bool isUnlock = segments.size() == 3 && segments[2] == "unlock";
  if (isUnlock && isPost(call)) return unlock(call, *session);
  if (!isRead(call)) {
    return messageReply(405, "Not possible", "This link can only be opened.");
  }
  if (!gate_.isOpen(session->record(), call.header("Cookie"))) {
    return passwordPage(403, session->record(), "");
  }
  // A reload after a refused password comes here.
  if (isUnlock) return {303, {}, {}, {{"Location", "/s/" + session->record().slug}}};
  return open(call, session);
}

Reply LinkEndpoint::unlock(Call& call, Session& session) {
  const SessionRecord& record = session.record();
  switch (gate_.tryPassword(record, submittedPassword(call))) {
    case PasswordGate::Answer::wrong:
      return passwordPage(403, record, "This is not the password.");
    case PasswordGate::Answer::tooManyTries: {
      Reply reply = passwordPage(429, record, "Too many wrong passwords. Wait half a minute.");
      reply.headers.emplace_back("Retry-After", "30");
      return reply;
    }
    case PasswordGate::Answer::right:
      break;
  }
  return {303, {}, {}, {{"Location", "/s/" + record.slug}, {"Set-Cookie", gate_.passFor(record)}}};
}

Reply LinkEndpoint::open(const Call& call, const std::shared_ptr<Session>& session) {
  const auto& segments = call.target.segments;
  if (segments.size() == 2) return startReply(call, session);
  if (segments.size() == 3 && segments[2] == "all.zip") return zipReply(session);
  if (segments.size() == 4 && segments[2] == "files") {
    if (const auto index = session->itemIndex(segments[3])) {
      return fileReply(call, *session, *index);
    }
  }
  return unknownPage();
}

}  // namespace quillbay::sandbox
