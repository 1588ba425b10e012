#include <QuillbayCloud/Classes/SessionController.h>
#include <sys/stat.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::SessionActivity;
using cloud::SessionLinkType;
using platform::URL;
using Step = SessionActivity::Step;

using SessionControllerTest = ServiceTest;

TEST_F(SessionControllerTest, UploadsTheLastItemFirstOneAtATimeFromItsOwnFileAndLogsEachStep) {
  Host host(files(3));
  host.onSession = [&] { EXPECT_EQ(service_.calls(), Lines{"create"}); };
  host.share();
  EXPECT_EQ(host.events, Lines());
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, (Lines{"session", "done"}));
  EXPECT_EQ(host.sessions.at(0), host.sessions.at(1));
  const std::string creating = "debug createSession(sessionCreation:completion:): ";
  Lines lines = {creating + "Creating fingerprints...",
                 creating + "Finished creating fingerprints, proceeding to create session..."};
  Lines calls = {"create"};
  for (const std::string number : {"3", "2", "1"}) {
    calls.insert(calls.end(),
                 {"upload_url item-" + number, "store item-" + number, "finalize item-" + number});
    const std::string tag = "\"tag-of-item-" + number + "\"";
    lines.insert(lines.end(),
                 {"debug requestUploadUrl(): Obtained upload URL, proceeding to upload...",
                  "debug uploadItem(url:): Performing item (item-" + number + ") upload request...",
                  "debug uploadItem(url:): Successfully uploaded item with etag: " + tag,
                  "debug finalizeUpload(etag:): Finalizing upload with etag: " + tag,
                  "debug finalizeUpload(etag:): Finished upload finalization"});
    EXPECT_EQ(service_.storedBytes("item-" + number), "content of file-" + number);
  }
  lines.emplace_back("debug uploadNextItem(): No more uploads left, we are done");
  EXPECT_EQ(service_.calls(), calls);
  EXPECT_EQ(RecordingLogger::lines(), lines);
  const std::string hash = "0b79f932aca63602096c74f2fb7b45d94ed3ba08399954129f9180edb6743c73";
  EXPECT_TRUE(service_.requests(Call::createSession).at(0).body.contains(hash));
}

TEST_F(SessionControllerTest, TellsEachStepAndProgressGoesFromZeroToOneAndNeverBack) {
  Host host({file("empty"), URL::fileURL(folder_.writePattern("large", 3'000'000))});
  const auto& progress = host.controller->progress();
  EXPECT_EQ(progress->totalUnitCount(), 200);
  EXPECT_EQ(host.controller->activity(), (SessionActivity{.fileCount = 2}));
  Lines steps;
  std::vector<std::uint64_t> byteCounts;
  std::vector<double> fractions;
  const auto activities = host.controller->observeActivity([&](const SessionActivity& activity) {
    if (steps.empty() || steps.back() != textOf(activity)) steps.push_back(textOf(activity));
    byteCounts.push_back(activity.sentByteCount);
  });
  const auto observation =
      progress->observe([&](const auto& p) { fractions.push_back(p.fractionCompleted()); });
  host.onSession = [&] { EXPECT_EQ(progress->fractionCompleted(), 0); };
  host.onEnd = [&] { EXPECT_EQ(progress->fractionCompleted(), 1); };
  host.share();
  EXPECT_EQ(host.controller->activity().step, Step::fingerprinting);
  EXPECT_TRUE(steps.empty()) << "no callback comes inside the call that starts the run";
  const auto text = [&] { return textOf(host.controller->activity()); };
  EXPECT_TRUE(waitUntil([&] { return text() == "fingerprinting 0"; }));
  ASSERT_TRUE(host.waitForEnd());
  drainMainQueue();

  // Which of these are told depends on how busy the machine is.
  std::erase_if(steps, [](const auto& step) { return step.starts_with("fingerprinting "); });
  EXPECT_EQ(steps,
            (Lines{"fingerprinting", "creating", "requesting 1", "uploading 1", "finalizing 1",
                   "requesting 0", "uploading 0", "finalizing 0", "finished"}));
  EXPECT_TRUE(std::ranges::is_sorted(byteCounts));
  EXPECT_TRUE(std::ranges::is_sorted(fractions));
  EXPECT_EQ(fractions.back(), 1);
  const SessionActivity expected{.step = Step::finished,
                                 .endedIn = Step::finalizing,
                                 .finishedFileCount = 2,
                                 .fileCount = 2,
                                 .fingerprintedByteCount = 3'000'000,
                                 .sentByteCount = 3'000'000,
                                 .totalByteCount = 3'000'000};
  EXPECT_EQ(host.controller->activity(), expected);
}

TEST_F(SessionControllerTest, OnlyADirectLinkIsUploadedForInlineDisplay) {
  for (const auto linkType : SessionLinkType::allCases) {
    Host host(files(1), {{}, {}, linkType, {}, false});
    ASSERT_TRUE(host.shareToEnd());
    const auto disposition = service_.requests(Call::store).back().field("Content-Disposition");
    EXPECT_EQ(disposition->starts_with("inline;"), linkType == SessionLinkType::directLink);
  }
}

TEST_F(SessionControllerTest, FilesThatCannotBeAnnouncedAreNamedAndEndTheRunBeforeAnyRequest) {
  const URL good = file("good", "x");
  const URL missing = URL::fileURL(folder_ / "missing");
  const URL pipe = URL::fileURL(folder_ / "pipe");
  ASSERT_EQ(::mkfifo(pipe.path().c_str(), 0600), 0);
  const URL unreadable = URL::fileURL("/proc/self/mem");  // opens
  const std::tuple<std::vector<URL>, const char*, std::vector<std::size_t>> rows[] = {
      {{missing, good, pipe}, "fingerprintFailure", {0, 2}},
      {{good, URL::fileURL(folder_.path())}, "fingerprintFailure", {1}},
      {{unreadable, good, URL::fileURL("/dev/zero")}, "fingerprintFailure", {0, 2}},
      {{good, good}, "fingerprintFailure", {}},
      {{file("caf\xE9", "no UTF-8")}, "invalidFile", {}},
  };
  for (const auto& [urls, error, badIndices] : rows) {
    SCOPED_TRACE(urls[0].path());
    Host host(urls);
    ASSERT_TRUE(host.shareToEnd());
    EXPECT_EQ(host.events, Lines{error});
    std::vector<SessionActivity::File> badFiles;
    for (const std::size_t index : badIndices) badFiles.push_back({index, urls[index]});
    EXPECT_EQ(host.controller->activity().filesWithoutFingerprint, badFiles);
  }
  EXPECT_EQ(service_.calls(), Lines());
  EXPECT_EQ(RecordingLogger::lines().at(1),
            "error createSession(sessionCreation:completion:): Failed to create "
            "fingerprints, stopping now");
}

TEST_F(SessionControllerTest, AFailureEndsTheRunWithOneErrorOfItsOwnForEachStep) {
  const auto session = [](const std::string& items) {
    return Reply::json(R"({"id":"s","url":"https://q.example","items":[)" + items + "]}");
  };
  const std::string item = R"({"id":"item-1","is_uploaded":false,"fingerprint":""})";
  const Reply threeItems = session(item + "," + item + "," + item);
  const Reply refusal = {.status = 403,
                         .body = "<E><Code>AccessDenied</Code><Message>No</Message></E>"};
  const struct {
    int fileCount;
    Call call;
    Reply reply;
    const char* error;
    const char* activity;
    bool isUnanswered = false;
  } rows[] = {
      {0, Call::unknown, {}, "missingItems", "failed in creating"},
      {2, Call::createSession, gone_, "webservice: status 410: Gone", "failed in creating"},
      {2, Call::createSession, Reply::empty(502), "invalidResponse", "failed in creating"},
      {2, Call::createSession, session(""), "missingItems", "failed in creating"},
      {2, Call::createSession, threeItems, "invalidResponse", "failed in creating"},
      // The service is sent an empty token. Its refusal is wrapped as it is, unlike others.
      {1, Call::createSession, session(item),
       "underlying: the service refused with status 403: wrong token", "failed in requesting 0"},
      {2, Call::store, refusal, "aws: AccessDenied: No", "failed in uploading 1"},
      {2, Call::store, Reply::none(), "invalidResponse", "failed in uploading 1", true},
      {2, Call::finalize, gone_, "webservice: status 410: Gone", "failed in finalizing 1"},
      {2, Call::finalize, Reply::empty(502), "invalidResponse", "failed in finalizing 1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.error << ", " << row.activity);
    if (row.call != Call::unknown) service_.answer(row.call, row.reply);
    Host host(files(row.fileCount));
    host.onEnd = [&] {
      EXPECT_EQ(textOf(host.controller->activity()), row.activity);
      EXPECT_EQ(host.controller->activity().transportError != nullptr, row.isUnanswered);
    };
    ASSERT_TRUE(host.shareToEnd());
    const bool isCreated = row.call != Call::createSession || row.reply.status == 200;
    EXPECT_EQ(host.events, isCreated ? (Lines{"session", row.error}) : Lines{row.error});
    const SessionActivity& activity = host.controller->activity();
    EXPECT_EQ(activity.finishedFileCount, 0U);
    EXPECT_EQ(RecordingLogger::lastLine().starts_with("error "), activity.file.has_value());
    EXPECT_EQ(service_.requests(Call::finalize).empty(), row.call != Call::finalize);
    service_.setHook(row.call, nullptr);
  }
}

TEST_F(SessionControllerTest, AnAnnouncedFileMayShrinkOrVanish) {
  for (const bool vanishes : {false, true}) {
    const URL changing = file("changing", "content");
    Host host({changing});
    host.onSession = [&] {
      if (vanishes) return std::filesystem::remove(changing.path()), void();
      std::filesystem::resize_file(changing.path(), 3);
    };
    ASSERT_TRUE(host.shareToEnd());
    EXPECT_EQ(host.events, (Lines{"session", vanishes ? "invalidFile" : "done"}));
  }
  EXPECT_EQ(service_.requests(Call::store).size(), 1U);
}

TEST_F(SessionControllerTest, SendsAnEntityTagAsItIsAndLogsItInOneLine) {
  const std::string tag = "\"a\u0085b\u202E\"";
  service_.answer(Call::store, {.headerFields = {{"ETag", tag}}});
  Host host(files(1));
  ASSERT_TRUE(host.shareToEnd());
  const auto sent = nlohmann::json::parse(service_.requests(Call::finalize).at(0).body);
  EXPECT_EQ(sent["etag"], tag);
  EXPECT_EQ(RecordingLogger::lines().at(5),
            "debug finalizeUpload(etag:): Finalizing upload with etag: \"a b \"");
}

TEST_F(SessionControllerTest, NothingSecretIsEverLogged) {
  for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
    for (const auto& reply : {Reply::none(), Reply::empty(500), Reply::redirect(303, "http://a b"),
                              Reply::json(R"({"url":"file:///etc/passwd?signature=secret"})")}) {
      service_.answer(call, reply);
      Host host(files(1));
      ASSERT_TRUE(host.shareToEnd());
    }
    service_.setHook(call, nullptr);
  }
  for (const std::string& line : RecordingLogger::lines()) {
    EXPECT_FALSE(line.contains("secret") || line.contains(FakeService::token)) << line;
  }
}

}  // namespace
}  // namespace quillbay::test
