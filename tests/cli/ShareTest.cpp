#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class Share : public ProgramTest {};

TEST_F(Share, theLinkStandsAloneOnStandardOutputWhileTheUploadIsStalled) {
  const auto gate = stall(Call::store);
  ChildProcess program(reaching({.arguments = {"share", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); }));
  ASSERT_TRUE(program.waitUntil([&] { return program.output() == link_; })) << program.output();
  gate->open();
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.output(), link_);
  EXPECT_EQ(program.error(), "");
  EXPECT_EQ(service_.storedBytes("item-1"), "content");
  EXPECT_EQ(count("delete session-1"), 0U);
}

TEST_F(Share, theOptionsReachTheService) {
  const std::string passwords = folder_.write("passwords", "s\u00e9same\r\nother\n");
  ChildProcess program(
      reaching({.arguments = {"share", "--title", "T", "--expires", "2030-01-01T00:00:00Z",
                              "--link", "download", "--long-link", "--password-file", passwords,
                              "--instance", "office", file_}}));
  ASSERT_EQ(program.waitForExit(), 0) << program.error();
  const Request request = service_.requests(Call::createSession).at(0);
  EXPECT_EQ(request.target(), "/cloud/office/session");
  const auto config = nlohmann::json::parse(request.body).at("config");
  EXPECT_EQ(config, nlohmann::json({{"title", "T"},
                                    {"expiration", "1893456000.0"},
                                    {"p", "c8Opc2FtZQ=="},
                                    {"link_type", "download"},
                                    {"is_secret", "1"}}));
}

TEST_F(Share, thePasswordComesFromStandardInputAndIsSeenNowhere) {
  const auto gate = stall(Call::store);
  ChildProcess program(reaching({.arguments = {"share", "--verbose", "--password-file", "-", file_},
                                 .input = "sesame\nrest"}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("store item-1"); })) << program.error();
  EXPECT_EQ(program.visibleArguments().find("sesame"), std::string::npos);
  gate->open();
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ((program.output() + program.error()).find("sesame"), std::string::npos);
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
}

TEST_F(Share, verbosePrintsTheStepsOnStandardError) {
  ChildProcess program(reaching({.arguments = {"share", "--verbose", file_}}));
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.output(), link_);
  EXPECT_NE(program.error().find("Creating fingerprints..."), std::string::npos);
  EXPECT_NE(program.error().find("Finished upload finalization"), std::string::npos);
}

TEST_F(Share, theEventStreamBeginsWithTheSessionNeverFallsAndEndsWithOneAndDone) {
  const std::string other = folder_.writePattern("other", 3'000'000);
  ChildProcess program(reaching({.arguments = {"share", "--json", file_, other}}));
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.error(), "");
  const auto lines = events(program.output());
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines.front().at("event"), "session");
  EXPECT_EQ(lines.front().at("id"), FakeService::sessionIdentifier);
  EXPECT_EQ(lines.front().at("token"), FakeService::token);
  EXPECT_EQ(lines.front().at("url"), FakeService::link);
  double fraction = 0;
  for (std::size_t index = 1; index + 1 < lines.size(); ++index) {
    ASSERT_EQ(lines[index].at("event"), "progress");
    EXPECT_GT(lines[index].at("fraction").get<double>(), fraction);
    fraction = lines[index].at("fraction");
  }
  EXPECT_EQ(fraction, 1);
  EXPECT_EQ(lines.back(), nlohmann::json({{"event", "done"}}));
}

TEST_F(Share, aRefusedUploadNamesItsFileAndDeletesTheSession) {
  service_.setHook(Call::store, [](const Request& request, Reply ordinary) {
    if (request.target().find("item-1") == std::string::npos) return ordinary;
    return Reply{.status = 403,
                 .body =
                     "<Error><Code>AccessDenied</Code><Message>Not \x1b[31myou</Message>"
                     "</Error>"};
  });
  const std::string other = folder_.write("other", "x");
  ChildProcess program(reaching({.arguments = {"share", "--json", "--", file_, other}}));
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_TRUE(hasCalled("delete session-1"));
  const auto lines = events(program.output());
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[lines.size() - 2].at("event"), "error");
  EXPECT_EQ(lines.back(), nlohmann::json({{"event", "deleted"}}));
  EXPECT_NE(program.error().find("the upload of '" + file_ + "' failed"), std::string::npos)
      << program.error();
  EXPECT_EQ(program.error().find('\x1b'), std::string::npos);
  EXPECT_NE(program.error().find("the session was deleted"), std::string::npos);
}

TEST_F(Share, aFailedRunKeepsItsSessionOnRequest) {
  service_.setHook(Call::finalize, [](const Request&, const Reply&) {
    return Reply::json(R"({"message":"Full","status":507})", 507);
  });
  ChildProcess program(reaching({.arguments = {"share", "--keep", file_}}));
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_FALSE(hasCalled("delete session-1"));
  EXPECT_NE(program.error().find("could not be completed: the service refused: Full (status 507)"),
            std::string::npos)
      << program.error();
}

TEST_F(Share, filesThatCannotBeReadAreNamedAndNothingIsSent) {
  ChildProcess program(
      reaching({.arguments = {"share", "--json", folder_ / "gone", file_, file_}}));
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_NE(program.error().find("gone': No such file or directory"), std::string::npos);
  EXPECT_NE(program.error().find("stands 2 times"), std::string::npos);
  const auto lines = events(program.output());
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].at("case"), "fingerprintFailure");
  EXPECT_TRUE(service_.calls().empty());
}

struct BrokenOutput {
  const char* name;
  ChildProcess::Stream stream;

  friend void PrintTo(const BrokenOutput& row, std::ostream* out) { *out << row.name; }
};

class ShareWithout : public ProgramTest, public testing::WithParamInterface<BrokenOutput> {};

TEST_P(ShareWithout, aReaderOfTheLinkFailsAndLeavesNoSession) {
  const auto gate = stall(Call::store);
  ChildProcess program(reaching({.arguments = {"share", file_}, .output = GetParam().stream}));
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_NE(program.error().find("cannot write to standard output"), std::string::npos)
      << program.error();
  EXPECT_TRUE(hasCalled("delete session-1"));
}

INSTANTIATE_TEST_SUITE_P(Share, ShareWithout,
                         testing::Values(BrokenOutput{"closed", ChildProcess::Stream::closed},
                                         BrokenOutput{"full", ChildProcess::Stream::full},
                                         BrokenOutput{"pipe", ChildProcess::Stream::brokenPipe}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Share, aReaderThatLeavesWhenEverythingIsUploadedLosesNothing) {
  const auto gate = stall(Call::finalize);
  ChildProcess program(reaching({.arguments = {"share", "--json", file_}}));
  ASSERT_TRUE(program.waitUntil([&] { return hasCalled("finalize item-1"); }));
  ASSERT_TRUE(program.waitUntil([&] { return program.output().find('\n') != std::string::npos; }));
  program.closeOutput();
  gate->open();
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_NE(program.error().find("everything was uploaded"), std::string::npos);
  EXPECT_FALSE(hasCalled("delete session-1"));
}

TEST_F(Share, aServiceThatIsNotThereIsAFailureWithAReason) {
  service_.server().stop();
  ChildProcess program(reaching({.arguments = {"share", file_}}));
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_EQ(program.output(), "");
  EXPECT_NE(program.error().find("no session was created: "), std::string::npos) << program.error();
}

TEST_F(Share, secretsAndCertificatesThatCannotBeReadAreUsageErrors) {
  const std::string empty = folder_.write("empty", "\nsecret\n");
  const std::string brief = folder_.write("brief", "abc");
  for (const Arguments& options : std::vector<Arguments>{{"--password-file", folder_ / "gone"},
                                                         {"--password-file", empty},
                                                         {"--password-file", brief},
                                                         {"--password-file", folder_.path()},
                                                         {"--cacert", folder_ / "gone"},
                                                         {"--ask-password"}}) {
    Arguments arguments{"share", file_};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ChildProcess program(reaching({.arguments = arguments}));
    EXPECT_EQ(program.waitForExit(), 2) << options.back();
    EXPECT_TRUE(program.error().starts_with("quillbay: ")) << program.error();
  }
  EXPECT_TRUE(service_.calls().empty());
}

}  // namespace
}  // namespace quillbay::test
