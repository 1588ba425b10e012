#include "ShareTable.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <nlohmann/json.hpp>

#include "ExpirationArgument.h"
#include "hosts/common/PlainText.h"
#include "hosts/common/WholeSeconds.h"

namespace quillbay::cli {
namespace {

using host::RememberedShare;
using Row = std::array<std::string, 7>;

constexpr std::size_t kTitleColumn = 5;
constexpr std::size_t kLinkColumn = 6;
constexpr std::size_t kLeastTitleColumns = 8;
constexpr std::size_t kGap = 2;

const char* stateName(const RememberedShare& share, platform::Date now) {
  using State = RememberedShare::State;
  if (share.state == State::deleted) return "deleted";
  if (share.isExpired(now)) return "expired";
  if (share.state == State::uploading) return "uploading";
  return share.state == State::complete ? "complete" : "unfinished";
}

/// In the user's time zone, to the minute.
std::string timeText(platform::Date date) {
  const std::time_t seconds = host::wholeSeconds(date);
  std::tm time{};
  std::array<char, 32> text{};
  if (::localtime_r(&seconds, &time) == nullptr) return "";
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &time);
  return text.data();
}

std::string filesText(const RememberedShare& share) {
  std::string count = std::to_string(share.fileCount);
  if (share.arrivedFileCount == share.fileCount) return count;
  return std::to_string(share.arrivedFileCount) + " of " + count;
}

Row rowOf(const RememberedShare& share, platform::Date now) {
  const auto& expiration = share.session.expirationDate();
  return {timeText(share.created),
          stateName(share, now),
          filesText(share),
          host::byteCountText(share.byteCount),
          expiration ? timeText(*expiration) : "never",
          host::plainLine(share.session.title().value_or("")),
          host::plainLine(share.session.url().absoluteString())};
}

std::size_t widthOf(const std::vector<Row>& rows, std::size_t column) {
  std::size_t width = 0;
  for (const Row& row : rows) width = std::max(width, host::columnCount(row[column]));
  return width;
}

/// Columns that a title may fill.
std::size_t titleWidth(const std::vector<Row>& rows, std::size_t columnCount) {
  std::size_t others = 0;
  for (std::size_t column = 0; column < Row().size(); ++column) {
    if (column != kTitleColumn) others += kGap + widthOf(rows, column);
  }
  const std::size_t room = columnCount > others ? columnCount - others : 0;
  return std::max(room, kLeastTitleColumns);
}

}  // namespace

std::string shareTable(const std::vector<RememberedShare>& shares, platform::Date now,
                       std::optional<std::size_t> columnCount) {
  std::vector<Row> rows{{"WHEN", "STATE", "FILES", "SIZE", "EXPIRES", "TITLE", "LINK"}};
  for (const RememberedShare& share : shares) rows.push_back(rowOf(share, now));
  if (columnCount) {
    const std::size_t width = titleWidth(rows, *columnCount);
    for (Row& row : rows) row[kTitleColumn] = host::shortened(row[kTitleColumn], width);
  }
  std::array<std::size_t, kLinkColumn> widths{};
  for (std::size_t column = 0; column < kLinkColumn; ++column) {
    widths[column] = widthOf(rows, column) + kGap;
  }
  std::string text;
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < kLinkColumn; ++column) {
      text += row[column] + std::string(widths[column] - host::columnCount(row[column]), ' ');
    }
    text += row[kLinkColumn] + "\n";
  }
  return text;
}

std::string shareObjects(const std::vector<RememberedShare>& shares, platform::Date now) {
  using Object = nlohmann::ordered_json;
  std::string text;
  for (const RememberedShare& share : shares) {
    Object object;
    if (const auto created = rfc3339Text(share.created)) object["created"] = *created;
    object["state"] = stateName(share, now);
    object["files"] = share.fileCount;
    object["arrived"] = share.arrivedFileCount;
    object["bytes"] = share.byteCount;
    if (const auto expires = share.session.expirationDate().and_then(rfc3339Text)) {
      object["expires"] = *expires;
    }
    if (const auto& title = share.session.title()) object["title"] = *title;
    object["url"] = share.session.url().absoluteString();
    object["id"] = share.session.identifier();
    object["instance"] = share.instanceIdentifier;
    text += object.dump(-1, ' ', true, Object::error_handler_t::replace) + "\n";
  }
  return text;
}

}  // namespace quillbay::cli
