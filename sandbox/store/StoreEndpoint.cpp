#include "sandbox/store/StoreEndpoint.h"

#include "sandbox/store/IncomingObject.h"
#include "sandbox/store/StoreError.h"
#include "sandbox/support/MediaType.h"
#include "sandbox/support/Utf8Check.h"

namespace quillbay::sandbox {

struct StoreEndpoint::Upload {
  std::shared_ptr<Session> session;
  std::size_t index = 0;
  std::uint64_t byteCount = 0;
};

namespace {

/// The page of a link shows how far an upload has come; an end in any way clears the figure.
class ArrivalGauge {
 public:
  ArrivalGauge(Session& session, std::size_t index) : gauge_(session.arrivingByteCount(index)) {
    gauge_ = 0;
  }
  ~ArrivalGauge() { gauge_ = 0; }
  ArrivalGauge(const ArrivalGauge&) = delete;
  ArrivalGauge& operator=(const ArrivalGauge&) = delete;

  void set(std::uint64_t byteCount) { gauge_.store(byteCount, std::memory_order_relaxed); }

 private:
  std::atomic<std::uint64_t>& gauge_;
};

void refuseWhatCannotBeStored(const Call& call) {
  if (!call.body.announcedByteCount()) {
    throw StoreError(411, "MissingContentLength", "You must provide the Content-Length header.");
  }
  // The HTTP library would unpack or take apart such bodies instead of handing them over.
  if (call.request.has_header("Content-Encoding") || call.request.is_multipart_form_data()) {
    throw StoreError(501, "NotImplemented", "The body must be the plain bytes of the file.");
  }
}

/// Without a charset a browser guesses, and shows UTF-8 as if it were an older encoding.
bool needsCharset(std::string_view contentType) {
  const auto type = parseMediaType(contentType);
  return type && type->essence.starts_with("text/") && !type->hasCharset;
}

}  // namespace

StoreEndpoint::StoreEndpoint(SessionStore& sessions, const PresignedAddress& addresses, Clock clock,
                             std::filesystem::path incomingFolder)
    : sessions_(sessions),
      addresses_(addresses),
      clock_(std::move(clock)),
      incomingFolder_(std::move(incomingFolder)) {}

std::string StoreEndpoint::objectPath(const SessionRecord& session, const Item& item) {
  return "/" + std::string(bucket) + "/" + session.identifier + "/" + item.identifier;
}

Reply StoreEndpoint::answer(Call& call) {
  try {
    return receive(call, admit(call));
  } catch (const StoreError& error) {
    return error.reply(call.target.path);
  } catch (const SessionConflict& error) {
    return StoreError(409, "OperationAborted", error.what()).reply(call.target.path);
  } catch (const std::exception& error) {
    return StoreError(500, "InternalError", error.what()).reply(call.target.path);
  }
}

std::optional<Reply> StoreEndpoint::refuseEarly(Call& call) {
  try {
    admit(call);
    return std::nullopt;
  } catch (const StoreError& error) {
    return error.reply(call.target.path);
  }
}

StoreEndpoint::Upload StoreEndpoint::admit(const Call& call) const {
  if (call.request.method != "PUT") {
    throw StoreError(405, "MethodNotAllowed", "The method is not allowed on this resource.",
                     {{"Allow", "PUT"}});
  }
  addresses_.verify(call);
  const auto& segments = call.target.segments;
  const auto session = segments.size() == 3 ? sessions_.findByIdentifier(segments[1]) : nullptr;
  const auto index = session ? session->itemIndex(segments[2]) : std::nullopt;
  if (!index) throw StoreError(404, "NoSuchKey", "The specified key does not exist.");
  if (session->record().isExpired(clock_())) {
    throw StoreError(403, "AccessDenied", "The session has expired.");
  }
  refuseWhatCannotBeStored(call);
  const std::uint64_t byteCount = *call.body.announcedByteCount();
  if (byteCount > session->record().items[*index].file.byteCount) {
    throw StoreError(400, "EntityTooLarge", "The upload is larger than the announced file.");
  }
  return {session, *index, byteCount};
}

Reply StoreEndpoint::receive(Call& call, const Upload& upload) const {
  IncomingObject object(incomingFolder_);
  ArrivalGauge gauge(*upload.session, upload.index);
  Utf8Check utf8;
  const std::string& announcedType = upload.session->record().items[upload.index].file.contentType;
  const bool isUndeclaredText = needsCharset(announcedType);
  const bool isWhole = call.body.read([&](std::string_view bytes) {
    object.append(bytes);
    if (isUndeclaredText) utf8.update(bytes);
    gauge.set(object.byteCount());
    upload.session->noteMovement(clock_());
  });
  if (!isWhole || object.byteCount() != upload.byteCount) {
    throw StoreError(400, "IncompleteBody",
                     "The body ended before the number of bytes in its Content-Length header.");
  }
  object.finish();
  upload.session->store(
      upload.index, object.file(),
      {.fileName = {},
       .entityTag = object.entityTag(),
       .fingerprint = object.fingerprint(),
       .byteCount = object.byteCount(),
       .contentType = utf8.isProven() ? announcedType + "; charset=utf-8" : announcedType,
       .isInline = call.header("Content-Disposition").starts_with("inline")});
  return {200, {}, {}, {{"ETag", object.entityTag()}}};
}

}  // namespace quillbay::sandbox
