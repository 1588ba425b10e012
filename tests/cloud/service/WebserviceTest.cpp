#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/service/Webservice.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::Webservice;
using WebserviceTest = ServiceTest;

TEST_F(WebserviceTest, ReadsARecordFromAnySuccessAndTellsTheFailuresApart) {
  const Reply brokenOff{
      .raw = "HTTP/1.1 400 No\r\nContent-Length: 999\r\n\r\n{\"message\":\"m\",\"status\":1}"};
  const std::string record =
      R"({"more":1,"url":")" + service_.server().address("/store/item-1?a=b", "localhost") + "\"}";
  const char* const parseError = "the service's reply could not be understood";
  const std::tuple<const char*, Reply, const char*> rows[] = {
      {"record", Reply::json(record), "done"},
      {"another success", Reply::json(record, 201), "done"},
      {"the last success", Reply::json(record, 299), "done"},
      {"no success any more", Reply::json(record, 300), parseError},
      {"refusal", Reply::json(R"({"message":"No \"x\"","status":1234})", 400),
       "the service refused with status 1234: No \"x\""},
      {"refusal without status", Reply::json(R"({"message":"m"})", 400), parseError},
      {"refusal as HTML", Reply{.status = 404, .body = "<html>"}, parseError},
      {"refusal without body", Reply::empty(500), parseError},
      {"success without url", Reply::json("{}"), "JSON key url"},
      {"success that is no JSON", Reply::json("<html>"), "JSON document"},
      {"success without body", Reply::empty(204), "JSON document"},
      {"no reply", Reply::none(), "underlying: PUT https://"},
      {"reply that breaks off", brokenOff, "underlying: PUT https://"},
  };
  for (const auto& [name, reply, expected] : rows) {
    service_.answer(Call::uploadUrl, reply);
    Host host(files(1));
    ASSERT_TRUE(host.shareToEnd());
    EXPECT_THAT(host.events.back(), testing::HasSubstr(expected)) << name;
  }
}

TEST_F(WebserviceTest, OnlyTheRawSuccessArrivesOnTheTransfersThread) {
  for (const int status : {200, 500}) {
    service_.answer(Call::uploadUrl, Reply::empty(status));
    std::atomic<std::thread::id> thread;
    const auto request = webservice_->requestFactory().uploadUrlRequest("s", "item-1", "t");
    webservice_->perform(request, [&](const auto&) { thread = std::this_thread::get_id(); });
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
