#include "NetworkTest.h"
#include "ThreadLimit.h"
#include "torture/DescriptorLimit.h"

#include <QuillbayPlatform/network/Engine.h>

namespace quillbay::test {
namespace {

using platform::Engine;
using platform::Transfer;

class EngineTest : public NetworkTest {
 protected:
  void start(Engine& engine) {
    engine.start(std::make_unique<Transfer>(request("GET", server_.address()), std::nullopt,
                                            platform::TaskProgress::create(),
                                            [this](Transfer::Outcome outcome) {
                                              error_ = outcome.error;
                                              ++endCount_;
                                            }));
  }

  platform::ErrorPtr error_;  // of the last transfer, written before endCount_
  std::atomic<int> endCount_ = 0;
};

TEST_F(EngineTest, ComesAndGoesIdleAndInAnyPhaseOfATransferWhichEndsExactlyOnce) {
  constexpr int roundCount = 300;
  for (int round = 0; round < roundCount; ++round) {
    const Engine idle;
    Engine engine;
    start(engine);
    // From "not yet taken" to "finished".
    for (int turn = 0; round % 3 == 1 && turn < 20 * round; ++turn) std::this_thread::yield();
    if (round % 3 == 2) engine.stop();
    start(engine);
  }
  EXPECT_EQ(endCount_, 2 * roundCount);
}

TEST_F(EngineTest, WithoutAThreadOrDescriptorATransferFailsAtOnceAndTheNextOneTriesAnew) {
  Engine engine;
  {
    const ThreadLimit none(0);
    start(engine);
    EXPECT_EQ(endCount_, 1);
    EXPECT_THAT(error_->description(), testing::EndsWith("the system has no thread to give"));
  }
  {
    const DescriptorLimit none(0);
    start(engine);
  }
  EXPECT_EQ(endCount_, 2);
  EXPECT_THAT(error_->description(), testing::HasSubstr("descriptor"));
  start(engine);
  EXPECT_TRUE(waitUntil([this] { return endCount_ == 3; }));
  EXPECT_EQ(error_, nullptr);
}

}  // namespace
}  // namespace quillbay::test
