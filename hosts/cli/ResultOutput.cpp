#include "ResultOutput.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "ExpirationArgument.h"
#include "StandardStreams.h"

namespace quillbay::cli {
namespace {

class PlainOutput final : public ResultOutput {
 public:
  explicit PlainOutput(int descriptor) : ResultOutput(descriptor) {}

  void sessionCreated(const cloud::Session& session) override {
    write(session.url().absoluteString() + "\n");
  }
  void doomedSessionCreated(const cloud::Session& /*session*/) override {}
  void progressed(const Progress& /*progress*/) override {}
  void retrying(std::chrono::seconds /*wait*/, int /*attempt*/,
                std::string_view /*cause*/) override {}
  void cancelled() override {}
  void done(std::uint64_t /*totalByteCount*/) override {}
  void deleted() override {}
  void failed(const FailureReport& /*report*/) override {}
};

class JSONOutput final : public ResultOutput {
 public:
  explicit JSONOutput(int descriptor) : ResultOutput(descriptor) {}

  void sessionCreated(const cloud::Session& session) override {
    Object event = eventNamed("session");
    event["id"] = session.identifier();
    if (const auto& token = session.token()) event["token"] = *token;
    event["url"] = session.url().absoluteString();
    if (const auto& title = session.title()) event["title"] = *title;
    if (const auto expires = session.expirationDate().and_then(rfc3339Text)) {
      event["expires"] = *expires;
    }
    write(event);
  }

  // The reader of the stream may have to delete the session, should our deletion get no answer.
  void doomedSessionCreated(const cloud::Session& session) override { sessionCreated(session); }

  void progressed(const Progress& progress) override {
    // All bytes may be sent while the last file is still to be confirmed: 1 belongs to done().
    const double shown = std::floor(progress.fraction * kProgressSteps) / kProgressSteps;
    const bool isNewPlace = progress.step != step_ || progress.file != file_;
    const bool isFurther = shown > fraction_ || (shown == fraction_ && isNewPlace);
    // The next one says it as well: a slow reader must not hold the upload up.
    if (!isFurther || shown >= 1 || !canWriteNow(descriptor())) return;
    fraction_ = shown;
    step_ = progress.step;
    file_ = progress.file;
    write(progressEvent(shown, progress));
  }

  void retrying(std::chrono::seconds wait, int attempt, std::string_view cause) override {
    Object event = eventNamed("retry");
    event["in"] = wait.count();
    event["attempt"] = attempt;
    event["cause"] = cause;
    write(event);
  }

  void cancelled() override { write(eventNamed("cancelled")); }

  void done(std::uint64_t totalByteCount) override {
    write(progressEvent(
        1, {.step = "finished", .byteCount = totalByteCount, .totalByteCount = totalByteCount}));
    write(eventNamed("done"));
  }

  void deleted() override { write(eventNamed("deleted")); }

  void failed(const FailureReport& report) override {
    Object event = eventNamed("error");
    event["case"] = report.caseName();
    if (report.description) event["description"] = *report.description;
    if (report.code) event["code"] = *report.code;
    if (report.status) event["status"] = *report.status;
    event["cause"] = report.cause;
    if (report.file) event["file"] = *report.file;
    event["detail"] = report.detail;
    write(event);
  }

 private:
  using Object = nlohmann::ordered_json;

  static constexpr double kProgressSteps = 10'000;

  static Object eventNamed(const char* name) {
    Object event;
    event["event"] = name;
    return event;
  }

  static Object progressEvent(double fraction, const Progress& progress) {
    Object event = eventNamed("progress");
    event["fraction"] = fraction;
    event["step"] = progress.step;
    if (progress.file) event["file"] = *progress.file;
    event["bytes"] = progress.byteCount;
    event["total"] = progress.totalByteCount;
    return event;
  }

  // In ASCII: a text of a server can then neither drive a terminal nor break the line, whatever
  // bytes it holds.
  void write(const Object& event) {
    ResultOutput::write(event.dump(-1, ' ', true, Object::error_handler_t::replace) + "\n");
  }

  double fraction_ = 0;
  std::string step_;
  std::optional<std::string> file_;
};

}  // namespace

std::unique_ptr<ResultOutput> ResultOutput::plain(int descriptor) {
  return std::make_unique<PlainOutput>(descriptor);
}

std::unique_ptr<ResultOutput> ResultOutput::json(int descriptor) {
  return std::make_unique<JSONOutput>(descriptor);
}

void ResultOutput::write(std::string_view bytes) {
  if (writeError_ == 0) writeError_ = writeAll(descriptor_, bytes);
}

}  // namespace quillbay::cli
