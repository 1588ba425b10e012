#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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
  const std::string passwords = folder_.write("passwords", "\xEF\xBB\xBFs\u00e9same\r\nother\n");
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

TEST_F(Share, verbosePrintsTheStepsBesideTheEventsButNotThePassword) {
  const auto program =
      run(0, {.arguments = {"share", "--verbose", "--json", "--password-file", "-", file_},
              .input = "sesame\nrest"});
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
  EXPECT_EQ(events(*program).back(), json({{"event", "done"}}));
  EXPECT_THAT(
      program->error(),
      AllOf(HasSubstr("Creating fingerprints..."), HasSubstr("Finished upload finalization"),
            HasSubstr("to delete it: quillbay delete '" + std::string(FakeService::link)),
            Not(HasSubstr("sesame")), Not(HasSubstr(FakeService::token))));
}

TEST_F(Share, theEventStreamBeginsWithTheSessionAndEndsWithOneAndDone) {
  const std::string other = folder_.writePattern("other", 3'000'000);
  const auto program = run(0, {.arguments = {"share", "--json", file_, other}});
  EXPECT_EQ(program->error(), "");
  const auto lines = events(*program);
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines.front(), json({{"event", "session"},
                                 {"id", FakeService::sessionIdentifier},
                                 {"token", FakeService::token},
                                 {"url", FakeService::link}}));
  EXPECT_EQ(lines[lines.size() - 2], json({{"event", "progress"},
                                           {"fraction", 1.0},
                                           {"step", "finished"},
                                           {"bytes", 3'000'007},
                                           {"total", 3'000'007}}));
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
  const auto lines = events(*program);
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[lines.size() - 2].at("event"), "error");
  EXPECT_EQ(lines[lines.size() - 2].at("file"), file_);
  EXPECT_EQ(lines.back(), json({{"event", "deleted"}}));
  EXPECT_THAT(program->error(),
              AllOf(HasSubstr("the upload of '" + file_ + "' failed: "),
                    HasSubstr("Not you (AccessDenied)"), HasSubstr("the session was deleted")));
}

TEST_F(Share, aFileThatChangedIsTheCauseOfTheRefusal) {
  service_.setHook(Call::finalize, [this](const Request&, const Reply&) {
    folder_.write("file", "more content");
    return Reply::json(R"({"message":"other content","status":409})", 409);
  });
  const auto program = run(1, {.arguments = {"share", file_}});
  EXPECT_THAT(program->error(), HasSubstr("'" + file_ + "' grew while it was being shared"));
}

TEST_F(Share, anUploadWithoutReplyIsNotTakenForAReplyThatMakesNoSense) {
  service_.answer(Call::store, Reply::none());
  const auto program = run(1, {.arguments = {"share", "--retry", "0", file_}});
  EXPECT_THAT(program->error(), HasSubstr("the connection to the store could not be made"));
}

TEST_F(Share, filesThatCannotBeReadAreNamedOnceAndNothingIsSent) {
  const auto program = run(1, {.arguments = {"share", "--json", folder_ / "gone", file_, file_}});
  EXPECT_EQ(program->error(),
            "quillbay: '" + file_ + "' stands 2 times in the list; name each file once\n" +
                "quillbay: '" + (folder_ / "gone").string() + "': No such file or directory\n" +
                "quillbay: nothing was shared\n");
  EXPECT_EQ(events(*program).at(0).at("case"), "fingerprintFailure");
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Share, aLinkThatCannotBeWrittenIsAFailureAndLeavesNoSession) {
  std::size_t sessionCount = 0;
  for (const auto& [stream, reason] :
       {std::pair(Stream::pipe, "Broken pipe"), std::pair(Stream::closed, "Bad file descriptor")}) {
    const auto program =
        startStalled(Call::createSession, {.arguments = {"share", file_}, .output = stream});
    program->closeOutput();
    gate_->open();
    EXPECT_EQ(program->waitForExit(), 1);
    EXPECT_THAT(program->error(), HasSubstr(std::string("standard output: ") + reason));
    EXPECT_EQ(count(Call::deleteSession), ++sessionCount);
  }
}

TEST_F(Share, aReaderThatLeavesAfterTheLinkTakesNothingBack) {
  const auto second = std::make_shared<Gate>();
  service_.setHook(Call::uploadUrl, [second](const Request& request, Reply ordinary) {
    if (request.target().contains("item-1")) ordinary.sendAfter = second;
    return ordinary;
  });
  const auto program = startStalled(
      Call::store, {.arguments = {"share", "--json", file_, folder_.write("other", "x")},
                    .output = Stream::pipe,
                    .error = Stream::terminal});
  program->closeOutput();
  gate_->open();
  // The progress of the first file finds no reader.
  EXPECT_TRUE(program->waitToShow("1 of 2 files"));
  second->open();
  EXPECT_EQ(program->waitForExit(), 0) << program->terminal();
  EXPECT_EQ(count(Call::finalize), 2U);
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(Share, secretsAndCertificatesThatCannotBeReadAreUsageErrors) {
  const std::string empty = folder_.write("empty", "\nsecret\n");
  const std::string brief = folder_.write("brief", "👨‍👩‍👧‍👦ab\n");
  const std::string gone = folder_ / "gone";
  const std::string folder = folder_.path();
  for (const std::string& option :
       {"--password-file=" + gone, "--password-file=" + empty, "--password-file=" + brief,
        "--password-file=" + folder, "--cacert=" + gone}) {
    const auto program = run(2, {.arguments = {"share", file_, option}});
    EXPECT_THAT(program->error(), StartsWith("quillbay: "));
  }
  const auto detached =
      run(2, {.program = "/usr/bin/setsid",
              .arguments = {"--wait", QUILLBAY_PROGRAM, "share", file_, "--ask-password"}});
  EXPECT_THAT(detached->error(), HasSubstr("no terminal"));
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Share, helpThatCannotBeWrittenIsAFailure) {
  const auto program =
      run(1, {.program = "/bin/sh", .arguments = {"-c", QUILLBAY_PROGRAM " --help >/dev/full"}});
  EXPECT_THAT(program->error(), HasSubstr("No space left"));
}

TEST_F(Delete, takesTheTokenFromStandardInput) {
  const auto program = run(0, {.arguments = {"delete", "--json", "session-1", "--token-file", "-"},
                               .input = std::string(FakeService::token) + "\n"});
  EXPECT_EQ(service_.calls(), std::vector<std::string>{"delete session-1"});
  EXPECT_EQ(events(*program), std::vector{json({{"event", "deleted"}})});
}

TEST_F(Delete, tellsARefusalToPeopleAndPrograms) {
  const auto program = run(1, {.arguments = {"delete", "--json", "session-1", "--token", "wrong"}});
  EXPECT_EQ(events(*program).at(0).at("description"), "wrong token");
  EXPECT_THAT(program->error(), HasSubstr("'session-1' was not deleted"));
}

TEST_F(ShareExample, printsTheLinkAndEndsWhenTheFileHasArrived) {
  const auto program = run(0, {.program = QUILLBAY_EXAMPLE, .arguments = {file_}});
  EXPECT_EQ(program->output(), link_);
  EXPECT_EQ(count(Call::finalize), 1U);
}

}  // namespace
}  // namespace quillbay::test
