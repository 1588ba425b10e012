#include <fcntl.h>
#include <sys/stat.h>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class Share : public ProgramTest {
 protected:
  /// The reader of "pipe".
  host::FileDescriptor readPipe() const {
    const std::filesystem::path pipe = folder_ / "pipe";
    ::mkfifo(pipe.c_str(), 0600);
    return host::FileDescriptor(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  }
};
using Delete = ProgramTest;
using ShareExample = ProgramTest;

TEST_F(Share, theLinkStandsAloneOnStandardOutputWhileTheUploadIsStalled) {
  const auto program = startStalled(Call::store, "quillbay share file");
  ASSERT_TRUE(program->waitUntil([&] { return program->output() == link_ + "\n"; }));
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(program->output(), link_ + "\n");
  EXPECT_EQ(program->error(), "");
  EXPECT_EQ(service_.storedBytes("item-1"), "content");
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(Share, theOptionsReachTheService) {
  folder_.write("passwords", "\xEF\xBB\xBFs\u00e9same\r\nother\n");
  run(0,
      "quillbay share --title T --expires 2030-01-01T00:00:00Z --link download --long-link "
      "--password-file passwords --instance office file");
  EXPECT_EQ(service_.requests(Call::createSession).at(0).target(), "/cloud/office/session");
  EXPECT_EQ(sentSession().at("config"),
            json::parse(R"({"title": "T", "expiration": "1893456000.0", "p": "c8Opc2FtZQ==",)"
                        R"("link_type": "download", "is_secret": "1"})"));
}

TEST_F(Share, verbosePrintsTheStepsBesideTheEventsButNotThePassword) {
  const auto program =
      run(0, "quillbay share --verbose --json --password-file - file", "sesame\nrest");
  EXPECT_EQ(sentSession().at("config").at("p"), "c2VzYW1l");
  EXPECT_EQ(events(*program).back(), json({{"event", "done"}}));
  EXPECT_THAT(
      program->error(),
      AllOf(HasSubstr("Creating fingerprints..."), HasSubstr("Finished upload finalization"),
            HasSubstr("to delete it: quillbay delete '" + link_), Not(HasSubstr("sesame")),
            Not(HasSubstr(FakeService::token))));
}

TEST_F(Share, theEventStreamBeginsWithTheSessionAndEndsWithOneAndDone) {
  folder_.writePattern("large", 3'000'000);
  const auto program = run(0, "quillbay share --json file large");
  EXPECT_EQ(program->error(), "");
  EXPECT_THAT(
      program->output(),
      AllOf(StartsWith(R"({"event":"session","id":"session-1","token":"token-of-session-1",)"
                       R"("url":")" +
                       link_ + "\"}\n"),
            EndsWith(R"("fraction":1.0,"step":"finished","bytes":3000007,"total":3000007})"
                     "\n"
                     R"({"event":"done"})"
                     "\n")));
}

TEST_F(Share, aRefusedUploadNamesItsFileAndDeletesTheSession) {
  service_.answer(Call::store, FakeService::storeRefusal("Not you"), 1);
  const auto program = run(1, "quillbay share --json -- file other");
  EXPECT_EQ(count(Call::deleteSession), 1U);
  const auto lines = events(*program);
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[lines.size() - 2].at("event"), "error");
  EXPECT_EQ(lines[lines.size() - 2].at("file"), "file");
  EXPECT_EQ(lines.back(), json({{"event", "deleted"}}));
  EXPECT_THAT(program->error(),
              AllOf(HasSubstr("the upload of 'file' failed: "), HasSubstr("Not you (AccessDenied)"),
                    HasSubstr("the session was deleted")));
}

TEST_F(Share, filesThatCannotBeReadAreNamedOnceAndNothingIsSent) {
  const auto program = run(1, "quillbay share --json gone file file");
  EXPECT_EQ(program->error(),
            "quillbay: 'file' is in the list 2 times; name each file once\n"
            "quillbay: 'gone': No such file or directory\n"
            "quillbay: nothing was shared\n");
  EXPECT_EQ(events(*program).at(0).at("case"), "fingerprintFailure");
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Share, aLinkThatCannotBeWrittenIsAFailureAndLeavesNoSession) {
  for (const auto& [output, reason] :
       {std::pair(" >pipe", "Broken pipe"), std::pair(" >&-", "Bad file descriptor")}) {
    auto reader = readPipe();
    const auto program =
        startStalled(Call::createSession, std::string("quillbay share file") + output);
    reader.reset();
    gate_->open();
    EXPECT_EQ(program->waitForExit(), 1);
    EXPECT_THAT(program->error(), HasSubstr(std::string("standard output: ") + reason));
    EXPECT_EQ(count(Call::deleteSession), count(Call::createSession));
  }
}

TEST_F(Share, aReaderThatLeavesAfterTheLinkTakesNothingBack) {
  auto reader = readPipe();
  const auto second = service_.hold(Call::uploadUrl, std::nullopt, 1);
  const auto program =
      startStalled(Call::store, "quillbay share --json file other >pipe 2>/dev/tty");
  reader.reset();
  gate_->open();
  // The progress of the first file finds no reader.
  EXPECT_TRUE(program->waitToShow("1 of 2 files"));
  second->open();
  EXPECT_EQ(program->waitForExit(), 0) << program->terminal();
  EXPECT_EQ(count(Call::finalize), 2U);
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(Share, secretsAndCertificatesThatCannotBeReadAreUsageErrors) {
  folder_.write("empty", "\nsecret\n");
  folder_.write("brief", "👨‍👩‍👧‍👦ab\n");
  for (const std::string option : {"--password-file=gone", "--password-file=empty",
                                   "--password-file=brief", "--password-file=.", "--cacert=gone"}) {
    EXPECT_THAT(run(2, "quillbay share file " + option)->error(), StartsWith("quillbay: "));
  }
  const auto detached = run(2, "setsid --wait quillbay share file --ask-password");
  EXPECT_THAT(detached->error(), HasSubstr("no terminal"));
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Share, helpThatCannotBeWrittenIsAFailure) {
  EXPECT_THAT(run(1, "quillbay --help >/dev/full")->error(), HasSubstr("No space left"));
}

TEST_F(Delete, takesTheTokenFromStandardInput) {
  const auto program =
      run(0, "quillbay delete --json session-1 --token-file -", "token-of-session-1\n");
  EXPECT_EQ(service_.calls(), std::vector<std::string>{"delete session-1"});
  EXPECT_EQ(events(*program), std::vector{json({{"event", "deleted"}})});
}

TEST_F(Delete, tellsARefusalToPeopleAndPrograms) {
  const auto program = run(1, "quillbay delete --json session-1 --token wrong");
  EXPECT_EQ(events(*program).at(0).at("description"), "wrong token");
  EXPECT_THAT(program->error(), HasSubstr("'session-1' was not deleted"));
}

TEST_F(ShareExample, printsTheLinkAndEndsWhenTheFileHasArrived) {
  EXPECT_EQ(run(0, "'" QUILLBAY_EXAMPLE "' file")->output(), link_ + "\n");
  EXPECT_EQ(count(Call::finalize), 1U);
}

}  // namespace
}  // namespace quillbay::test
