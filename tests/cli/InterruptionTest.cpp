#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <string>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using Clock = std::chrono::steady_clock;

class Interrupted : public ProgramTest {
 protected:
  /// Sends the signal and expects the end within two seconds.
  static void expectPromptEnd(ChildProcess& program, int signal) {
    const auto start = Clock::now();
    program.signal(signal);
    EXPECT_EQ(program.waitForExit(), 130) << program.error();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
  }
};

class InterruptedBy : public Interrupted, public testing::WithParamInterface<int> {};

TEST_P(InterruptedBy, aStalledUploadEndsInTimeAndItsSessionIsDeleted) {
  const auto gate = stall(Call::store);
  ChildProcess program(reaching({.arguments = {"share", "--json", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); })) << program.error();
  expectPromptEnd(program, GetParam());
  EXPECT_EQ(count("delete session-1"), 1U);
  EXPECT_EQ(events(program.output()).back(), nlohmann::json({{"event", "deleted"}}));
  EXPECT_EQ(program.error(), "");
}

INSTANTIATE_TEST_SUITE_P(Interrupted, InterruptedBy, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(Interrupted, keepLeavesTheSession) {
  const auto gate = stall(Call::store);
  ChildProcess program(reaching({.arguments = {"share", "--keep", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); })) << program.error();
  expectPromptEnd(program, SIGINT);
  EXPECT_EQ(count("delete session-1"), 0U);
}

TEST_F(Interrupted, anUnconfirmedDeletionIsSaid) {
  const auto storeGate = stall(Call::store);
  const auto deleteGate = stall(Call::deleteSession);
  ChildProcess program(reaching({.arguments = {"share", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); })) << program.error();
  expectPromptEnd(program, SIGINT);
  EXPECT_NE(program.error().find("has not confirmed"), std::string::npos) << program.error();
}

TEST_F(Interrupted, aSecondSignalEndsAtOnce) {
  const auto storeGate = stall(Call::store);
  const auto deleteGate = stall(Call::deleteSession);
  ChildProcess program(reaching({.arguments = {"share", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); })) << program.error();
  program.signal(SIGINT);
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("delete session-1"); }));
  program.signal(SIGINT);
  EXPECT_EQ(program.waitForExit(), 130);
  // The bounded wait for the deletion would have ended with a message.
  EXPECT_EQ(program.error(), "");
}

TEST_F(Interrupted, aSessionThatComesIntoBeingAfterwardsIsDeleted) {
  const auto gate = stall(Call::createSession);
  ChildProcess program(reaching({.arguments = {"share", file_}, .error = Stream::terminal}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("create"); }));
  program.signal(SIGINT);
  ASSERT_TRUE(program.waitUntil(
      [&] { return program.terminal().find("Cancelling...") != std::string::npos; }));
  gate->open();
  EXPECT_EQ(program.waitForExit(), 130);
  EXPECT_EQ(count("delete session-1"), 1U);
  EXPECT_EQ(count("store item-1"), 0U);
  EXPECT_EQ(program.output(), "");
}

TEST_F(Interrupted, aCreationWithoutAnswerDoesNotHoldTheEndUp) {
  const auto gate = stall(Call::createSession);
  ChildProcess program(reaching({.arguments = {"share", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("create"); })) << program.error();
  expectPromptEnd(program, SIGINT);
  EXPECT_NE(program.error().find("has not answered"), std::string::npos) << program.error();
}

TEST_F(Interrupted, hashingEndsAtOnce) {
  const std::string large = folder_.writeSparse("large", std::uint64_t{1} << 42);
  ChildProcess program(reaching({.arguments = {"share", "--verbose", large}}));
  ASSERT_TRUE(
      program.waitUntil([&] { return program.error().find("Creating") != std::string::npos; }));
  expectPromptEnd(program, SIGINT);
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Interrupted, aDeletionInFlightEndsAtOnceAndSaysThatItIsOpen) {
  const auto gate = stall(Call::deleteSession);
  ChildProcess program(
      reaching({.arguments = {"delete", "session-1", "--token", FakeService::token}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("delete session-1"); }));
  expectPromptEnd(program, SIGINT);
  EXPECT_NE(program.error().find("may be deleted, or not"), std::string::npos);
}

TEST_F(Interrupted, waitingForAPasswordEndsAtOnce) {
  ChildProcess program(
      reaching({.arguments = {"share", "--password-file", "-", file_}, .input = std::nullopt}));
  ASSERT_TRUE(program.waitUntil([&] { return program.blocks(SIGINT); }));
  expectPromptEnd(program, SIGINT);
}

TEST_F(Interrupted, aSignalThatTheCallerIgnoresStaysIgnored) {
  const auto gate = stall(Call::store);
  ChildProcess program(
      reaching({.arguments = {"share", file_}, .ignoredSignals = {SIGHUP, SIGINT}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); })) << program.error();
  program.signal(SIGHUP);
  program.signal(SIGINT);
  gate->open();
  EXPECT_EQ(program.waitForExit(), 0);
}

}  // namespace
}  // namespace quillbay::test
