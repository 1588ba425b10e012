#include <chrono>
#include <thread>

#include "benchmarks/runner/Groups.h"
#include "benchmarks/runner/TalkingProcess.h"
#include "benchmarks/runner/ThreadActivity.h"
#include "benchmarks/runner/Workbench.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

using std::chrono::seconds;

constexpr std::size_t kFileCount = 3;
// What follows a share has ended by then, and the host has gone to sleep.
constexpr seconds kSettling(2);
// More than a minute: what wakes once a minute shows.
constexpr seconds kObserved(65);
constexpr double kSecondsPerHour = 3600;

/// A host that only runs its main queue.
class IdleHost {
 public:
  IdleHost(const Workbench& bench, std::size_t sharedFileCount)
      : process_(command(bench, sharedFileCount)) {
    if (process_.readLine() != "idle") fail("bench-idle printed something else");
  }

  void beginObservation() { before_ = ThreadActivity::of(process_.pid()); }

  Row row(std::string work) const {
    const auto after = ThreadActivity::of(process_.pid());
    if (after.threadCount != before_.threadCount) fail("a thread of an idle host began or ended");
    const auto wakeUpCount = after.wakeUpCount - before_.wakeUpCount;
    const auto nanoseconds = after.processorNanoseconds - before_.processorNanoseconds;
    Row row;
    row.work = std::move(work);
    row.against = "a program that sleeps";
    row.limit = 0;
    row.value = static_cast<double>(wakeUpCount) * kSecondsPerHour / kObserved.count();
    row.figures = std::to_string(wakeUpCount) + " wake-ups of " +
                  std::to_string(after.threadCount) + " threads and " +
                  secondsText(static_cast<double>(nanoseconds) * 1e-9) + " of processor time in " +
                  secondsText(static_cast<double>(kObserved.count()));
    return row;
  }

 private:
  static Command command(const Workbench& bench, std::size_t sharedFileCount) {
    Command command = {bench.program("bench-idle"), bench.server.authorityFile(),
                       bench.server.route()};
    for (std::size_t i = 0; i < sharedFileCount; ++i) command.push_back(bench.files.small[i]);
    return command;
  }

  TalkingProcess process_;
  ThreadActivity before_;
};

}  // namespace

std::vector<Row> idleRows(const Workbench& bench) {
  IdleHost fresh(bench, 0);
  IdleHost used(bench, kFileCount);
  std::this_thread::sleep_for(kSettling);
  fresh.beginObservation();
  used.beginObservation();
  std::this_thread::sleep_for(kObserved);
  bench.server.takeCounts();
  return {fresh.row("Wake-ups an hour, before the first share"),
          used.row("Wake-ups an hour, after a share, with its connections kept")};
}

}  // namespace quillbay::bench
