#pragma once

#include <QuillbayPlatform/Date.h>
#include <QuillbayPlatform/Export.h>

#include <optional>
#include <vector>

namespace quillbay::core {

/// How long a link is to live: a count of minutes, hours, days or calendar months, or for ever.
/// An immutable value; any thread.
class QUILLBAY_EXPORT DateExpirationOption {
 public:
  /// What is counted.
  enum class Unit {
    minutes,  ///< of 60 seconds
    hours,    ///< of 60 minutes
    days,     ///< of 24 hours
    months,   ///< of the calendar
    never,    ///< without an end
  };

  /// `count` minutes of 60 seconds.
  static constexpr DateExpirationOption minutes(int count) { return {Unit::minutes, count}; }
  /// `count` hours of 60 minutes.
  static constexpr DateExpirationOption hours(int count) { return {Unit::hours, count}; }
  /// `count` days of 24 hours.
  static constexpr DateExpirationOption days(int count) { return {Unit::days, count}; }
  /// `count` months of the calendar; see `date`.
  static constexpr DateExpirationOption months(int count) { return {Unit::months, count}; }
  /// No end.
  static constexpr DateExpirationOption never() { return {Unit::never, 0}; }

  /// What a form offers, shortest first: 30 minutes, 2 hours, 24 hours, 7 days, 30 days, 12 months,
  /// never.
  static std::vector<DateExpirationOption> defaultOptions();

  /// The default option whose end, counted from `now`, lies nearest to `date`, the shorter of two
  /// that are as near; never for an absent date, one after the calendar's last year (32767), and
  /// one that is not a number, and for these alone. `now` must lie within the calendar.
  static DateExpirationOption closest(std::optional<platform::Date> date, platform::Date now);

  /// The same, counted from this moment.
  static DateExpirationOption closest(std::optional<platform::Date> date);

  /// What `count` counts.
  constexpr Unit unit() const { return unit_; }
  /// How many units; 0 for never.
  constexpr int count() const { return count_; }

  /// The end date, counted from `now`; absent for never. Months go by the calendar in UTC and keep
  /// the time of day; a day that the month lacks becomes its last: 31 January and one month is the
  /// last of February.
  std::optional<platform::Date> date(platform::Date now) const;

  /// The same, counted from this moment.
  std::optional<platform::Date> date() const;

  /// By unit and count: 24 hours are not 1 day.
  friend bool operator==(const DateExpirationOption&, const DateExpirationOption&) = default;

 private:
  constexpr DateExpirationOption(Unit unit, int count) : unit_(unit), count_(count) {}

  Unit unit_;
  int count_;
};

}  // namespace quillbay::core
