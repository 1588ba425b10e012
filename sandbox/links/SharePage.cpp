#include "sandbox/links/SharePage.h"

#include <algorithm>
#include <numeric>

#include "sandbox/links/Page.h"
#include "sandbox/support/Markup.h"

namespace quillbay::sandbox {

namespace {

constexpr std::chrono::seconds reloadInterval{3};

/// How much of a session has arrived, counted once for the whole page.
struct Arrival {
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

std::string progressBar(std::uint64_t value, std::uint64_t total) {
  return "<progress max=\"" + std::to_string(std::max<std::uint64_t>(total, 1)) + "\" value=\"" +
         std::to_string(value) + "\"></progress>";
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
    text += " · available until " + formatTime(*record.expiration, "%-d %B %Y, %H:%M UTC");
  }
  return "<p class=\"soft\">" + text + "</p>";
}

std::string notice(const Arrival& arrival) {
  return "<div class=\"notice\">" + std::to_string(arrival.arrivedFileCount) + " of " +
         counted(arrival.fileCount, "file has", "files have") +
         " arrived. <span class=\"soft\">The rest is on its way.</span>" +
         progressBar(arrival.arrivedByteCount, arrival.byteCount) + "</div>";
}

std::string fileRow(Session& session, std::size_t index, const ItemState& state) {
  const SessionRecord& record = session.record();
  const Item& item = record.items[index];
  std::string row = "<li><div><bdi>" + escapeMarkup(item.file.name) + "</bdi>";
  if (state.isUploaded) {
    return row + "<small>" + humanSize(item.file.byteCount) +
           "</small></div><a class=\"button\" href=\"/s/" + record.slug + "/files/" +
           item.identifier + "\">" + (record.linkType == LinkType::direct ? "Open" : "Download") +
           "</a></li>\n";
  }
  const std::uint64_t here = arrivedByteCount(session, index, state);
  row += "<small>" + (here > 0 ? humanSize(here) + " of " : std::string()) +
         humanSize(item.file.byteCount) + " · " + (here > 0 ? "arriving" : "on its way") +
         "</small>";
  if (here > 0) row += progressBar(here, item.file.byteCount);
  return row + "</div></li>\n";
}

Arrival countArrival(Session& session, std::span<const ItemState> states) {
  Arrival arrival;
  arrival.fileCount = states.size();
  for (std::size_t i = 0; i < states.size(); ++i) {
    arrival.arrivedFileCount += states[i].isUploaded ? 1 : 0;
    arrival.byteCount += session.record().items[i].file.byteCount;
    arrival.arrivedByteCount += arrivedByteCount(session, i, states[i]);
  }
  return arrival;
}

}  // namespace

Reply sharePage(Session& session, int status) {
  const SessionRecord& record = session.record();
  Arrival arrival;
  std::string rows;
  session.visitItems([&](std::span<const ItemState> states) {
    arrival = countArrival(session, states);
    for (std::size_t i = 0; i < states.size(); ++i) rows += fileRow(session, i, states[i]);
  });
  std::string content =
      "<h1><bdi>" + escapeMarkup(heading(record)) + "</bdi></h1>" + summary(record, arrival);
  if (!arrival.isComplete()) content += notice(arrival);
  if (arrival.isComplete() && arrival.fileCount > 1) {
    content += "<a class=\"button primary\" href=\"/s/" + record.slug +
               "/all.zip\">Download all as ZIP</a>";
  }
  content += "<ul>" + rows + "</ul>";
  const auto reload = arrival.isComplete() ? std::nullopt : std::optional(reloadInterval);
  Reply reply = pageReply(status, heading(record), content, reload);
  if (status == 503) {
    reply.headers.emplace_back("Retry-After", std::to_string(reloadInterval.count()));
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
