#include "NetworkTest.h"

#include <QuillbayPlatform/network/Engine.h>

namespace quillbay::test {
namespace {

using platform::Engine;
using platform::Transfer;

using EngineTest = NetworkTest;

TEST_F(EngineTest, ComesAndGoesIdleAndInAnyPhaseOfATransferWhichEndsExactlyOnce) {
  constexpr int roundCount = 300;
  std::atomic<int> endCount = 0;
  const auto start = [&](Engine& engine) {
    engine.start(std::make_unique<Transfer>(request("GET", server_.address()), std::nullopt,
                                            platform::TaskProgress::create(),
                                            [&](const Transfer::Outcome&) { ++endCount; }));
  };
  for (int round = 0; round < roundCount; ++round) {
    const Engine idle;
    Engine engine;
    start(engine);
    // From "not yet taken" to "finished".
    for (int turn = 0; round % 3 == 1 && turn < 20 * round; ++turn) std::this_thread::yield();
    if (round % 3 == 2) engine.stop();
    start(engine);
  }
  EXPECT_EQ(endCount, 2 * roundCount);
}

}  // namespace
}  // namespace quillbay::test
