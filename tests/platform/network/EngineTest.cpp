#include "NetworkTest.h"
#include "ScriptedServer.h"

#include <QuillbayPlatform/network/Engine.h>

#include <unistd.h>

#include <atomic>

namespace quillbay::test {
namespace {

using platform::Engine;
using platform::Transfer;

using EngineTest = NetworkTest;

class Watchdog {
 public:
  Watchdog() { ::alarm(120); }
  ~Watchdog() { ::alarm(0); }
};

TEST_F(EngineTest, ComesAndGoesInAnyPhaseOfATransferWhichEndsExactlyOnce) {
  const Watchdog watchdog;
  ScriptedServer server;
  std::atomic<int> endCount = 0;
  const auto start = [&](Engine& engine) {
    engine.start(std::make_unique<Transfer>(request("GET", server.address()), std::nullopt,
                                            platform::TaskProgress::create(),
                                            [&](Transfer::Outcome) { ++endCount; }));
  };
  constexpr int roundCount = 300;
  for (int round = 0; round < roundCount; ++round) {
    Engine engine;
    start(engine);
    // From "not yet taken" to "finished".
    if (round % 3 == 1) ::usleep(static_cast<useconds_t>(round * 10));
    if (round % 3 == 2) engine.stop();
    start(engine);
  }
  EXPECT_EQ(endCount, 2 * roundCount);
}

TEST_F(EngineTest, ComesAndGoesIdle) {
  const Watchdog watchdog;
  for (int round = 0; round < 2000; ++round) Engine engine;
}

}  // namespace
}  // namespace quillbay::test
