#pragma once

#include <QuillbayPlatform/Date.h>

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::cli {

/// Reads WHEN of `--expires`: a count of minutes, hours, days or months from `now` ("30m", "12h",
/// "7d", "2mo"), "never", or an RFC 3339 instant. Absent means never. An instant that is not
/// after `now`, or beyond the year 9999, is refused. The error is a sentence for people.
std::expected<std::optional<platform::Date>, std::string> parseExpiration(std::string_view text,
                                                                          platform::Date now);

/// The instant in UTC, cut to whole seconds ("2026-01-01T00:00:00Z"); absent outside the years 0
/// to 9999, which RFC 3339 cannot write.
std::optional<std::string> rfc3339Text(platform::Date date);

}  // namespace quillbay::cli
