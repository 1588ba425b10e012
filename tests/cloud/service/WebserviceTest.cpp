#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/service/ItemUploadUrl.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONError.h>

#include <atomic>

#include "CloudTesting.h"
#include "FakeService.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::CloudError;
using cloud::ItemUploadUrl;
using cloud::RequestFactory;
using cloud::Webservice;

class WebserviceTest : public testing::Test {
 protected:
  WebserviceTest() { service_.install(); }

  void answerWith(const Reply& reply) {
    service_.setHook(FakeService::Call::uploadUrl,
                     [reply](const Request&, const Reply&) { return reply; });
  }
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

  FakeService service_;
  const std::shared_ptr<const Webservice> webservice_ =
      Webservice::create(RequestFactory::create("host-1"));
  const std::thread::id thread_ = std::this_thread::get_id();
};

TEST_F(WebserviceTest, EveryStatusFrom200To299WithARecordIsASuccess) {
  for (const int status : {200, 201, 299}) {
    answerWith(Reply::json(R"({"url":"https://s.example/k?a=b","more":1})", status));
    const auto result = uploadUrl();
    ASSERT_TRUE(result) << status << result.error().description();
    EXPECT_EQ(result->url().absoluteString(), "https://s.example/k?a=b");
  }
}

enum class Outcome { cloudError, jsonError, transportError, parseError };

Outcome outcomeOf(const Webservice::Error& error) {
  if (error.as<Webservice::Error::Cloud>()) return Outcome::cloudError;
  if (error.as<Webservice::Error::Parse>()) return Outcome::parseError;
  const auto& underlying = error.as<Webservice::Error::Underlying>()->error;
  return dynamic_cast<const platform::JSONError*>(underlying.get()) ? Outcome::jsonError
                                                                    : Outcome::transportError;
}

struct Failure {
  const char* name;
  Reply reply;
  Outcome outcome;
};

using enum Outcome;
const Failure kFailures[] = {
    {"Refusal", Reply::json(R"({"message":"No \"x\"","status":1234,"x":0})", 400), cloudError},
    {"RefusalWithoutStatus", Reply::json(R"({"message":"m"})", 400), parseError},
    {"RefusalWithStatusAsText", Reply::json(R"({"message":"m","status":"4"})", 404), parseError},
    {"RefusalAsHTML", Reply{.status = 404, .body = "<html>"}, parseError},
    {"RefusalWithoutBody", Reply::empty(500), parseError},
    {"SuccessWithoutUrl", Reply::json("{}"), jsonError},
    {"SuccessWithUrlAsNumber", Reply::json(R"({"url":5})"), jsonError},
    {"SuccessThatIsNoJSON", Reply::json("<html>"), jsonError},
    {"SuccessWithoutBody", Reply::empty(204), jsonError},
    {"NoReply", Reply::none(), transportError},
    {"ReplyThatBreaksOff",
     Reply{.closeAfter = true,
           .raw = "HTTP/1.1 400 No\r\nContent-Length: 999\r\n\r\n{\"message\":\"m\",\"status\":1}"},
     transportError},
};

class WebserviceFailure : public WebserviceTest, public testing::WithParamInterface<Failure> {};
INSTANTIATE_TEST_SUITE_P(Rows, WebserviceFailure, testing::ValuesIn(kFailures), nameOfRow);

TEST_P(WebserviceFailure, IsClassified) {
  answerWith(GetParam().reply);
  const auto result = uploadUrl();
  ASSERT_FALSE(result);
  EXPECT_EQ(outcomeOf(result.error()), GetParam().outcome);
  if (const auto* cloud = result.error().as<Webservice::Error::Cloud>()) {
    EXPECT_EQ(cloud->error, (CloudError{"No \"x\"", 1234}));
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
  answerWith(Reply::json("{}"));
  perform();
  EXPECT_TRUE(waitUntil([&] { return callCount == 1; }));
  EXPECT_NE(thread.load(), thread_);
  answerWith(Reply::empty(500));
  perform();
  EXPECT_TRUE(waitUntil([&] { return callCount == 2; }));
  EXPECT_EQ(thread.load(), thread_);
}

class SessionDeletion : public WebserviceTest {
 protected:
  std::string deleteSession(std::string_view token) {
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
    return outcome.value_or("");
  }
};

TEST_F(SessionDeletion, AnEmptyReplyIsASuccess) {
  EXPECT_EQ(deleteSession(FakeService::token), "deleted");
  EXPECT_EQ(service_.calls(), std::vector<std::string>{"delete session-1"});
}

TEST_F(SessionDeletion, AWrongTokenIsTheServicesRefusal) {
  EXPECT_EQ(deleteSession("wrong"), "webservice: status 403: wrong token");
}

}  // namespace
}  // namespace quillbay::test
