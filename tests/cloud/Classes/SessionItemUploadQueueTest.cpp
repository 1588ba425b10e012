#include <QuillbayCloud/Classes/SessionItemUploadQueue.h>

#include "CloudTesting.h"
#include "FakeService.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::QuillbayCloudError;
using cloud::RequestFactory;
using cloud::SessionItemUploadQueue;
using cloud::Webservice;
using platform::URL;

class SessionItemUploadQueueTest : public testing::Test {
 protected:
  SessionItemUploadQueueTest() { service_.install(); }

  std::shared_ptr<SessionItemUploadQueue> makeQueue(int itemCount, std::size_t fileCount) {
    return SessionItemUploadQueue::create(webservice_, sessionWithItems(itemCount),
                                          std::vector<URL>(fileCount, URL::fileURL("/nonexistent")),
                                          false);
  }

  FakeService service_;
  const std::shared_ptr<const Webservice> webservice_ =
      Webservice::create(RequestFactory::create("host-1"));
};

TEST_F(SessionItemUploadQueueTest, CountsAHundredUnitsAnItem) {
  EXPECT_EQ(makeQueue(5, 5)->progress()->totalUnitCount(), 500);
}

TEST_F(SessionItemUploadQueueTest, ReportsASessionThatCannotBePairedLaterAndSendsNothing) {
  const std::tuple<int, std::size_t, QuillbayCloudError> rows[] = {
      {0, 0, QuillbayCloudError::missingItems()},
      {0, 2, QuillbayCloudError::missingItems()},
      {3, 2, QuillbayCloudError::invalidResponse()},
  };
  for (const auto& [itemCount, fileCount, error] : rows) {
    std::optional<SessionItemUploadQueue::Result> result;
    const auto queue = makeQueue(itemCount, fileCount);
    queue->start([&](auto received) { result = std::move(received); });
    EXPECT_FALSE(result);
    EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
    EXPECT_EQ(result->error(), error);
  }
  EXPECT_EQ(service_.calls(), std::vector<std::string>());
}

TEST_F(SessionItemUploadQueueTest, ReportsNothingWhenReleasedOrClearedBeforeItsReport) {
  int reportCount = 0;
  auto released = makeQueue(0, 0);
  released->start([&](const auto&) { ++reportCount; });
  released.reset();
  const auto cleared = makeQueue(0, 0);
  cleared->start([&](const auto&) { ++reportCount; });
  cleared->setCompletion(nullptr);
  drainMainQueue();
  EXPECT_EQ(reportCount, 0);
}

TEST_F(SessionItemUploadQueueTest, ACompletionMayClearItselfWhileItRuns) {
  const auto queue = makeQueue(0, 0);
  int livingObjectCount = 0;
  queue->start([&, object = std::make_unique<HostObject>(livingObjectCount)](const auto&) {
    queue->setCompletion(nullptr);
    EXPECT_EQ(livingObjectCount, 1);
  });
  EXPECT_TRUE(waitUntil([&] { return livingObjectCount == 0; }));
}

}  // namespace
}  // namespace quillbay::test
