#include "hosts/common/FolderArchive.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "TemporaryFolder.h"
#include "Waiting.h"
#include "hosts/common/PrivateFolder.h"

namespace quillbay::test {
namespace {

namespace fs = std::filesystem;
using host::FolderPacking;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t kLargeByteCount = 64 * 1024 * 1024;

class FolderArchiveTest : public testing::Test {
 protected:
  FolderArchiveTest() { fs::create_directory(archives_); }

  void start(const std::vector<std::string>& folders) {
    result_.reset();
    packing_.emplace(folders, archives_,
                     [this](FolderPacking::Result result) { result_ = std::move(result); });
  }
  void pack(const std::vector<std::string>& folders) {
    start(folders);
    finish();
  }
  void finish() {
    ASSERT_TRUE(waitUntil([this] { return result_.has_value(); }));
  }
  /// Once the packing is in the middle of a large file.
  void startLarge() {
    folder_.writeSparse("docs/large", kLargeByteCount);
    start({folder_ / "docs"});
    ASSERT_TRUE(waitUntil([this] { return packing_->progress().packedByteCount > 0; }));
  }

  const TemporaryFolder folder_;
  const bool hasFolder_ = fs::create_directories(folder_ / "docs/sub/empty");
  const fs::path archives_ = folder_ / "docs/archives";
  std::optional<FolderPacking::Result> result_;
  std::optional<FolderPacking> packing_;
};

TEST_F(FolderArchiveTest, HoldsWhatTheFolderHolds) {
  const fs::path script = folder_.write("docs/sub/Größe 🎈.sh", "#!/bin/sh");
  const std::string pattern = patternedBytes(300'000);
  folder_.write("docs/pattern", pattern);
  folder_.write("docs/none", "");
  fs::permissions(script, fs::perms::owner_all);
  const auto longAgo = fs::last_write_time(script) - std::chrono::years(20);
  fs::last_write_time(script, longAgo);
  fs::last_write_time(folder_ / "docs/sub", longAgo);
  fs::create_symlink("/etc", folder_ / "docs/link");
  ASSERT_EQ(::mkfifo((folder_ / "docs/pipe").c_str(), 0600), 0);
  fs::create_directories(folder_ / "other/docs");

  pack({folder_ / "docs/", folder_ / "other/docs/."});
  ASSERT_TRUE(*result_) << result_->error();
  const auto& archives = **result_;
  EXPECT_THAT(archives[0].omissions, ElementsAre(HasSubstr("/docs/link' is a symbolic link"),
                                                 HasSubstr("/docs/pipe' is a pipe")));
  EXPECT_TRUE(archives[0].path.ends_with("/docs.zip"));
  EXPECT_TRUE(archives[1].path.ends_with("/docs.zip"));
  EXPECT_EQ(packing_->progress().folderIndex, 1U);

  // Its head of 30 bytes precedes the name; bit 11 of the flags at offset 6 means UTF-8.
  const std::string bytes = readFile(archives[0].path);
  EXPECT_TRUE(bytes.at(bytes.find("docs/sub/Gr") - 30 + 7) & 0x08);
  const std::map<std::string, std::string> contents{{"docs", "folder"},
                                                    {"docs/none", ""},
                                                    {"docs/pattern", pattern},
                                                    {"docs/sub", "folder"},
                                                    {"docs/sub/Größe 🎈.sh", "#!/bin/sh"},
                                                    {"docs/sub/empty", "folder"}};
  EXPECT_EQ(folder_.unzip(archives[0].path), contents);
  for (const char* name : {"docs/sub", "docs/sub/Größe 🎈.sh"}) {
    // The format counts whole seconds.
    EXPECT_LT(std::chrono::abs(longAgo - fs::last_write_time(folder_ / "unzipped" / name)),
              std::chrono::seconds(1));
  }
  EXPECT_EQ(fs::status(folder_ / "unzipped/docs/sub/Größe 🎈.sh").permissions(),
            fs::perms::owner_all);
}

TEST_F(FolderArchiveTest, WhatCannotBePackedIsNamed) {
  folder_.write("file", "");
  fs::create_directory(folder_ / "bad");
  folder_.write("bad/name\xff", "");
  const std::pair<const char*, const char*> rows[] = {
      {"missing", "missing': No such file"},
      {"file", "file': Not a directory"},
      {"bad", "bad/name\\xff': the name is not UTF-8"}};
  for (const auto& [folder, reason] : rows) {
    pack({folder_ / folder});
    ASSERT_FALSE(*result_) << folder;
    EXPECT_THAT(result_->error(), HasSubstr(reason));
    fs::remove_all(archives_ / "0");
  }
}

TEST_F(FolderArchiveTest, AFileThatChangesMeanwhileEndsThePacking) {
  folder_.write("docs/z", "content");
  startLarge();
  EXPECT_EQ(packing_->progress().totalByteCount, kLargeByteCount + 7);
  folder_.write("docs/z", "changed content");
  finish();
  ASSERT_FALSE(*result_);
  EXPECT_THAT(result_->error(), HasSubstr("docs/z' changed while it was being packed"));
}

TEST_F(FolderArchiveTest, DestroyingItStopsIt) {
  startLarge();
  packing_.reset();
  drainMainQueue();
  EXPECT_FALSE(result_);
  EXPECT_TRUE(folder_.unzip(archives_ / "0/docs.zip").empty()) << "it was packed to the end";
}

TEST(PrivateFolder, IsForThisUserAloneAndGoesAway) {
  const TemporaryFolder place;
  ::setenv("TMPDIR", place.path().c_str(), 1);
  fs::path path;
  {
    host::PrivateFolder folder;
    EXPECT_TRUE(fs::is_empty(place.path()));
    path = folder.path();
    EXPECT_EQ(folder.path(), path);
    EXPECT_EQ(path.parent_path(), place.path());
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
    fs::create_directories(path / "a/b");
  }
  EXPECT_FALSE(fs::exists(path));
  ::unsetenv("TMPDIR");
}

}  // namespace
}  // namespace quillbay::test
