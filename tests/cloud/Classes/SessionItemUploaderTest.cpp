#include <QuillbayCloud/Classes/SessionItemUploader.h>
#include <QuillbayPlatform/URLError.h>

#include "CloudTesting.h"
#include "FakeService.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::QuillbayCloudError;
using cloud::RequestFactory;
using cloud::Session;
using cloud::SessionItemUploader;
using cloud::Webservice;
using platform::HTTPURLResponse;
using platform::Progress;
using platform::URL;
using platform::URLError;
using Call = FakeService::Call;
using Lines = std::vector<std::string>;

const char* const kRefusal = "<Error><Code>AccessDenied</Code><Message>No</Message></Error>";

struct UploadReply {
  const char* name;
  std::optional<int> status;
  HTTPURLResponse::HeaderFields headerFields;
  std::optional<std::string> data;
  bool hasError;
  std::string outcome;
};

const UploadReply kUploadReplies[] = {
    {"TheTagAsReceived", 200, {{"ETAG", "\"a\""}}, "", false, "\"a\""},
    {"TheTagEvenBesideAnError", 200, {{"etag", "a"}}, {}, true, "a"},
    {"NoSuccessWithoutTag", 200, {}, "", false, "invalidResponse"},
    {"NoSuccessForAnother2xx", 201, {{"Etag", "a"}}, "", false, "invalidResponse"},
    {"TheErrorBeforeTheBody", 403, {}, kRefusal, true, "underlying: timed out"},
    {"TheStoresRefusal", 403, {}, kRefusal, false, "aws: AccessDenied: No"},
    {"TheStoresRefusalUnderA204", 204, {{"Etag", "a"}}, kRefusal, false, "aws: AccessDenied: No"},
    {"InvalidForAnotherBody", 500, {}, "oops", false, "invalidResponse"},
    {"InvalidWithoutBody", 500, {}, {}, false, "invalidResponse"},
    {"InvalidWithoutResponse", {}, {}, kRefusal, true, "invalidResponse"},
};

class SessionItemUploadResult : public testing::TestWithParam<UploadReply> {};
INSTANTIATE_TEST_SUITE_P(Rows, SessionItemUploadResult, testing::ValuesIn(kUploadReplies),
                         nameOfRow);

TEST_P(SessionItemUploadResult, Is) {
  const auto& row = GetParam();
  const URL url = *URL::parse("https://store.quillbay.example/k?signature=secret");
  std::optional<HTTPURLResponse> response;
  if (row.status) response.emplace(url, *row.status, row.headerFields);
  const auto error =
      row.hasError ? std::make_shared<URLError>(URLError::Code::timedOut, "timed out") : nullptr;
  const auto result = SessionItemUploader::uploadResult(row.data, response, error, url);
  EXPECT_EQ(result ? *result : result.error().description(), row.outcome);
}

class SessionItemUploaderTest : public testing::Test {
 protected:
  SessionItemUploaderTest() {
    service_.install();
    RecordingLogger::install();
    webservice_->perform<Session>(
        *webservice_->requestFactory().createSessionRequest(
            {"host-1", {file_}}, {}, cloud::SessionConfiguration::default_()),
        [this](auto session) { session_ = *session; });
    EXPECT_TRUE(waitUntil([this] { return session_.has_value(); }));
  }

  void answer(Call call, const Reply& reply) {
    service_.setHook(call, [reply](const Request&, const Reply&) { return reply; });
  }
  std::shared_ptr<SessionItemUploader> makeUploader() const {
    return SessionItemUploader::create(webservice_, *session_, items(*session_).front(), file_,
                                       false);
  }
  /// Uploads the one item; returns the outcome in words.
  std::string upload(std::shared_ptr<Progress> progress = nullptr) {
    std::optional<std::string> outcome;
    const auto uploader = makeUploader();
    uploader->upload(std::move(progress), [&](SessionItemUploader::Result result) {
      EXPECT_EQ(std::this_thread::get_id(), thread_);
      error_ = result ? std::nullopt : std::make_optional(result.error());
      outcome = result ? "done" : result.error().description();
    });
    EXPECT_FALSE(outcome);
    EXPECT_TRUE(waitUntil([&] { return outcome.has_value(); }));
    return outcome.value_or("");
  }

  const TemporaryFolder folder_;
  const URL file_ = URL::fileURL(folder_.writePattern("My Photo.JPG", 100'000));
  FakeService service_;
  const std::shared_ptr<const Webservice> webservice_ =
      Webservice::create(RequestFactory::create("host-1"));
  std::optional<Session> session_;
  std::optional<QuillbayCloudError> error_;
  const std::thread::id thread_ = std::this_thread::get_id();
};

TEST_F(SessionItemUploaderTest, AsksPutsAndFinalizesAndLogsEachStep) {
  const auto progress = Progress::create(200);
  EXPECT_EQ(upload(progress), "done");
  EXPECT_DOUBLE_EQ(progress->fractionCompleted(), 0.5);
  EXPECT_EQ(service_.calls(),
            (Lines{"create", "upload_url item-1", "store item-1", "finalize item-1"}));
  EXPECT_EQ(service_.storedBytes("item-1"), patternedBytes(100'000));
  const Lines lines = {
      "debug requestUploadUrl(): Obtained upload URL, proceeding to upload...",
      "debug uploadItem(url:): Performing item (item-1) upload request...",
      "debug uploadItem(url:): Successfully uploaded item with etag: \"tag-of-item-1\"",
      "debug finalizeUpload(etag:): Finalizing upload with etag: \"tag-of-item-1\"",
      "debug finalizeUpload(etag:): Finished upload finalization",
  };
  EXPECT_EQ(RecordingLogger::lines(), lines);
}

TEST_F(SessionItemUploaderTest, ASessionWithoutTokenSendsTheEmptyText) {
  session_ = *decoded<Session>(
      R"({"id":"s","url":"https://q.example",
          "items":[{"id":"item-1","is_uploaded":false,"fingerprint":""}]})");
  const auto address = service_.server().address("/store/item-1");
  answer(Call::uploadUrl, Reply::json(R"({"url":")" + address + R"("})"));
  upload();
  for (const Call call : {Call::uploadUrl, Call::finalize}) {
    EXPECT_EQ(service_.requests(call).at(0).field("X-QUILLBAY-SESSION-TOKEN"), "");
  }
}

struct UploadFailure {
  const char* name;
  Call call;
  Reply reply;
  const char* outcome;
  const char* line;
};

const Reply kGone = Reply::json(R"({"message":"Gone","status":410})", 410);
const UploadFailure kUploadFailures[] = {
    {"NoAddress", Call::uploadUrl, kGone, "underlying: the service refused with status 410: Gone",
     "requestUploadUrl(): Failed to obtain upload URL with error the service refused with status "
     "410: Gone"},
    {"RefusedByTheStore", Call::store, Reply{.status = 403, .body = kRefusal},
     "aws: AccessDenied: No",
     "uploadResult(data:response:error:url:): Failed uploading with AWS error AccessDenied: No"},
    {"RefusedUnreadably", Call::store, Reply{.status = 403, .body = "no"}, "invalidResponse",
     "uploadResult(data:response:error:url:): Failed uploading item with unknown error"},
    {"HungUpOn", Call::store, Reply::none(), "invalidResponse",
     "uploadResult(data:response:error:url:): Unexpected response"},
    {"NotFinalized", Call::finalize, kGone, "webservice: status 410: Gone",
     "finalizeUpload(etag:): Failed to finalize upload with error the service refused with status "
     "410: Gone"},
    {"FinalizedUnreadably", Call::finalize, Reply{.status = 502, .body = "<html>"},
     "invalidResponse",
     "finalizeUpload(etag:): Failed to finalize upload with error the service's reply could not be "
     "understood"},
};

class SessionItemUploadFailure : public SessionItemUploaderTest,
                                 public testing::WithParamInterface<UploadFailure> {};
INSTANTIATE_TEST_SUITE_P(Rows, SessionItemUploadFailure, testing::ValuesIn(kUploadFailures),
                         nameOfRow);

TEST_P(SessionItemUploadFailure, IsReportedAndLogged) {
  answer(GetParam().call, GetParam().reply);
  EXPECT_EQ(upload(), GetParam().outcome);
  EXPECT_TRUE(RecordingLogger::hasLine(std::string("error ") + GetParam().line));
  EXPECT_EQ(service_.requests(Call::finalize).empty(), GetParam().call != Call::finalize);
}

TEST_F(SessionItemUploaderTest, TheServicesRefusalOfAnAddressIsWrappedAsItIs) {
  answer(Call::uploadUrl, kGone);
  upload();
  const auto* underlying = error_->as<QuillbayCloudError::Underlying>();
  ASSERT_TRUE(underlying);
  EXPECT_TRUE(dynamic_cast<const Webservice::Error*>(underlying->error.get()));
  EXPECT_FALSE(error_->errorDescription());
}

TEST_F(SessionItemUploaderTest, NothingSecretIsEverLogged) {
  for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
    for (const auto& reply : {Reply::none(), Reply::empty(500), Reply::redirect(303, "http://a b"),
                              Reply::json(R"({"url":"file:///etc/passwd?signature=secret"})")}) {
      answer(call, reply);
      upload();
    }
    service_.setHook(call, nullptr);
  }
  for (const std::string& line : RecordingLogger::lines()) {
    EXPECT_EQ(line.find("secret"), std::string::npos) << line;
    EXPECT_EQ(line.find(FakeService::token), std::string::npos) << line;
  }
}

// The transfer outlives its uploader, and its end finds nobody.
TEST_F(SessionItemUploaderTest, IsNotKeptAliveByItsTransferAndReportsNothingWhenReleased) {
  const auto gate = std::make_shared<Gate>();
  service_.setHook(Call::store, [gate](const Request&, Reply ordinary) {
    ordinary.sendAfter = gate;
    return ordinary;
  });
  bool isReported = false;
  auto uploader = makeUploader();
  uploader->upload(nullptr, [&](const auto&) { isReported = true; });
  ASSERT_TRUE(waitUntil([&] { return service_.requests(Call::store).size() == 1; }));
  const std::weak_ptr<SessionItemUploader> weakUploader = uploader;
  uploader.reset();
  EXPECT_TRUE(weakUploader.expired());
  gate->open();
  upload();
  EXPECT_FALSE(isReported);
  EXPECT_EQ(service_.requests(Call::finalize).size(), 1U);
}

}  // namespace
}  // namespace quillbay::test
