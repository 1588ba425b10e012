#include "NetworkTest.h"

#include <QuillbayPlatform/network/Engine.h>
#include <netdb.h>

#include <semaphore>

namespace quillbay::test {
namespace {

using platform::Engine;
using platform::Transfer;
using std::chrono::steady_clock;

/// The lookup of a host's name, of which no test here needs the result.
struct Lookup {
  std::atomic<bool> hasBegun = false;
  std::atomic<bool> hasEnded = false;
  std::binary_semaphore mayEnd{0};
} lookup;

class EngineTest : public NetworkTest {
 protected:
  void start(Engine& engine, std::string_view address) {
    engine.start(std::make_unique<Transfer>(request("GET", address), std::nullopt,
                                            platform::TaskProgress::create(),
                                            [this](const Transfer::Outcome&) { ++endCount_; }));
  }

  std::atomic<int> endCount_ = 0;
};

TEST_F(EngineTest, ComesAndGoesIdleAndInAnyPhaseOfATransferWhichEndsExactlyOnce) {
  constexpr int roundCount = 300;
  for (int round = 0; round < roundCount; ++round) {
    const Engine idle;
    Engine engine;
    start(engine, server_.address());
    // From "not yet taken" to "finished".
    const auto moment = steady_clock::now() + std::chrono::microseconds(10 * round);
    while (round % 3 == 1 && steady_clock::now() < moment) continue;
    if (round % 3 == 2) engine.stop();
    start(engine, server_.address());
  }
  EXPECT_EQ(endCount_, 2 * roundCount);
}

TEST_F(EngineTest, StopsWhileANameIsStillLookedUp) {
  Engine engine;
  start(engine, "https://slow.quillbay.example/");
  EXPECT_TRUE(waitUntil([] { return lookup.hasBegun.load(); }));
  engine.stop();
  EXPECT_EQ(endCount_, 1);
  EXPECT_FALSE(lookup.hasEnded);
  lookup.mayEnd.release();
  EXPECT_TRUE(waitUntil([] { return lookup.hasEnded.load(); }));
}

}  // namespace
}  // namespace quillbay::test

/// In place of the system's, for libcurl.
extern "C" int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**) {
  using quillbay::test::lookup;
  lookup.hasBegun = true;
  (void)lookup.mayEnd.try_acquire_for(std::chrono::seconds(10));
  lookup.hasEnded = true;
  return EAI_FAIL;
}
