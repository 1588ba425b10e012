#include <QuillbayCloud/Classes/MainQueueReference.h>
#include <QuillbayCloud/Classes/SessionItemUploader.h>
#include <QuillbayPlatform/URLError.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::SessionItemUploader;
using platform::HTTPURLResponse;
using platform::URL;
using platform::URLError;

TEST(SessionItemUploadResult, IsATagOnlyForA200AndElseTheBestReasonThereIs) {
  using Data = std::optional<std::string>;
  const char* const refusal = "<E><Code>AccessDenied</Code><Message>No</Message></E>";
  const std::tuple<const char*, int, HTTPURLResponse::HeaderFields, Data, bool, const char*>
      rows[] = {
          {"the tag as received", 200, {{"ETAG", "\"a\""}}, "", false, "\"a\""},
          {"the tag even beside an error", 200, {{"etag", "a"}}, {}, true, "a"},
          {"two tags joined", 200, {{"Etag", "a"}, {"x", "y"}, {"etag", "b"}}, "", false, "a, b"},
          {"no success without tag", 200, {}, "", false, "invalidResponse"},
          {"no success for another 2xx", 201, {{"Etag", "a"}}, "", false, "invalidResponse"},
          {"the error before the body", 403, {}, refusal, true, "underlying: timed out"},
          {"the store's refusal", 204, {{"Etag", "a"}}, refusal, false, "aws: AccessDenied: No"},
          {"another body", 500, {}, "oops", false, "invalidResponse"},
          {"no body", 500, {}, {}, false, "invalidResponse"},
          {"no response", 0, {}, refusal, true, "invalidResponse"},
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

// The Release... rows of SessionControllerLifetimeTest show the same of the other replies.
TEST_F(ServiceTest, TheReplyToTheFinalizationDoesNotKeepItsUploaderAlive) {
  Host host(files(1));
  ASSERT_TRUE(host.shareToEnd());
  const cloud::Session& session = host.sessions.at(0);
  auto uploader = SessionItemUploader::create(webservice_, session, items(session).at(0),
                                              file("another"), false);
  const auto gate = service_.hold(Call::finalize);
  uploader->upload(nullptr, [](const auto&) { ADD_FAILURE() << "reported"; });
  ASSERT_TRUE(waitUntil([&] { return service_.requests(Call::finalize).size() == 2; }));
  const std::weak_ptr<SessionItemUploader> weakUploader = std::exchange(uploader, nullptr);
  // The step before may still release its own reference on the main queue.
  EXPECT_TRUE(waitUntil([&] { return weakUploader.expired(); }));
  gate->open();
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

}  // namespace
}  // namespace quillbay::test
