// WHEN of --expires: counts and instants.
#include <fuzz/support/Expect.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <string>

#include "hosts/cli/ExpirationArgument.h"
#include "hosts/common/PlainText.h"

using namespace quillbay;
using fuzz::expect;
using platform::Date;

namespace {

constexpr double firstSecondOfYear10000 = 253'402'300'800;

double seconds(Date date) { return platform::secondsSince1970(date); }

/// The seconds of "2030-01-31T18:00:00+01:00" by the system's calendar; fractions are cut off.
std::optional<double> secondsOfInstant(const std::string& text) {
  std::tm time{};
  int length = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2d%*1[Tt ]%2d:%2d:%2d%n", &time.tm_year, &time.tm_mon,
                  &time.tm_mday, &time.tm_hour, &time.tm_min, &time.tm_sec, &length) != 6) {
    return std::nullopt;
  }
  time.tm_year -= 1900;
  time.tm_mon -= 1;
  const std::size_t offset = text.find_first_of("Zz+-", static_cast<std::size_t>(length));
  int hours = 0;
  int minutes = 0;
  if (offset == std::string::npos) return std::nullopt;
  std::sscanf(text.c_str() + offset + 1, "%2d:%2d", &hours, &minutes);
  const int sign = text[offset] == '-' ? -1 : 1;
  return static_cast<double>(::timegm(&time)) - sign * (hours * 60 + minutes) * 60;
}

/// "30m", "12h" or "7d": the seconds it adds. Months are left to the calendar.
std::optional<double> secondsOfCount(const std::string& text) {
  double count = 0;
  char unit = 0;
  int length = 0;
  if (std::sscanf(text.c_str(), "%lf%c%n", &count, &unit, &length) != 2 ||
      static_cast<std::size_t>(length) != text.size())
    return std::nullopt;
  if (unit == 'm') return count * 60;
  if (unit == 'h') return count * 3600;
  return unit == 'd' ? std::optional(count * 86'400) : std::nullopt;
}

void expectAsWritten(const std::string& text, Date date, Date now) {
  if (const auto added = secondsOfCount(text)) {
    expect(std::abs(seconds(now) + *added - seconds(date)) < 0.001, "a count is added to now");
    return;
  }
  if (text.ends_with("mo")) {
    const double average = std::stod(text) * 30.436875 * 86'400;
    expect(std::abs(seconds(now) + average - seconds(date)) < 4 * 86'400,
           "months are added to now");
    return;
  }
  const auto instant = secondsOfInstant(text);
  expect(instant && seconds(date) >= *instant && seconds(date) - *instant <= 1,
         "an instant is the one that is written");
  const bool isLeapSecond = text.substr(17, 2) == "60";
  expect(!isLeapSecond || std::fmod(*instant, 86'400) == 0, "a leap second ends a day");
}

void expectAccepted(const std::string& text, Date date, Date now) {
  expect(std::isfinite(seconds(date)), "a date is finite");
  expect(date > now && seconds(date) < firstSecondOfYear10000, "a date is to come");
  expectAsWritten(text, date, now);
  const auto printed = cli::rfc3339Text(date);
  expect(printed.has_value(), "what is accepted can be printed");
  const Date wholeSecond = platform::dateFromSecondsSince1970(std::floor(seconds(date)));
  const auto again = cli::parseExpiration(*printed, now);
  if (wholeSecond > now) expect(again && *again == wholeSecond, "what is printed is accepted");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  FuzzedDataProvider input(bytes, byteCount);
  const double now = input.ConsumeFloatingPointInRange(0.0, firstSecondOfYear10000 + 1e6);
  const Date nowDate = platform::dateFromSecondsSince1970(now);
  // An argument ends at its first zero byte.
  const std::string text = input.ConsumeRemainingBytesAsString().c_str();
  const auto date = cli::parseExpiration(text, nowDate);
  if (!date) {
    expect(host::plainLine(date.error()) == date.error() || text.size() > 80,
           "a refusal is one plain line");
    return 0;
  }
  expect(date->has_value() == (text != "never"), "only never is never");
  if (*date) expectAccepted(text, **date, nowDate);
  return 0;
}
