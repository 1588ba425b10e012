#include "hosts/cli/TerminalProgress.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
  const std::vector<std::pair<std::size_t, std::string>> rows = {
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

host::TransferEstimate::Clock::time_point at(double secondCount) {
  return host::TransferEstimate::Clock::time_point(
      std::chrono::duration_cast<host::TransferEstimate::Clock::duration>(
          std::chrono::duration<double>(secondCount)));
}

TEST(TransferEstimate, aSmallFileIsASmallPartOfTheWork) {
  host::TransferEstimate estimate(1'000'001'000, 2, at(0));
  estimate.update(1000, 1, at(1));
  EXPECT_LT(estimate.fraction(), 0.01);
  estimate.update(500'000'000, 1, at(2));
  EXPECT_NEAR(estimate.fraction(), 0.5, 0.01);
  estimate.update(1'000'001'000, 2, at(3));
  EXPECT_DOUBLE_EQ(estimate.fraction(), 1);
}

TEST(TransferEstimate, theRemainingTimeFollowsTheSpeedOfTheLastSeconds) {
  host::TransferEstimate estimate(100'000'000, 1, at(0));
  EXPECT_EQ(estimate.remaining(), std::nullopt);
  for (unsigned step = 1; step <= 100; ++step) estimate.update(step * 100'000U, 0, at(step * 0.1));
  EXPECT_NEAR(static_cast<double>(estimate.remaining()->count()), 90, 2);
  EXPECT_NEAR(estimate.speed(), 1e6, 2e4);
  for (int step = 1; step <= 300; ++step) estimate.update(10'000'000, 0, at(10 + (step * 0.1)));
  EXPECT_GT(estimate.remaining()->count(), 900);
}

}  // namespace
}  // namespace quillbay::cli
