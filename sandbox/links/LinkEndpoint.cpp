#include "sandbox/links/LinkEndpoint.h"

#include <algorithm>
#include <array>

#include "sandbox/http/ByteRange.h"
#include "sandbox/http/ContentDisposition.h"
#include "sandbox/http/RequestStream.h"
#include "sandbox/links/Page.h"
#include "sandbox/links/SharePage.h"
#include "sandbox/links/ZipStream.h"
#include "sandbox/support/MediaType.h"

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

/// Content that a browser shows without running any of it. What is not listed, or could be read in
/// two ways, counts as active.
bool isPassive(std::string_view contentType) {
  static constexpr auto passive = std::to_array<std::string_view>(
      {"application/pdf", "audio/midi", "audio/mpeg", "audio/ogg", "audio/x-m4a", "image/gif",
       "image/jpeg", "image/png", "image/webp", "text/plain", "video/mp4", "video/mpeg",
       "video/quicktime", "video/webm", "video/x-m4v"});
  const auto type = parseMediaType(contentType);
  return type && !type->hasQuotedValue &&
         std::ranges::find(passive, type->essence) != passive.end();
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

/// Our tags hold no comma, so that looking for one in the list finds just it.
bool hasClientThis(const Call& call, const std::string& entityTag) {
  const std::string known = call.header("If-None-Match");
  return known == "*" || known.contains(entityTag);
}

Reply fileReply(const Call& call, Session& session, std::size_t index, Instant now) {
  const SessionRecord& record = session.record();
  const ItemState state = session.item(index);
  if (!state.isUploaded) return sharePage(session, now, 503);
  const StoredObject& object = *state.object;
  const bool isInline = record.linkType == LinkType::direct && object.isInline;
  Reply reply;
  reply.contentType = object.contentType;
  reply.body = FileSlice{session.openObject(object), 0, object.byteCount};
  reply.headers.emplace_back("Content-Disposition",
                             contentDisposition(isInline, record.items[index].file.name));
  reply.headers.emplace_back("ETag", object.entityTag);
  addContentProtection(reply);
  if (hasClientThis(call, object.entityTag)) {
    reply.status = 304;
    reply.body = std::string();
    return reply;
  }
  applyRange(call, object.entityTag, reply);
  return reply;
}

Reply zipReply(const std::shared_ptr<Session>& session, Instant now) {
  if (!hasArrived(*session)) return sharePage(*session, now, 503);
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

Reply startReply(const Call& call, const std::shared_ptr<Session>& session, Instant now) {
  const SessionRecord& record = session->record();
  if (record.linkType == LinkType::page || record.items.empty()) return sharePage(*session, now);
  if (record.items.size() == 1) return fileReply(call, *session, 0, now);
  return record.linkType == LinkType::download ? zipReply(session, now) : sharePage(*session, now);
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
  const Instant now = clock_();
  if (session->record().isExpired(now)) {
    return messageReply(410, "This link has expired",
                        "Its files are no longer available. Ask for a new link.");
  }
  const bool isUnlock = segments.size() == 3 && segments[2] == "unlock";
  if (isUnlock && isPost(call)) return unlock(call, *session);
  if (!isRead(call)) {
    Reply reply = messageReply(405, "Not possible", "This link can only be opened.");
    reply.headers.emplace_back("Allow", isUnlock ? "GET, HEAD, POST" : "GET, HEAD");
    return reply;
  }
  if (!gate_.isOpen(session->record(), call.header("Cookie"))) {
    return passwordPage(403, session->record(), "");
  }
  // A reload after a refused password comes here.
  if (isUnlock) return {303, {}, {}, {{"Location", "/s/" + session->record().slug}}};
  return open(call, session, now);
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

Reply LinkEndpoint::open(const Call& call, const std::shared_ptr<Session>& session, Instant now) {
  const auto& segments = call.target.segments;
  if (segments.size() == 2) return startReply(call, session, now);
  if (segments.size() == 3 && segments[2] == "files") return sharePage(*session, now);
  if (segments.size() == 3 && segments[2] == "all.zip") return zipReply(session, now);
  if (segments.size() == 4 && segments[2] == "files") {
    if (const auto index = session->itemIndex(segments[3])) {
      return fileReply(call, *session, *index, now);
    }
  }
  return unknownPage();
}

}  // namespace quillbay::sandbox
