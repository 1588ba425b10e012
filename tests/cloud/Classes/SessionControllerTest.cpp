#include <QuillbayCloud/Classes/SessionController.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "CloudTesting.h"
#include "FakeService.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::SessionLinkType;
using platform::URL;
using Call = FakeService::Call;
using Lines = std::vector<std::string>;

class SessionControllerTest : public testing::Test {
 protected:
  SessionControllerTest() {
    service_.install();
    RecordingLogger::install();
  }

  std::vector<URL> files(int count) const {
    std::vector<URL> urls;
    for (int i = 1; i <= count; ++i) urls.push_back(file(i));
    return urls;
  }
  URL file(int number) const {
    const auto name = "file-" + std::to_string(number);
    return URL::fileURL(folder_.write(name, "content of " + name));
  }

  const TemporaryFolder folder_;
  FakeService service_;
};

TEST_F(SessionControllerTest, UploadsTheLastItemFirstOneAtATimeFromItsOwnFile) {
  Host host(files(3));
  host.onSession = [&] { EXPECT_EQ(service_.calls(), Lines{"create"}); };
  host.share();
  EXPECT_EQ(host.events, Lines());
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, (Lines{"session", "done"}));
  EXPECT_EQ(host.sessions.at(0), host.sessions.at(1));
  EXPECT_EQ(service_.calls(),
            (Lines{"create", "upload_url item-3", "store item-3", "finalize item-3",
                   "upload_url item-2", "store item-2", "finalize item-2", "upload_url item-1",
                   "store item-1", "finalize item-1"}));
  for (const char* number : {"1", "2", "3"}) {
    EXPECT_EQ(service_.storedBytes(std::string("item-") + number),
              std::string("content of file-") + number);
  }
  for (const char* line : {"Creating fingerprints...",
                           "Finished creating fingerprints, proceeding to create session..."}) {
    EXPECT_TRUE(RecordingLogger::hasLine(
        std::string("debug createSession(sessionCreation:completion:): ") + line));
  }
  EXPECT_EQ(RecordingLogger::lines().back(),
            "debug uploadNextItem(): No more uploads left, we are done");
}

TEST_F(SessionControllerTest, AnnouncesEveryFileWithItsFingerprint) {
  Host host({URL::fileURL(folder_.write("empty.png", ""))});
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(nlohmann::json::parse(service_.requests(Call::createSession).at(0).body),
            nlohmann::json::parse(R"({"config":{"link_type":"page"},"items":[{
                "file_name":"empty.png","content_length":"0","content_type":"image/png",
                "f":"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"}]})"));
}

TEST_F(SessionControllerTest, OnlyADirectLinkIsUploadedForInlineDisplay) {
  for (const auto linkType : SessionLinkType::allCases) {
    Host host(files(1), {std::nullopt, std::nullopt, linkType, std::nullopt, false});
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    const auto disposition = service_.requests(Call::store).back().field("Content-Disposition");
    EXPECT_EQ(disposition->starts_with("inline;"), linkType == SessionLinkType::directLink)
        << linkType.rawValue();
  }
}

TEST_F(SessionControllerTest, ProgressGoesFromZeroToOneAndNeverBack) {
  auto urls = files(2);
  urls.push_back(URL::fileURL(folder_.writePattern("large", 3'000'000)));
  urls.push_back(URL::fileURL(folder_.write("empty", "")));
  Host host(urls);
  const auto& progress = host.controller->progress();
  EXPECT_EQ(progress->totalUnitCount(), 400);
  std::vector<double> fractions;
  const auto observation =
      progress->observe([&](const auto& p) { fractions.push_back(p.fractionCompleted()); });
  host.onSession = [&] { EXPECT_EQ(progress->fractionCompleted(), 0); };
  host.onEnd = [&] { EXPECT_EQ(progress->fractionCompleted(), 1); };
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  drainMainQueue();
  EXPECT_TRUE(std::ranges::is_sorted(fractions));
  ASSERT_FALSE(fractions.empty());
  EXPECT_EQ(fractions.back(), 1);
}

TEST_F(SessionControllerTest, NoFilesCreateASessionAndEndWithMissingItems) {
  Host host({});
  EXPECT_EQ(host.controller->progress()->totalUnitCount(), 0);
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, (Lines{"session", "missingItems"}));
}

TEST_F(SessionControllerTest, FilesWithoutFingerprintEndTheRunBeforeAnyRequest) {
  const auto pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const URL& bad : {URL::fileURL(folder_ / "missing"), URL::fileURL(pipe), file(1)}) {
    Host host({file(1), bad});
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.events, Lines{"fingerprintFailure"}) << bad.path();
  }
  EXPECT_EQ(service_.calls(), Lines());
  EXPECT_EQ(RecordingLogger::lines().back(),
            "error createSession(sessionCreation:completion:): Failed to create fingerprints, "
            "stopping now");
}

TEST_F(SessionControllerTest, AFileNameThatIsNoUTF8IsAnInvalidFile) {
  Host host({URL::fileURL(folder_.write("caf\xE9", "x"))});
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, Lines{"invalidFile"});
  EXPECT_EQ(service_.calls(), Lines());
}

struct Failure {
  const char* name;
  Call call;
  Reply reply;
  Lines events;
  std::size_t callCount;
};

const Reply kGone = Reply::json(R"({"message":"Gone","status":410})", 410);
const Reply kFourItems = Reply::json(R"({"id":"s","url":"https://q.example","items":[
    {"id":"1","is_uploaded":false,"fingerprint":""},
    {"id":"2","is_uploaded":false,"fingerprint":""},
    {"id":"3","is_uploaded":false,"fingerprint":""},
    {"id":"4","is_uploaded":false,"fingerprint":""}]})");
const Failure kFailures[] = {
    {"CreationRefused", Call::createSession, kGone, {"webservice: status 410: Gone"}, 1},
    {"CreationUnreadable", Call::createSession, Reply::empty(502), {"invalidResponse"}, 1},
    {"CreationWithoutSession",
     Call::createSession,
     Reply::json("{}"),
     {"underlying: JSON key id is missing"},
     1},
    {"MoreItemsThanFiles", Call::createSession, kFourItems, {"session", "invalidResponse"}, 1},
    {"NoAddressForTheMiddleItem",
     Call::uploadUrl,
     kGone,
     {"session", "underlying: the service refused with status 410: Gone"},
     5},
    {"MiddleItemRefused", Call::store, Reply::empty(403), {"session", "invalidResponse"}, 6},
    {"MiddleItemNotFinalized",
     Call::finalize,
     kGone,
     {"session", "webservice: status 410: Gone"},
     7},
};

class SessionControllerFailure : public SessionControllerTest,
                                 public testing::WithParamInterface<Failure> {};
INSTANTIATE_TEST_SUITE_P(Rows, SessionControllerFailure, testing::ValuesIn(kFailures), nameOfRow);

TEST_P(SessionControllerFailure, EndsTheRunWithOneError) {
  service_.setHook(GetParam().call, [](const Request& request, const Reply& ordinary) {
    const bool isFirstUpload = request.target().find("item-3") != std::string::npos;
    return isFirstUpload ? ordinary : GetParam().reply;
  });
  Host host(files(3));
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, GetParam().events);
  EXPECT_EQ(service_.calls().size(), GetParam().callCount);
}

struct FileChange {
  const char* name;
  void (*change)(const std::string& path);
  const char* outcome;
};

const FileChange kFileChanges[] = {
    {"Vanishes", [](const auto& path) { ::unlink(path.c_str()); }, "invalidFile"},
    {"BecomesAFolder",
     [](const auto& path) { ::unlink(path.c_str()), ::mkdir(path.c_str(), 0700); }, "invalidFile"},
    {"BecomesAPipe", [](const auto& path) { ::unlink(path.c_str()), ::mkfifo(path.c_str(), 0600); },
     "invalidFile"},
    {"ShrinksAndIsSentAsItIs", [](const auto& path) { std::filesystem::resize_file(path, 3); },
     "done"},
};

class AnAnnouncedFile : public SessionControllerTest,
                        public testing::WithParamInterface<FileChange> {};
INSTANTIATE_TEST_SUITE_P(Rows, AnAnnouncedFile, testing::ValuesIn(kFileChanges), nameOfRow);

TEST_P(AnAnnouncedFile, MayChange) {
  const URL changing = file(1);
  Host host({changing});
  host.onSession = [&] { GetParam().change(changing.path()); };
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, (Lines{"session", GetParam().outcome}));
  EXPECT_EQ(service_.requests(Call::store).empty(), host.events.back() == "invalidFile");
}

}  // namespace
}  // namespace quillbay::test
