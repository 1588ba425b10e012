#include <QuillbayCloud/Classes/MainQueueReference.h>
#include <QuillbayCloud/Classes/SessionItemUploader.h>
#include <QuillbayPlatform/URLError.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::Session;
using cloud::SessionItemUploader;
using nlohmann::json;
using platform::HTTPURLResponse;
using platform::Progress;
using platform::URL;
using platform::URLError;

const char* const kRefusal = "<Error><Code>AccessDenied</Code><Message>No</Message></Error>";

TEST(SessionItemUploadResult, IsATagOnlyForA200AndElseTheBestReasonThereIs) {
  using Data = std::optional<std::string>;
  const std::tuple<const char*, int, HTTPURLResponse::HeaderFields, Data, bool, const char*>
      rows[] = {
          {"the tag as received", 200, {{"ETAG", "\"a\""}}, "", false, "\"a\""},
          {"the tag even beside an error", 200, {{"etag", "a"}}, {}, true, "a"},
          {"two tags joined", 200, {{"Etag", "a"}, {"x", "y"}, {"etag", "b"}}, "", false, "a, b"},
          {"no success without tag", 200, {}, "", false, "invalidResponse"},
          {"no success for another 2xx", 201, {{"Etag", "a"}}, "", false, "invalidResponse"},
          {"the error before the body", 403, {}, kRefusal, true, "underlying: timed out"},
          {"the store's refusal", 204, {{"Etag", "a"}}, kRefusal, false, "aws: AccessDenied: No"},
          {"another body", 500, {}, "oops", false, "invalidResponse"},
          {"no body", 500, {}, {}, false, "invalidResponse"},
          {"no response", 0, {}, kRefusal, true, "invalidResponse"},
      };
  const URL url = *URL::parse("https://store.quillbay.example/k?signature=secret");
  const auto timeout = std::make_shared<URLError>(URLError::Code::timedOut, "timed out");
  for (const auto& [name, status, headerFields, data, hasError, outcome] : rows) {
    std::optional<HTTPURLResponse> response;
    if (status != 0) response.emplace(url, status, headerFields);
    const auto error = hasError ? timeout : nullptr;
    const auto result = SessionItemUploader::uploadResult(data, response, error, url);
    EXPECT_EQ(result ? *result : result.error().description(), outcome) << name;
  }
}

class SessionItemUploaderTest : public ServiceTest {
 protected:
  SessionItemUploaderTest() {
    webservice_->perform<Session>(
        *webservice_->requestFactory().createSessionRequest(
            {"host-1", {file_}}, {}, cloud::SessionConfiguration::default_()),
        [this](auto session) { session_ = *session; });
    EXPECT_TRUE(waitUntil([this] { return session_.has_value(); }));
  }

  std::shared_ptr<SessionItemUploader> make() const {
    const cloud::Item& item = items(*session_).front();
    return SessionItemUploader::create(webservice_, *session_, item, file_, false);
  }

  /// Uploads the one item; returns the outcome in words.
  std::string upload(std::shared_ptr<Progress> progress = nullptr) {
    std::optional<std::string> outcome;
    const auto uploader = make();
    uploader->upload(std::move(progress), [&](SessionItemUploader::Result result) {
      EXPECT_EQ(std::this_thread::get_id(), thread_);
      outcome = result ? "done" : result.error().description();
    });
    EXPECT_FALSE(outcome);
    EXPECT_TRUE(waitUntil([&] { return outcome.has_value(); }));
    return outcome.value_or("");
  }

  const URL file_ = URL::fileURL(folder_.writePattern("My Photo.JPG", 100'000));
  std::optional<Session> session_;
};

TEST_F(SessionItemUploaderTest, AsksPutsAndFinalizesAndLogsEachStep) {
  const auto progress = Progress::create(200);
  EXPECT_EQ(upload(progress), "done");
  EXPECT_DOUBLE_EQ(progress->fractionCompleted(), 0.5);
  EXPECT_EQ(service_.calls(),
            (Lines{"create", "upload_url item-1", "store item-1", "finalize item-1"}));
  EXPECT_EQ(service_.storedBytes("item-1"), patternedBytes(100'000));
  EXPECT_EQ(RecordingLogger::lines(),
            (Lines{"debug requestUploadUrl(): Obtained upload URL, proceeding to upload...",
                   "debug uploadItem(url:): Performing item (item-1) upload request...",
                   "debug uploadItem(url:): Successfully uploaded item with etag: "
                   "\"tag-of-item-1\"",
                   "debug finalizeUpload(etag:): Finalizing upload with etag: \"tag-of-item-1\"",
                   "debug finalizeUpload(etag:): Finished upload finalization"}));
}

TEST_F(SessionItemUploaderTest, AFailureIsLoggedAndReportedInItsOwnWayForEachStep) {
  const std::tuple<const char*, Call, Reply, const char*> rows[] = {
      // Wrapped as it is, unlike the other refusals of the service.
      {"no address", Call::uploadUrl, gone_,
       "underlying: the service refused with status 410: Gone"},
      {"refused", Call::store, {.status = 403, .body = kRefusal}, "aws: AccessDenied: No"},
      {"hung up", Call::store, Reply::none(), "invalidResponse"},
      {"not finalized", Call::finalize, gone_, "webservice: status 410: Gone"},
      {"unreadable", Call::finalize, {.status = 502, .body = "<html>"}, "invalidResponse"},
  };
  for (const auto& [name, call, reply, outcome] : rows) {
    SCOPED_TRACE(name);
    service_.answer(call, reply);
    EXPECT_EQ(upload(), outcome);
    EXPECT_TRUE(RecordingLogger::lastLine().starts_with("error "));
    EXPECT_EQ(service_.requests(Call::finalize).empty(), call != Call::finalize);
    service_.setHook(call, nullptr);
  }
}

TEST_F(SessionItemUploaderTest, SendsAnEntityTagAsItIsAndLogsItInOneLine) {
  const std::string tag = "\"a\u0085b\u202E\"";
  service_.answer(Call::store, {.headerFields = {{"ETag", tag}}});
  upload();
  EXPECT_EQ(json::parse(service_.requests(Call::finalize).at(0).body)["etag"], tag);
  EXPECT_EQ(RecordingLogger::lines().at(3),
            "debug finalizeUpload(etag:): Finalizing upload with etag: \"a b \"");
}

TEST_F(SessionItemUploaderTest, SendsAnEmptyTokenForASessionWithoutOne) {
  session_ = *decoded<Session>(R"({"id":"session-1","url":"https://q.example","items":[
      {"id":"item-1","is_uploaded":false,"fingerprint":""}]})");
  upload();
  EXPECT_EQ(service_.requests(Call::uploadUrl).at(0).field("X-QUILLBAY-SESSION-TOKEN"), "");
}

TEST_F(SessionItemUploaderTest, NoReplyUnderWayKeepsItAlive) {
  for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
    const auto gate = service_.hold(call);
    auto uploader = make();
    uploader->upload(nullptr, [](const auto&) { ADD_FAILURE() << "reported"; });
    ASSERT_TRUE(waitForCall(call));
    const std::weak_ptr<SessionItemUploader> weakUploader = uploader;
    uploader.reset();
    // A step that has just ended may still release its own reference on the main queue.
    EXPECT_TRUE(waitUntil([&] { return weakUploader.expired(); })) << static_cast<int>(call);
    gate->open();
    service_.setHook(call, nullptr);
  }
}

TEST(MainQueueReference, LeavesTheLastReleaseToTheMainQueue) {
  int livingObjectCount = 0;
  auto object = std::make_shared<HostObject>(livingObjectCount);
  std::thread([&] {
    const cloud::MainQueueReference<HostObject> reference(object);
    object.reset();
  }).join();
  EXPECT_EQ(livingObjectCount, 1);
  drainMainQueue();
  EXPECT_EQ(livingObjectCount, 0);
}

TEST_F(SessionItemUploaderTest, NothingSecretIsEverLogged) {
  for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
    for (const auto& reply : {Reply::none(), Reply::empty(500), Reply::redirect(303, "http://a b"),
                              Reply::json(R"({"url":"file:///etc/passwd?signature=secret"})")}) {
      service_.answer(call, reply);
      upload();
    }
    service_.setHook(call, nullptr);
  }
  for (const std::string& line : RecordingLogger::lines()) {
    EXPECT_FALSE(line.contains("secret") || line.contains(FakeService::token)) << line;
  }
}

}  // namespace
}  // namespace quillbay::test
