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
  void progressed(double /*fraction*/) override {}
  void done() override {}
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

  void progressed(double fraction) override {
    // All bytes may be sent while the last file is still to be confirmed: 1 belongs to done().
    const double shown = std::floor(fraction * kProgressSteps) / kProgressSteps;
    // The next one says it as well: a slow reader must not hold the upload up.
    if (shown <= fraction_ || shown >= 1 || !canWriteNow(descriptor())) return;
    fraction_ = shown;
    write(progressEvent(shown));
  }

  void done() override {
    write(progressEvent(1));
    write(eventNamed("done"));
  }

  void deleted() override { write(eventNamed("deleted")); }

  void failed(const FailureReport& report) override {
    Object event = eventNamed("error");
    event["case"] = report.caseName();
    if (report.description) event["description"] = *report.description;
    if (report.code) event["code"] = *report.code;
    if (report.status) event["status"] = *report.status;
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

  static Object progressEvent(double fraction) {
    Object event = eventNamed("progress");
    event["fraction"] = fraction;
    return event;
  }

  // In ASCII: a text of a server can then neither drive a terminal nor break the line, whatever
  // bytes it holds.
  void write(const Object& event) {
    ResultOutput::write(event.dump(-1, ' ', true, Object::error_handler_t::replace) + "\n");
  }

  double fraction_ = 0;
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
