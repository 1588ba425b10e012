#include <cmath>
#include <sstream>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/SessionText.h"

namespace quillbay::bench {
namespace {

constexpr int kRoundCount = 9;
constexpr int kObserverRoundCount = 15;
constexpr double kDeliveriesPerSecond = 10;

/// The store must have got the whole file, once.
std::function<void(const std::string&)> expectUpload(const Workbench& bench) {
  return [&bench](const std::string&) {
    const auto store = bench.server.takeCounts()[kStoreHost];
    if (store.requests != 1 || store.bodyByteCount != kLargeByteCount) fail("an upload went wrong");
  };
}

Contender uploader(const Workbench& bench) {
  return {"bench-upload",
          {{bench.program("bench-upload"), bench.server.authorityFile(), bench.server.route(),
            storeAddress(itemIdentifier(0)), bench.files.large}},
          expectUpload(bench)};
}

std::vector<Row> transferRows(const Workbench& bench) {
  const Contender curl = {
      "curl -T", {bench.curlUploadCommand(bench.files.large)}, expectUpload(bench)};
  const auto runs = bench.compare({uploader(bench), curl}, kRoundCount);
  const std::string work = "Upload of 1 GiB";
  return {ratioRow(work + ", wall time", "`curl -T`", 1.08, wallSeconds(runs[0], runs[1])),
          ratioRow(work + ", processor time", "`curl -T`", 1.10, processorSeconds(runs[0], runs[1]),
                   "From one run of this program to the next, this ratio differs by 0.08.")};
}

Row shareRow(const Workbench& bench) {
  const Contender share = {
      "quillbay share", {bench.shareCommand({bench.files.large})}, expectUpload(bench)};
  const Contender peers = {"openssl dgst, curl -T",
                           {{"openssl", "dgst", "-sha256", bench.files.large},
                            bench.curlUploadCommand(bench.files.large)},
                           expectUpload(bench)};
  const auto runs = bench.compare({share, peers}, kRoundCount);
  return ratioRow("`quillbay share` of 1 GiB, whole run", "`openssl dgst`, then `curl -T`", 1.05,
                  wallSeconds(runs[0], runs[1]));
}

/// Deliveries of the worst run for the number that its duration allows.
class DeliveryCount {
 public:
  void add(const std::string& output) {
    double count = 0;
    double seconds = 0;
    std::istringstream(output) >> count >> seconds;
    const double allowed = std::ceil(seconds * kDeliveriesPerSecond) + 1;
    if (count < 1) fail("an upload delivered no progress");
    if (count / allowed <= count_ / allowed_) return;
    count_ = count;
    allowed_ = allowed;
    seconds_ = seconds;
  }

  Row row() const {
    Row row;
    row.work = "Deliveries of progress in an upload of 1 GiB, most of any run";
    row.against = "ten in each second begun, and one at the end";
    row.limit = allowed_;
    row.value = count_;
    row.figures = "in " + secondsText(seconds_);
    return row;
  }

 private:
  double count_ = 0;
  double allowed_ = 1;
  double seconds_ = 0;
};

std::vector<Row> progressRows(const Workbench& bench) {
  DeliveryCount deliveries;
  Contender observed = uploader(bench);
  observed.commands[0].emplace_back("observe");
  observed.check = [&deliveries, check = expectUpload(bench)](const std::string& output) {
    check(output);
    deliveries.add(output);
  };
  const auto runs = bench.compare({observed, uploader(bench)}, kObserverRoundCount);
  return {deliveries.row(),
          ratioRow("Upload of 1 GiB with an observer of the progress, processor time",
                   "the same without", 1.03, processorSeconds(runs[0], runs[1]))};
}

}  // namespace

std::vector<Row> uploadRows(const Workbench& bench) {
  std::vector<Row> rows = transferRows(bench);
  rows.push_back(shareRow(bench));
  for (auto& row : progressRows(bench)) rows.push_back(std::move(row));
  return rows;
}

}  // namespace quillbay::bench
