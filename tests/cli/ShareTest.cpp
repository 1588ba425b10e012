#include <gtest/gtest.h>

#include <string>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using nlohmann::json;

using Share = ProgramTest;
using Delete = ProgramTest;
using ShareExample = ProgramTest;

TEST_F(Share, theLinkStandsAloneOnStandardOutputWhileTheUploadIsStalled) {
  const auto program = startStalled(Call::store, {.arguments = {"share", file_}});
  ASSERT_TRUE(program->waitUntil([&] { return program->output() == link_; })) << program->output();
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(program->output(), link_);
  EXPECT_EQ(program->error(), "");
  EXPECT_EQ(service_.storedBytes("item-1"), "content");
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(Share, theOptionsReachTheService) {
  const std::string passwords = folder_.write("passwords", "s\u00e9same\r\nother\n");
  const auto program =
      run(0, {.arguments = {"share", "--title", "T", "--expires", "2030-01-01T00:00:00Z", "--link",
                            "download", "--long-link", "--password-file", passwords, "--instance",
                            "office", file_}});
  const Request request = service_.requests(Call::createSession).at(0);
  EXPECT_EQ(request.target(), "/cloud/office/session");
  EXPECT_EQ(json::parse(request.body).at("config"), json({{"title", "T"},
                                                          {"expiration", "1893456000.0"},
                                                          {"p", "c8Opc2FtZQ=="},
                                                          {"link_type", "download"},
                                                          {"is_secret", "1"}}));
}

TEST_F(Share, verbosePrintsTheStepsButNotThePasswordOfStandardInput) {
  const auto program = run(0, {.arguments = {"share", "--verbose", "--password-file", "-", file_},
                               .input = "sesame\nrest"});
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
  EXPECT_EQ(program->output(), link_);
  EXPECT_TRUE(program->error().contains("Creating fingerprints..."));
  EXPECT_TRUE(program->error().contains("Finished upload finalization"));
  EXPECT_FALSE(program->error().contains("sesame"));
}

TEST_F(Share, theEventStreamBeginsWithTheSessionNeverFallsAndEndsWithOneAndDone) {
  const std::string other = folder_.writePattern("other", 3'000'000);
  const auto program = run(0, {.arguments = {"share", "--json", file_, other}});
  EXPECT_EQ(program->error(), "");
  const auto lines = events(program->output());
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines.front(), json({{"event", "session"},
                                 {"id", FakeService::sessionIdentifier},
                                 {"token", FakeService::token},
                                 {"url", FakeService::link}}));
  double fraction = 0;
  for (std::size_t index = 1; index + 1 < lines.size(); ++index) {
    ASSERT_EQ(lines[index].at("event"), "progress");
    EXPECT_GT(lines[index].at("fraction").get<double>(), fraction);
    fraction = lines[index].at("fraction");
  }
  EXPECT_EQ(fraction, 1);
  EXPECT_EQ(lines.back(), json({{"event", "done"}}));
}

TEST_F(Share, aRefusedUploadNamesItsFileAndDeletesTheSession) {
  service_.setHook(Call::store, [](const Request& request, Reply ordinary) {
    if (!request.target().contains("item-1")) return ordinary;
    return Reply{.status = 403,
                 .body = "<Error><Code>AccessDenied</Code><Message>Not you</Message></Error>"};
  });
  const std::string other = folder_.write("other", "x");
  const auto program = run(1, {.arguments = {"share", "--json", "--", file_, other}});
  EXPECT_EQ(count(Call::deleteSession), 1U);
  const auto lines = events(program->output());
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[lines.size() - 2].at("event"), "error");
  EXPECT_EQ(lines.back(), json({{"event", "deleted"}}));
  EXPECT_TRUE(program->error().contains("the upload of '" + file_ +
                                        "' failed: the store refused it: Not you (AccessDenied)"))
      << program->error();
  EXPECT_TRUE(program->error().contains("the session was deleted"));
}

TEST_F(Share, aFailedRunKeepsItsSessionOnRequest) {
  service_.setHook(Call::finalize, [](const Request&, const Reply&) {
    return Reply::json(R"({"message":"\u001b[31mFull","status":507})", 507);
  });
  const auto program = run(1, {.arguments = {"share", "--keep", file_}});
  EXPECT_EQ(count(Call::deleteSession), 0U);
  EXPECT_TRUE(program->error().contains(
      "could not be completed: the service refused: [31mFull (status 507)"))
      << program->error();
}

TEST_F(Share, filesThatCannotBeReadAreNamedAndNothingIsSent) {
  const auto program = run(1, {.arguments = {"share", "--json", folder_ / "gone", file_, file_}});
  EXPECT_TRUE(program->error().contains("gone': No such file or directory"));
  EXPECT_TRUE(program->error().contains("stands 2 times"));
  const auto lines = events(program->output());
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].at("case"), "fingerprintFailure");
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Share, aLinkThatNobodyCanReadIsAFailureAndLeavesNoSession) {
  stall(Call::store);
  std::size_t sessionCount = 0;
  for (const Stream stream : {Stream::closed, Stream::brokenPipe}) {
    const auto program = run(1, {.arguments = {"share", file_}, .output = stream});
    EXPECT_TRUE(program->error().contains("cannot write to standard output")) << program->error();
    EXPECT_EQ(count(Call::deleteSession), ++sessionCount);
  }
}

TEST_F(Share, aReaderThatLeavesWhenEverythingIsUploadedLosesNothing) {
  const auto program = startStalled(
      Call::finalize, {.arguments = {"share", "--json", file_}, .output = Stream::pipe});
  program->closeOutput();
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 1);
  EXPECT_TRUE(program->error().contains("everything was uploaded"));
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(Share, secretsAndCertificatesThatCannotBeReadAreUsageErrors) {
  const std::string empty = folder_.write("empty", "\nsecret\n");
  const std::string brief = folder_.write("brief", "abc");
  const std::string gone = folder_ / "gone";
  const std::string folder = folder_.path();
  for (const std::string& option :
       {"--password-file=" + gone, "--password-file=" + empty, "--password-file=" + brief,
        "--password-file=" + folder, "--cacert=" + gone, std::string("--ask-password")}) {
    const auto program = run(2, {.arguments = {"share", file_, option}});
    EXPECT_TRUE(program->error().starts_with("quillbay: ")) << program->error();
  }
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Delete, takesTheTokenFromStandardInput) {
  const auto program = run(0, {.arguments = {"delete", "--json", "session-1", "--token-file", "-"},
                               .input = std::string(FakeService::token) + "\n"});
  EXPECT_EQ(service_.calls(), std::vector<std::string>{"delete session-1"});
  EXPECT_EQ(events(program->output()), std::vector{json({{"event", "deleted"}})});
}

TEST_F(Delete, tellsARefusalToPeopleAndPrograms) {
  const auto program = run(1, {.arguments = {"delete", "--json", "session-1", "--token", "wrong"}});
  EXPECT_EQ(events(program->output()).at(0).at("description"), "wrong token");
  EXPECT_TRUE(program->error().contains("'session-1' was not deleted"));
}

TEST_F(ShareExample, printsTheLinkAndEndsWhenTheFileHasArrived) {
  const auto program = run(0, {.program = QUILLBAY_EXAMPLE, .arguments = {file_}});
  EXPECT_EQ(program->output(), link_);
  EXPECT_EQ(count(Call::finalize), 1U);
}

}  // namespace
}  // namespace quillbay::test
