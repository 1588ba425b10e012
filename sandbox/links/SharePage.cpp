#include "sandbox/links/SharePage.h"

#include <algorithm>
#include <numeric>

#include "sandbox/links/Page.h"
#include "sandbox/support/Markup.h"

namespace quillbay::sandbox {

namespace {

constexpr const char* retryAfterSeconds = "3";
// Longer than a client waits for a silent server, or the server for a silent client.
constexpr std::chrono::minutes longestPause{2};
constexpr const char* timePattern = "%-d %B %Y, %H:%M UTC";

/// How much of a session has arrived, counted once for the whole page.
struct Arrival {
  bool isInterrupted = false;
  std::size_t fileCount = 0;
  std::size_t arrivedFileCount = 0;
  std::uint64_t byteCount = 0;
  std::uint64_t arrivedByteCount = 0;

  bool isComplete() const { return arrivedFileCount == fileCount; }
};

/// Bytes of the item that are here, complete or not.
std::uint64_t arrivedByteCount(Session& session, std::size_t index, const ItemState& state) {
  const std::uint64_t announced = session.record().items[index].file.byteCount;
  if (state.isUploaded) return announced;
  return std::min(announced,
                  std::max(state.object ? state.object->byteCount : 0,
                           session.arrivingByteCount(index).load(std::memory_order_relaxed)));
}

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string progressBar(std::uint64_t value, std::uint64_t total, std::string_view name) {
  return "<progress aria-label=\"" + escapeMarkup(name) + "\" max=\"" +
         std::to_string(std::max<std::uint64_t>(total, 1)) + "\" value=\"" + std::to_string(value) +
         "\"></progress>";
}

std::string heading(const SessionRecord& record) {
  if (record.title && !record.title->empty()) return *record.title;
  if (record.items.size() == 1) return record.items.front().file.name;
  return "Shared files";
}

std::string summary(const SessionRecord& record, const Arrival& arrival) {
  std::string text =
      counted(arrival.fileCount, "file", "files") + " · " + humanSize(arrival.byteCount);
  if (record.expiration) {
    text += " · available until " + formatTime(*record.expiration, timePattern);
  }
  return "<p class=\"soft\">" + text + "</p>";
}

/// A link and not a page that reloads itself: that would interrupt screen readers, never end for an
/// abandoned upload, and stay behind unchanged when it leads to a download.
std::string notice(const Session& session, const Arrival& arrival) {
  const std::string rest = arrival.isInterrupted
                               ? "The upload was interrupted: nothing has arrived since " +
                                     formatTime(session.lastMovement(), timePattern) +
                                     ". Ask the sender to continue it: the link stays the same."
                               : "The rest is on its way.";
  return "<div class=\"notice\">" + std::to_string(arrival.arrivedFileCount) + " of " +
         counted(arrival.fileCount, "file has", "files have") + " arrived. <span class=\"soft\">" +
         rest + "</span>" + progressBar(arrival.arrivedByteCount, arrival.byteCount, "All files") +
         "<a class=\"button\" href=\"/s/" + session.record().slug +
         "/files\">Check again</a></div>";
}

std::string contentLink(const SessionRecord& record, const Item& item) {
  const std::string action = record.linkType == LinkType::direct ? "Open" : "Download";
  return "<a class=\"button\" href=\"/s/" + record.slug + "/files/" + item.identifier +
         "\" aria-label=\"" + action + " " + escapeMarkup(item.file.name) + "\">" + action + "</a>";
}

std::string arrivalState(std::uint64_t here, const Arrival& arrival) {
  if (arrival.isInterrupted) return "has not arrived";
  return here > 0 ? "arriving" : "on its way";
}

std::string fileRow(Session& session, std::size_t index, const ItemState& state,
                    const Arrival& arrival) {
  const Item& item = session.record().items[index];
  std::string row = "<li><div><bdi>" + escapeMarkup(item.file.name) + "</bdi>";
  if (state.isUploaded) {
    return row + "<small>" + humanSize(item.file.byteCount) + "</small></div>" +
           contentLink(session.record(), item) + "</li>\n";
  }
  const std::uint64_t here = arrivedByteCount(session, index, state);
  row += "<small>" + (here > 0 ? humanSize(here) + " of " : std::string()) +
         humanSize(item.file.byteCount) + " · " + arrivalState(here, arrival) + "</small>";
  if (here > 0) row += progressBar(here, item.file.byteCount, item.file.name);
  return row + "</div></li>\n";
}

Arrival countArrival(Session& session, std::span<const ItemState> states, Instant now) {
  Arrival arrival;
  arrival.isInterrupted = now > session.lastMovement() + longestPause;
  arrival.fileCount = states.size();
  for (std::size_t i = 0; i < states.size(); ++i) {
    arrival.arrivedFileCount += states[i].isUploaded ? 1 : 0;
    arrival.byteCount += session.record().items[i].file.byteCount;
    arrival.arrivedByteCount += arrivedByteCount(session, i, states[i]);
  }
  return arrival;
}

}  // namespace

Reply sharePage(Session& session, Instant now, int status) {
  const SessionRecord& record = session.record();
  Arrival arrival;
  std::string rows;
  session.visitItems([&](std::span<const ItemState> states) {
    arrival = countArrival(session, states, now);
    for (std::size_t i = 0; i < states.size(); ++i) rows += fileRow(session, i, states[i], arrival);
  });
  std::string content =
      "<h1><bdi>" + escapeMarkup(heading(record)) + "</bdi></h1>" + summary(record, arrival);
  if (!arrival.isComplete()) content += notice(session, arrival);
  if (arrival.isComplete() && arrival.fileCount > 1) {
    content += "<a class=\"button primary\" href=\"/s/" + record.slug +
               "/all.zip\">Download all as ZIP</a>";
  }
  content += "<ul>" + rows + "</ul>";
  Reply reply = pageReply(status, heading(record), content);
  if (status == 503 && !arrival.isInterrupted) {
    reply.headers.emplace_back("Retry-After", retryAfterSeconds);
  }
  return reply;
}

Reply passwordPage(int status, const SessionRecord& session, std::string_view problem) {
  std::string content =
      "<h1>Password needed</h1><p class=\"soft\">These files are protected. Ask the person who "
      "sent you the link for its password.</p><form method=\"post\" action=\"/s/" +
      session.slug +
      "/unlock\"><label for=\"password\">Password</label><input type=\"password\" id=\"password\" "
      "name=\"password\" autocomplete=\"current-password\" required autofocus>";
  if (!problem.empty())
    content += "<p class=\"error\" role=\"alert\">" + escapeMarkup(problem) + "</p>";
  content += "<button type=\"submit\">Open the link</button></form>";
  return pageReply(status, "Password needed", content);
}

}  // namespace quillbay::sandbox
