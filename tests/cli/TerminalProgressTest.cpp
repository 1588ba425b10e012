#include "hosts/cli/TerminalProgress.h"

#include <gtest/gtest.h>

namespace quillbay::cli {
namespace {

using std::chrono::seconds;

const UploadLine kLine{.fraction = 0.4299,
                       .filesDone = 3,
                       .fileCount = 7,
                       .file = "a-name-of-more-than-twenty.jpg",
                       .byteCount = 1'200'000,
                       .totalByteCount = 3'400'000,
                       .speed = 12'300'000,
                       .elapsed = seconds(12),
                       .remaining = seconds(17)};

TEST(UploadLine, givesUpItsPiecesOneByOneAsTheTerminalNarrows) {
  const std::pair<std::size_t, std::string> rows[] = {
      {120,
       " 42 %  [#########............]  3 of 7 files  a-name-of-more-th...  1.2 MB of 3.4 MB  "
       "12.3 MB/s  0:12 elapsed  0:17 left"},
      {79, " 42 %  [#####.......]  3 of 7 files  a-name-of-more-th...  12.3 MB/s  0:17 left"},
      {56, " 42 %  [#########.............]  3 of 7 files  0:17 left"},
      {33, " 42 %  [####......]  3 of 7 files"},
      {20, " 42 %  [####.......]"},
      {10, " 42 %"},
      {3, ""},
  };
  for (const auto& [columnCount, text] : rows) {
    EXPECT_EQ(kLine.text({.columnCount = columnCount}), text);
    EXPECT_LE(text.size(), columnCount);
  }
}

}  // namespace
}  // namespace quillbay::cli
