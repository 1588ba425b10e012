#include "hosts/common/History.h"

#include <QuillbayPlatform/JSONDecoder.h>
#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <limits>
#include <thread>

#include "TemporaryFolder.h"

namespace quillbay::test {
namespace {

namespace fs = std::filesystem;
using host::History;
using host::RememberedFile;
using host::RememberedShare;
using State = RememberedShare::State;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;

cloud::Session session(const std::string& identifier, const std::string& expiration = "null") {
  const std::string text = R"({"id":")" + identifier + R"(","token":"secret","url":"https://q/)" +
                           identifier + R"(","title":"T","expiration":)" + expiration +
                           R"(,"items":[{"id":"1","is_uploaded":false,"fingerprint":"f"}]})";
  return platform::JSONDecoder().decode<cloud::Session>(text).value();
}

platform::Date instant(double seconds) { return platform::dateFromSecondsSince1970(seconds); }

class HistoryTest : public testing::Test {
 protected:
  std::int64_t add(History& history, const std::string& identifier, double created = 0,
                   const std::string& expiration = "null") const {
    return history.add("host-1", session(identifier, expiration),
                       cloud::SessionLinkType::directLink, files_, instant(created));
  }
  std::vector<std::string> identifiers(History& history) const {
    std::vector<std::string> found;
    for (const auto& share : history.shares()) found.push_back(share.session.identifier());
    return found;
  }

  const TemporaryFolder folder_;
  const fs::path file_ = folder_ / "state/quillbay/history.sqlite";
  const std::vector<RememberedFile> files_ = {{"/a/b\xFF", 5, false}, {"/c", 7, false}};
};

TEST_F(HistoryTest, RemembersAShareAndWhatBecomesOfIt) {
  std::int64_t identifier = 0;
  {
    History history(file_);
    identifier = add(history, "s1", 12.5, "1767225600");
    history.noteArrivals(identifier, std::vector<std::size_t>{1});
    ASSERT_EQ(history.newest()->state, State::uploading);
    history.setState(identifier, State::unfinished);
  }
  History history(file_);
  const auto share = history.find("https://q/s1");
  ASSERT_TRUE(share) << history.problem().value_or("");
  EXPECT_THAT(*share,
              FieldsAre(identifier, instant(12.5), "host-1", session("s1", "1767225600"),
                        cloud::SessionLinkType::directLink, State::unfinished, 2U, 1U, 12U));
  EXPECT_THAT(history.files(identifier), ElementsAre(files_[0], RememberedFile{"/c", 7, true}));
}

TEST_F(HistoryTest, FindsByLinkOrSessionAndForgets) {
  History history(file_);
  add(history, "old", 1, "100");
  add(history, "new", 2, "300");
  add(history, "endless", 3);
  EXPECT_THAT(identifiers(history), ElementsAre("endless", "new", "old"));
  EXPECT_EQ(history.newest()->session.identifier(), "endless");
  EXPECT_EQ(history.find("new")->session.identifier(), "new");
  EXPECT_FALSE(history.find("ne"));
  history.setState(add(history, "gone", 4), State::deleted);
  EXPECT_EQ(history.forgetExpired(instant(200)), 2U);
  history.forget(history.find("new")->identifier);
  EXPECT_THAT(identifiers(history), ElementsAre("endless"));
  EXPECT_FALSE(history.problem());
}

TEST_F(HistoryTest, ReadsSharesBesideThoseThatOthersHaveDamaged) {
  History history(file_);
  add(history, "sound", 1);
  const std::int64_t wild = add(history, "wild", 2);
  add(history, "unreadable", 3);
  SQLite::Database(file_, SQLite::OPEN_READWRITE)
      .exec(
          "UPDATE file SET byte_count = 9e18, has_arrived = 4294967296 WHERE share = 2;"
          "UPDATE share SET record = x'00' WHERE id = 3");
  ASSERT_THAT(identifiers(history), ElementsAre("wild", "sound"));
  ASSERT_TRUE(history.newest());
  EXPECT_EQ(history.newest()->identifier, wild);
  EXPECT_EQ(history.newest()->byteCount, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(history.newest()->arrivedFileCount, 2U);
  EXPECT_TRUE(history.files(wild)[1].hasArrived);
  EXPECT_FALSE(history.problem()) << history.problem().value_or("");
}

TEST_F(HistoryTest, OneProcessAtATimeUploadsAShare) {
  History history(file_);
  const std::int64_t identifier = add(history, "s1");
  EXPECT_FALSE(History(file_).claim(identifier)) << "this process uploads it";
  history.setState(identifier, State::unfinished);
  EXPECT_TRUE(history.claim(identifier));
  EXPECT_EQ(history.newest()->state, State::uploading);
  EXPECT_FALSE(history.claim(identifier));
  EXPECT_FALSE(history.claim(99));
  EXPECT_FALSE(history.problem()) << history.problem().value_or("");
}

TEST_F(HistoryTest, IsForTheUserAloneWhateverWasThereBefore) {
  fs::create_directories(file_.parent_path());
  folder_.write(file_, "");
  for (const auto& path : {file_, file_.parent_path()}) fs::permissions(path, fs::perms(0777));
  History history(file_);
  add(history, "s1");
  EXPECT_EQ(fs::status(file_.parent_path()).permissions(), fs::perms(0700));
  for (const auto& entry : fs::directory_iterator(file_.parent_path())) {
    EXPECT_EQ(entry.status().permissions(), fs::perms(0600)) << entry;
  }
}

TEST_F(HistoryTest, OneThatCannotBeUsedSaysWhyAndDoesNothing) {
  fs::create_directories(folder_ / "corrupt");
  const fs::path corrupt = folder_.write("corrupt/history.sqlite", "no database");
  const fs::path link = folder_ / "link.sqlite";
  fs::create_symlink(corrupt, link);
  const std::pair<std::optional<fs::path>, const char*> rows[] = {
      {std::nullopt, "XDG_STATE_HOME"},
      {corrupt, "not a database"},
      {"/proc/quillbay/history.sqlite", "/proc/quillbay"},
      {link, "symbolic links"},
      {folder_ / "corrupt/history.sqlite/x/y", "Not a directory"},
  };
  for (const auto& [file, reason] : rows) {
    History history(file);
    EXPECT_THAT(history.problem().value_or("no problem"), HasSubstr(reason));
    EXPECT_EQ(add(history, "s1"), 0);
    EXPECT_TRUE(history.shares().empty());
  }
}

TEST_F(HistoryTest, LeavesADatabaseOfANewerVersionAlone) {
  History{file_};
  SQLite::Database(file_, SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 99");
  History history(file_);
  EXPECT_THAT(history.problem().value_or(""), HasSubstr("newer version"));
}

/// Adds shares until it is killed.
void addForEver(const fs::path& file, const std::vector<RememberedFile>& files) {
  History history(file);
  for (int number = 0; !history.problem(); ++number) {
    const auto identifier = history.add("host-1", session("s" + std::to_string(number)),
                                        cloud::SessionLinkType::page, files, instant(number));
    history.noteArrivals(identifier, std::vector<std::size_t>{0});
    // One that never pauses keeps the others from SQLite's lock beyond any limit.
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ::_exit(1);
}

TEST_F(HistoryTest, SurvivesTwoProcessesThatAreKilledAtAnyWrite) {
  for (int round = 0; round < 10; ++round) {
    pid_t children[2] = {};
    for (pid_t& child : children) {
      child = ::fork();
      if (child == 0) addForEver(file_, files_);
    }
    History history(file_);
    const std::size_t before = history.shares().size();
    while (!history.problem() && history.shares().size() < before + 20U) {
    }
    for (const pid_t child : children) {
      ::kill(child, SIGKILL);
      int status = 0;
      ::waitpid(child, &status, 0);
      EXPECT_TRUE(WIFSIGNALED(status)) << "a process met a problem of its own";
    }
    for (const auto& share : history.shares()) {
      ASSERT_EQ(share.fileCount, 2U) << "half of a share is remembered";
      ASSERT_EQ(share.state, State::unfinished) << "its process is gone";
    }
    EXPECT_FALSE(history.problem()) << history.problem().value_or("");
  }
}

TEST(History, StandsWhereTheUsersStateBelongs) {
  const auto fileFor = [](const char* state, const char* home) {
    return History::standardFile([=](std::string_view name) -> std::optional<std::string> {
      const char* value = name == "XDG_STATE_HOME" ? state : name == "HOME" ? home : nullptr;
      return value == nullptr ? std::nullopt : std::optional<std::string>(value);
    });
  };
  EXPECT_EQ(fileFor("/s", "/h"), "/s/quillbay/history.sqlite");
  EXPECT_EQ(fileFor("relative", "/h"), "/h/.local/state/quillbay/history.sqlite");
  EXPECT_EQ(fileFor(nullptr, ""), std::nullopt);
}

}  // namespace
}  // namespace quillbay::test
