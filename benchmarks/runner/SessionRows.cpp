#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/ShareRequests.h"

namespace quillbay::bench {
namespace {

using std::filesystem::path;

constexpr std::size_t kFileCount = 1'000;
constexpr int kRoundCount = 11;
constexpr int kConnectionRoundCount = 11;
constexpr const char* kSystemBundle = "/etc/ssl/certs/ca-certificates.crt";

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') result += '\\';
    result += character;
  }
  return result + '"';
}

void writeTransfer(std::ostream& config, const Workbench& bench, const ShareRequest& request,
                   const path& creationBody) {
  config << "url = " << quoted(request.url) << "\nsilent\nshow-error\nfail\nhttp1.1\n"
         << "cacert = " << quoted(bench.server.authorityFile())
         << "\nconnect-to = " << quoted(bench.server.route()) << "\noutput = \"/dev/null\"\n"
         << "header = \"Expect:\"\n";
  for (const auto& line : request.headerLines) config << "header = " << quoted(line) << '\n';
  if (!request.file.empty()) {
    config << "header = \"Accept:\"\nupload-file = " << quoted(request.file) << '\n';
    return;
  }
  config << "request = " << request.method << "\nheader = \"Content-Type:\"\n"
         << "header = \"Accept-Encoding: gzip\"\ncompressed\n";
  if (request.method == "POST") {
    config << "data-binary = " << quoted(std::string("@").append(creationBody)) << '\n';
    return;
  }
  config << "data = " << quoted(request.body) << '\n';
}

path writeCurlConfig(const Workbench& bench, const std::vector<ShareRequest>& requests) {
  const path creationBody = bench.folder / "creation.json";
  std::ofstream(creationBody) << requests.front().body;
  const path file = bench.folder / "transfers.curl";
  std::ofstream config(file);
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (i > 0) config << "next\n";
    writeTransfer(config, bench, requests[i], creationBody);
  }
  return file;
}

/// Checks that a run sent what it should, and keeps the greatest number of connections of any.
class ShareCheck {
 public:
  explicit ShareCheck(const Workbench& bench) : bench_(bench) {}

  void operator()() {
    auto counts = bench_.server.takeCounts();
    const auto& service = counts[kServiceHost];
    const auto& store = counts[kStoreHost];
    if (service.requests != 2 * kFileCount + 1 || store.requests != kFileCount ||
        store.bodyByteCount != kFileCount * kSmallByteCount) {
      fail("a session went wrong");
    }
    service_ = std::max(service_, service.connections);
    store_ = std::max(store_, store.connections);
  }

  Row connectionRow() const {
    Row row;
    row.work = "Connections for 1,000 files";
    row.against = "one to each host, and one for the create call";
    row.limit = 3;
    row.value = static_cast<double>(service_ + store_);
    row.figures =
        std::to_string(service_) + " to the service, " + std::to_string(store_) + " to the store";
    return row;
  }

 private:
  const Workbench& bench_;
  std::uint64_t service_ = 0;
  std::uint64_t store_ = 0;
};

/// What the same files cost with finalize replies of one kind, and how much they may.
struct ReplyKind {
  std::string instance;
  std::string name;
  double loopLimit;
  double curlLimit;
  /// What a request cost when each hand-over woke a thread, and a tenth more.
  double processorLimit;
};

const std::array kReplyKinds = {ReplyKind{.instance = kUsualInstance,
                                          .name = "replies of 1,000 items",
                                          .loopLimit = 1.05,
                                          .curlLimit = 0.95,
                                          .processorLimit = 1.7},
                                ReplyKind{.instance = kShortReplyInstance,
                                          .name = "replies of one item",
                                          .loopLimit = 1.25,
                                          .curlLimit = 0.95,
                                          .processorLimit = 2.6}};

constexpr const char* kReasonIfMissed =
    "Each request goes from the main queue to the network thread and back, which a loop of one "
    "thread need not do. With a single processor, or where others are busy, threads must be woken "
    "for it; and only the library reads the replies as records.";

std::vector<Row> manyFilesRows(const Workbench& bench, const ReplyKind& kind, ShareCheck& ours) {
  const std::vector<path> files(bench.files.small.begin(), bench.files.small.begin() + kFileCount);
  Command loop = {bench.program("bench-curl-loop"), bench.server.authorityFile(),
                  bench.server.route(), kind.instance};
  loop.insert(loop.end(), files.begin(), files.end());
  const path config = writeCurlConfig(bench, shareRequests(kind.instance, files));

  ShareCheck peers(bench);
  const auto runs = bench.compare(
      {{"quillbay share", {bench.shareCommand(files, kind.instance)}, [&](const auto&) { ours(); }},
       {"libcurl loop", {loop}, [&](const auto&) { peers(); }},
       {"curl -K", {{"curl", "-K", config}}, [&](const auto&) { peers(); }}},
      kRoundCount);
  const std::string work = "`quillbay share` of 1,000 files of 4 KiB, " + kind.name;
  const std::string loopName = "a tight libcurl loop with the same requests, replies thrown away";
  return {ratioRow(work, loopName, kind.loopLimit, wallSeconds(runs[0], runs[1]), kReasonIfMissed),
          ratioRow(work, "one `curl -K` with the same requests", kind.curlLimit,
                   wallSeconds(runs[0], runs[2]), kReasonIfMissed),
          ratioRow(work + ", processor time", loopName, kind.processorLimit,
                   processorSeconds(runs[0], runs[1]), kReasonIfMissed)};
}

/// The system's authorities and the server's.
path writeBundle(const Workbench& bench) {
  const path file = bench.folder / "bundle.pem";
  const std::string system = readText(kSystemBundle);
  if (system.empty()) fail(std::string("there is no ") + kSystemBundle);
  std::ofstream(file) << system << readText(bench.server.authorityFile());
  return file;
}

Row newConnectionRow(const Workbench& bench) {
  const Command command = {bench.program("bench-connections"), writeBundle(bench),
                           bench.server.route()};
  std::string lines;
  for (int round = 0; round < kConnectionRoundCount; ++round) lines += bench.output(command);
  bench.server.takeCounts();
  return ratioRow("Second new TLS connection, with the system's CA bundle", "the first", 0.25,
                  parsePairs(lines));
}

}  // namespace

std::vector<Row> sessionRows(const Workbench& bench) {
  std::vector<Row> rows;
  ShareCheck shares(bench);
  for (const auto& kind : kReplyKinds) {
    std::ranges::move(manyFilesRows(bench, kind, shares), std::back_inserter(rows));
  }
  rows.push_back(shares.connectionRow());
  rows.push_back(newConnectionRow(bench));
  return rows;
}

}  // namespace quillbay::bench
