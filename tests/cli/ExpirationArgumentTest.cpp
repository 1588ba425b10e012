#include "hosts/cli/ExpirationArgument.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace quillbay::cli {
namespace {

// 2024-01-31T12:00:00Z.
const platform::Date kNow = platform::dateFromSecondsSince1970(1'706'702'400);

struct Accepted {
  const char* name;
  const char* text;
  /// In UTC, whole seconds; "never" for none.
  const char* date;

  friend void PrintTo(const Accepted& row, std::ostream* out) { *out << row.name; }
};

class AcceptedExpiration : public testing::TestWithParam<Accepted> {};

TEST_P(AcceptedExpiration, isThisInstant) {
  const auto date = parseExpiration(GetParam().text, kNow);
  ASSERT_TRUE(date) << date.error();
  EXPECT_EQ(*date ? rfc3339Text(**date) : "never", GetParam().date);
}

INSTANTIATE_TEST_SUITE_P(
    ExpirationArgument, AcceptedExpiration,
    testing::Values(Accepted{"never", "never", "never"},
                    Accepted{"minutes", "30m", "2024-01-31T12:30:00Z"},
                    Accepted{"hours", "12h", "2024-02-01T00:00:00Z"},
                    Accepted{"days", "7d", "2024-02-07T12:00:00Z"},
                    Accepted{"monthsByCalendar", "1mo", "2024-02-29T12:00:00Z"},
                    Accepted{"leadingZeros", "007d", "2024-02-07T12:00:00Z"},
                    Accepted{"farthestMonths", "95711mo", "9999-12-31T12:00:00Z"},
                    Accepted{"utc", "2024-02-01T00:00:01Z", "2024-02-01T00:00:01Z"},
                    Accepted{"lowerCase", "2024-02-01t00:00:01z", "2024-02-01T00:00:01Z"},
                    Accepted{"blank", "2024-02-01 00:00:01Z", "2024-02-01T00:00:01Z"},
                    Accepted{"east", "2024-02-01T00:30:00+01:00", "2024-01-31T23:30:00Z"},
                    Accepted{"west", "2024-02-01T00:00:00-23:59", "2024-02-01T23:59:00Z"},
                    Accepted{"leapDay", "2028-02-29T00:00:00Z", "2028-02-29T00:00:00Z"},
                    Accepted{"leapSecond", "2030-06-30T23:59:60Z", "2030-07-01T00:00:00Z"},
                    Accepted{"leapSecondElsewhere", "2030-07-01T01:59:60+02:00",
                             "2030-07-01T00:00:00Z"},
                    Accepted{"lastInstant", "9999-12-31T23:59:59Z", "9999-12-31T23:59:59Z"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExpirationArgument, fractionsOfASecondAreKept) {
  const auto date = parseExpiration("2024-02-01T00:00:01.250Z", kNow);
  ASSERT_TRUE(date && *date);
  EXPECT_DOUBLE_EQ(platform::secondsSince1970(**date), 1'706'745'601.25);
}

struct Refused {
  const char* name;
  const char* text;
  const char* message;

  friend void PrintTo(const Refused& row, std::ostream* out) { *out << row.name; }
};

class RefusedExpiration : public testing::TestWithParam<Refused> {};

TEST_P(RefusedExpiration, saysWhy) {
  const auto date = parseExpiration(GetParam().text, kNow);
  ASSERT_FALSE(date);
  EXPECT_NE(date.error().find(GetParam().message), std::string::npos) << date.error();
}

INSTANTIATE_TEST_SUITE_P(
    ExpirationArgument, RefusedExpiration,
    testing::Values(Refused{"empty", "", "is no time"}, Refused{"word", "tomorrow", "is no time"},
                    Refused{"noUnit", "30", "is no time"}, Refused{"unit", "3w", "is no time"},
                    Refused{"upperCaseUnit", "3M", "is no time"},
                    Refused{"blankBeforeUnit", "3 d", "is no time"},
                    Refused{"plus", "+3d", "is no time"}, Refused{"half", "1.5h", "is no time"},
                    Refused{"zero", "0d", "at least 1"}, Refused{"negative", "-5m", "in the past"},
                    Refused{"pastInt", "99999999999999999999m", "beyond the year 9999"},
                    Refused{"hoursTooFar", "2147483647h", "beyond the year 9999"},
                    Refused{"monthsTooFar", "95712mo", "beyond the year 9999"},
                    Refused{"monthsPastCalendar", "2147483647mo", "beyond the year 9999"},
                    Refused{"past", "2024-01-31T11:59:59Z", "in the past"},
                    Refused{"now", "2024-01-31T13:00:00+01:00", "in the past"},
                    Refused{"yearByOffset", "9999-12-31T23:59:59-01:00", "beyond the year 9999"},
                    Refused{"noOffset", "2030-01-01T00:00:00", "is no time"},
                    Refused{"dateOnly", "2030-01-01", "is no time"},
                    Refused{"noSuchDay", "2030-02-29T00:00:00Z", "is no time"},
                    Refused{"noSuchMonth", "2030-13-01T00:00:00Z", "is no time"},
                    Refused{"noSuchHour", "2030-01-01T24:00:00Z", "is no time"},
                    Refused{"leapSecondInTheDay", "2030-01-01T12:00:60Z", "is no time"},
                    Refused{"offsetTooFar", "2030-01-01T00:00:00+24:00", "is no time"},
                    Refused{"emptyFraction", "2030-01-01T00:00:00.Z", "is no time"},
                    Refused{"trailing", "2030-01-01T00:00:00Z ", "is no time"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExpirationArgument, datesThatRFC3339CannotWriteHaveNoText) {
  using platform::dateFromSecondsSince1970;
  EXPECT_EQ(rfc3339Text(dateFromSecondsSince1970(-0.5)), "1969-12-31T23:59:59Z");
  EXPECT_EQ(rfc3339Text(dateFromSecondsSince1970(253'402'300'800.0)), std::nullopt);
  EXPECT_EQ(rfc3339Text(dateFromSecondsSince1970(-1e300)), std::nullopt);
}

}  // namespace
}  // namespace quillbay::cli
