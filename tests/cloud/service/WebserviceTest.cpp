#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/service/ItemUploadUrl.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONError.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::ItemUploadUrl;
using cloud::Webservice;

class WebserviceTest : public ServiceTest {
 protected:
  platform::URLRequest request() const {
    return webservice_->requestFactory().uploadUrlRequest("s", "item-1", FakeService::token);
  }
  /// The address that was asked for, or the kind of error.
  std::string outcome() {
    std::string text;
    webservice_->perform<ItemUploadUrl>(request(), [&](const auto& result) {
      EXPECT_EQ(std::this_thread::get_id(), thread_);
      text = result ? result->url().absoluteString() : kindOf(result.error());
    });
    EXPECT_TRUE(waitUntil([&] { return !text.empty(); }));
    return text;
  }
  static std::string kindOf(const Webservice::Error& error) {
    if (const auto* refusal = error.as<Webservice::Error::Cloud>()) {
      return refusal->error.message + " " + std::to_string(refusal->error.status);
    }
    const auto* underlying = error.as<Webservice::Error::Underlying>();
    if (!underlying) return "parse error";
    const auto* json = dynamic_cast<const platform::JSONError*>(underlying->error.get());
    return json != nullptr ? "JSON error" : "transport error";
  }
};

TEST_F(WebserviceTest, ReadsARecordFromAnySuccessAndTellsTheFailuresApart) {
  const Reply brokenOff{
      .raw = "HTTP/1.1 400 No\r\nContent-Length: 999\r\n\r\n{\"message\":\"m\",\"status\":1}"};
  const char* const record = R"({"url":"https://s.example/k?a=b","more":1})";
  const std::tuple<const char*, Reply, const char*> rows[] = {
      {"record", Reply::json(record), "https://s.example/k?a=b"},
      {"another success", Reply::json(record, 201), "https://s.example/k?a=b"},
      {"the last success", Reply::json(record, 299), "https://s.example/k?a=b"},
      {"no success any more", Reply::json(record, 300), "parse error"},
      {"refusal", Reply::json(R"({"message":"No \"x\"","status":1234})", 400), "No \"x\" 1234"},
      {"refusal without status", Reply::json(R"({"message":"m"})", 400), "parse error"},
      {"refusal as HTML", Reply{.status = 404, .body = "<html>"}, "parse error"},
      {"refusal without body", Reply::empty(500), "parse error"},
      {"success without url", Reply::json("{}"), "JSON error"},
      {"success that is no JSON", Reply::json("<html>"), "JSON error"},
      {"success without body", Reply::empty(204), "JSON error"},
      {"no reply", Reply::none(), "transport error"},
      {"reply that breaks off", brokenOff, "transport error"},
  };
  for (const auto& [name, reply, expected] : rows) {
    service_.answer(Call::uploadUrl, reply);
    EXPECT_EQ(outcome(), expected) << name;
  }
}

TEST_F(WebserviceTest, OnlyTheRawSuccessArrivesOnTheTransfersThread) {
  for (const int status : {200, 500}) {
    service_.answer(Call::uploadUrl, Reply::empty(status));
    std::atomic<std::thread::id> thread;
    webservice_->perform(request(), [&](const auto&) { thread = std::this_thread::get_id(); });
    EXPECT_TRUE(waitUntil([&] { return thread.load() != std::thread::id(); }));
    EXPECT_EQ(thread.load() == thread_, status == 500);
  }
}

TEST_F(WebserviceTest, ADeletionEndsWithAnEmptyReplyOrTheServicesRefusal) {
  for (const std::string_view token : {FakeService::token, "wrong"}) {
    std::optional<std::string> outcome;
    int livingObjectCount = 0;
    cloud::SessionController::deleteSession(
        "session-1", "host-1", token,
        [&, object = std::make_unique<HostObject>(livingObjectCount)](const auto& result) {
          EXPECT_EQ(std::this_thread::get_id(), thread_);
          outcome = result ? "deleted" : result.error().description();
        });
    EXPECT_FALSE(outcome);
    EXPECT_TRUE(waitUntil([&] { return livingObjectCount == 0; }));
    EXPECT_EQ(outcome, token == "wrong" ? "webservice: status 403: wrong token" : "deleted");
  }
  EXPECT_EQ(service_.calls(), (Lines{"delete session-1", "delete session-1"}));
}

}  // namespace
}  // namespace quillbay::test
