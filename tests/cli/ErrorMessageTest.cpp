#include "hosts/cli/ErrorMessage.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace quillbay::cli {
namespace {

using Case = FailureReport::Case;
using Step = host::RunJournal::Step;

struct Row {
  const char* name;
  FailureReport report;
  Step step;
  /// Of the first line.
  const char* line;

  friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

class ShareFailure : public testing::TestWithParam<Row> {};

TEST_P(ShareFailure, saysWhatFailedAndWhyAndWhatToDo) {
  const auto lines = shareFailureLines(GetParam().report, GetParam().step, "'f'");
  EXPECT_EQ(lines.front(), GetParam().line);
  EXPECT_EQ(lines.size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    ErrorMessage, ShareFailure,
    testing::Values(
        Row{"store",
            {.kind = Case::aws, .description = "No \x1b[31mway\n", .code = "AccessDenied"},
            Step::sending,
            "the upload of 'f' failed: the store refused it: No [31mway (AccessDenied)"},
        Row{"storeWithoutMessage",
            {.kind = Case::aws, .description = "", .code = "SlowDown"},
            Step::sending,
            "the upload of 'f' failed: the store refused it (SlowDown)"},
        Row{"service",
            {.kind = Case::webservice, .description = "Sorry", .status = 503},
            Step::finalizing,
            "the upload of 'f' could not be completed: the service refused: Sorry (status 503)"},
        Row{"network",
            {.kind = Case::underlying, .cause = "could not connect"},
            Step::creatingSession,
            "no session was created: could not connect"},
        Row{"address",
            {.kind = Case::underlying, .description = "Nope", .cause = "x"},
            Step::requestingAddress,
            "the upload of 'f' could not begin: Nope"},
        Row{"fingerprint",
            {.kind = Case::fingerprintFailure, .description = "Invalid"},
            Step::fingerprinting,
            "nothing was shared: not every file could be read, or one stands twice in the list"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ErrorMessage, aRefusedDeletionNamesTheSessionAndWhatToCheck) {
  const auto lines = deletionFailureLines(
      {.kind = Case::webservice, .description = "Unknown", .status = 404}, "s\n1");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0],
            "session 's\\x0a1' was not deleted: the service refused: Unknown (status 404)");
  EXPECT_NE(lines[1].find("--instance"), std::string::npos);
}

}  // namespace
}  // namespace quillbay::cli
