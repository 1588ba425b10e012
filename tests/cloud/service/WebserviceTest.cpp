#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/service/ItemUploadUrl.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONError.h>

#include <atomic>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::CloudError;
using cloud::ItemUploadUrl;
using cloud::Webservice;

class WebserviceTest : public ServiceTest {
 protected:
  platform::URLRequest request() const {
    return webservice_->requestFactory().uploadUrlRequest("s", "i", FakeService::token);
  }
  std::expected<ItemUploadUrl, Webservice::Error> uploadUrl() {
    std::optional<std::expected<ItemUploadUrl, Webservice::Error>> result;
    webservice_->perform<ItemUploadUrl>(request(), [&](auto received) {
      EXPECT_EQ(std::this_thread::get_id(), thread_);
      result.emplace(std::move(received));
    });
    EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
    return std::move(*result);
  }
};

TEST_F(WebserviceTest, EveryStatusFrom200To299WithARecordIsASuccess) {
  for (const int status : {200, 201, 299}) {
    service_.answer(Call::uploadUrl,
                    Reply::json(R"({"url":"https://s.example/k?a=b","more":1})", status));
    const auto result = uploadUrl();
    ASSERT_TRUE(result) << status << result.error().description();
    EXPECT_EQ(result->url().absoluteString(), "https://s.example/k?a=b");
  }
}

std::string kindOf(const Webservice::Error& error) {
  if (error.as<Webservice::Error::Cloud>()) return "refusal";
  if (error.as<Webservice::Error::Parse>()) return "parse error";
  const auto& underlying = error.as<Webservice::Error::Underlying>()->error;
  const bool isJSON = dynamic_cast<const platform::JSONError*>(underlying.get()) != nullptr;
  return isJSON ? "JSON error" : "transport error";
}

TEST_F(WebserviceTest, AFailureIsOfTheTransportTheServiceOrTheReply) {
  const Reply brokenOff{
      .closeAfter = true,
      .raw = "HTTP/1.1 400 No\r\nContent-Length: 999\r\n\r\n{\"message\":\"m\",\"status\":1}"};
  const struct {
    const char* name;
    Reply reply;
    const char* kind;
  } rows[] = {
      {"refusal", Reply::json(R"({"message":"No \"x\"","status":1234,"x":0})", 400), "refusal"},
      {"refusal without status", Reply::json(R"({"message":"m"})", 400), "parse error"},
      {"refusal as HTML", Reply{.status = 404, .body = "<html>"}, "parse error"},
      {"refusal without body", Reply::empty(500), "parse error"},
      {"record with status 300", Reply::json(R"({"url":"https://a.b/"})", 300), "parse error"},
      {"success without url", Reply::json("{}"), "JSON error"},
      {"success that is no JSON", Reply::json("<html>"), "JSON error"},
      {"success without body", Reply::empty(204), "JSON error"},
      {"no reply", Reply::none(), "transport error"},
      {"reply that breaks off", brokenOff, "transport error"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    service_.answer(Call::uploadUrl, row.reply);
    const auto result = uploadUrl();
    ASSERT_FALSE(result);
    EXPECT_EQ(kindOf(result.error()), row.kind);
    if (const auto* refusal = result.error().as<Webservice::Error::Cloud>()) {
      EXPECT_EQ(refusal->error, (CloudError{"No \"x\"", 1234}));
    }
  }
}

TEST_F(WebserviceTest, OnlyTheRawSuccessArrivesOnTheTransfersThread) {
  std::atomic<int> callCount = 0;
  std::atomic<std::thread::id> thread;
  const auto perform = [&] {
    webservice_->perform(request(), [&](const Webservice::RawResult&) {
      thread = std::this_thread::get_id();
      ++callCount;
    });
  };
  service_.answer(Call::uploadUrl, Reply::json("{}"));
  perform();
  EXPECT_TRUE(waitUntil([&] { return callCount == 1; }));
  EXPECT_NE(thread.load(), thread_);
  service_.answer(Call::uploadUrl, Reply::empty(500));
  perform();
  EXPECT_TRUE(waitUntil([&] { return callCount == 2; }));
  EXPECT_EQ(thread.load(), thread_);
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
