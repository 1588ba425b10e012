#include "hosts/cli/ExpirationArgument.h"

#include <gtest/gtest.h>

namespace quillbay::cli {
namespace {

// 2024-01-31T12:00:00Z.
const platform::Date kNow = platform::dateFromSecondsSince1970(1'706'702'400);

/// The instant in UTC, "never", or why there is none.
std::string outcome(const char* text) {
  const auto date = parseExpiration(text, kNow);
  if (!date) return date.error();
  return *date ? rfc3339Text(**date).value_or("unwritable") : "never";
}

TEST(ExpirationArgument, isAnInstantToComeOrARefusalThatSaysWhy) {
  // Of a refusal it is a part of the reason.
  const std::pair<const char*, const char*> rows[] = {
      {"never", "never"},
      {"30m", "2024-01-31T12:30:00Z"},
      {"12h", "2024-02-01T00:00:00Z"},
      {"7d", "2024-02-07T12:00:00Z"},
      {"1mo", "2024-02-29T12:00:00Z"},
      {"95711mo", "9999-12-31T12:00:00Z"},
      {"3M", "is no time"},
      {"1.5h", "is no time"},
      {"0d", "at least 1"},
      {"-5m", "in the past"},
      {"99999999999999999999m", "beyond the year 9999"},
      {"2147483648m", "is too large a number"},
      {"2147483647h", "beyond the year 9999"},
      {"95712mo", "beyond the year 9999"},
      {"2147483647mo", "beyond the year 9999"},
      {"2024-02-01T00:00:01Z", "2024-02-01T00:00:01Z"},
      {"2024-02-01t00:00:01z", "2024-02-01T00:00:01Z"},
      {"2024-02-01 00:00:01Z", "2024-02-01T00:00:01Z"},
      {"2024-02-01T00:30:00+01:00", "2024-01-31T23:30:00Z"},
      {"2024-02-01T00:00:00-23:59", "2024-02-01T23:59:00Z"},
      {"2030-07-01T01:59:60+02:00", "2030-07-01T00:00:00Z"},
      {"2030-01-01T12:00:60Z", "is no time"},
      {"9999-12-31T23:59:59Z", "9999-12-31T23:59:59Z"},
      {"9999-12-31T23:59:59-01:00", "beyond the year 9999"},
      {"2024-01-31T13:00:00+01:00", "in the past"},
      {"2030-01-01T00:00:00", "is no time"},
      {"2030-01-01T00:00:00+24:00", "is no time"},
      {"2030-02-29T00:00:00Z", "is no time"},
      {"2030-01-01T24:00:00Z", "is no time"},
      {"2030-01-01T00:00:00.Z", "is no time"},
      {"2030-01-01T00:00:00Z ", "is no time"},
      {"", "is no time"},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_TRUE(outcome(text).contains(expected)) << text << ": " << outcome(text);
  }
  EXPECT_DOUBLE_EQ(platform::secondsSince1970(**parseExpiration("2024-02-01T00:00:01.250Z", kNow)),
                   1'706'745'601.25);
}

}  // namespace
}  // namespace quillbay::cli
