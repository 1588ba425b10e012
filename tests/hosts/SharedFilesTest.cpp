#include "hosts/common/SharedFiles.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace quillbay::host {
namespace {

TEST(SharedFiles, tellsWhatBecameOfTheFileThatIsBeingUploaded) {
  const test::TemporaryFolder folder;
  const std::string file = folder / "file";
  cloud::SessionActivity activity;
  activity.file = {.index = 2, .url = platform::URL::fileURL(file)};
  const std::pair<FileChange, std::function<void()>> rows[] = {
      {FileChange::none, [] {}},
      {FileChange::grew, [&] { folder.write("file", "123456"); }},
      {FileChange::shrank, [&] { folder.write("file", ""); }},
      {FileChange::overwritten, [&] { folder.write("file", "54321"); }},
      {FileChange::vanished, [&] { std::filesystem::remove(file); }},
  };
  for (const auto& [change, act] : rows) {
    folder.write("file", "12345");
    std::filesystem::last_write_time(file, std::filesystem::file_time_type());
    const SharedFiles files({folder / "a", folder / "b", file, folder / "done"});
    act();
    EXPECT_EQ(files.suspect(activity)->index, 2U);
    EXPECT_EQ(files.suspect(activity)->change, change);
  }
}

}  // namespace
}  // namespace quillbay::host
