// torture-shares [--runs N] [--seed N] [--only MODE] [--build PRESET]: shares files with a local
// sandbox while the network, the servers, the disk, the clock or the memory fail, N times a mode.
// Prints a line a mode, as scripts/torture does, and each fault. Its exit status is 0 if there was
// none. The host of the library is that of the preset.

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>

#include "TemporaryFolder.h"
#include "TestCertificates.h"
#include "modes.h"

namespace {

using namespace quillbay::torture;
using quillbay::test::TemporaryFolder;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// They wait more than they work.
constexpr int kWorkerCount = 6;

struct Options {
  int runCount = 100;
  std::uint64_t seed = 1;
  std::string only;
  std::string build = "dev";
};

struct Row {
  int runCount = 0;
  int hangCount = 0;
  int faultCount = 0;
  milliseconds longest{0};
  std::map<std::string, int> outcomes = {};
};

/// One run, on any thread; notes its end.
void runOnce(const Mode& mode, int number, const World& world, const Options& options, Row& row,
             std::mutex& mutex) {
  const TemporaryFolder folder;
  const std::string name = std::string(mode.name) + "-" + std::to_string(number);
  std::seed_seq seed(name.begin(), name.end());
  Random random(seed);
  random.seed(random() + options.seed);
  std::string outcome;
  std::string fault;
  bool isHang = false;
  const auto start = Clock::now();
  try {
    outcome = mode.run(world, folder.path(), name, random);
  } catch (const Hang& hang) {
    isHang = true;
    fault = hang.what();
  } catch (const std::exception& error) {
    fault = error.what();
  }
  const std::lock_guard lock(mutex);
  row.longest = std::max(row.longest, std::chrono::ceil<milliseconds>(Clock::now() - start));
  if (fault.empty()) {
    ++row.outcomes[outcome];
    return;
  }
  ++(isHang ? row.hangCount : row.faultCount);
  std::printf("%s: %s\n", name.c_str(), fault.c_str());
}

Row runAll(const Mode& mode, const World& world, const Options& options) {
  Row row{.runCount = std::max(1, options.runCount / mode.length)};
  std::mutex mutex;
  std::atomic<int> next = 0;
  {
    std::vector<std::jthread> workers;
    for (int i = 0; i < kWorkerCount; ++i) {
      workers.emplace_back([&] {
        for (int number; (number = next++) < row.runCount;) {
          runOnce(mode, number, world, options, row, mutex);
        }
      });
    }
  }
  return row;
}

void print(const Options& options, const Mode& mode, const Row& row) {
  std::string text;
  for (const auto& [outcome, count] : row.outcomes) {
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + outcome;
  }
  std::printf("%-5s %-15s %5d %7d %6d %8d ms  %s\n", options.build.c_str(),
              std::string(mode.name).c_str(), row.runCount, row.hangCount, row.faultCount,
              static_cast<int>(row.longest.count()), text.c_str());
}

Options parse(int argumentCount, char** arguments) {
  Options options;
  for (int i = 1; i + 1 < argumentCount; i += 2) {
    const std::string_view name = arguments[i];
    if (name == "--runs") options.runCount = std::atoi(arguments[i + 1]);
    if (name == "--seed") options.seed = std::strtoull(arguments[i + 1], nullptr, 10);
    if (name == "--only") options.only = arguments[i + 1];
    if (name == "--build") options.build = arguments[i + 1];
  }
  return options;
}

/// Of the sandbox, and of the proxy that answers in its place.
std::filesystem::path writeAuthorities(const TemporaryFolder& folder, const Sandbox& sandbox) {
  const auto& certificates = quillbay::test::TestCertificates::shared();
  return folder.write("authorities.pem",
                      quillbay::test::readFile(sandbox.authorityFile()) +
                          quillbay::test::readFile(certificates.authorityPath()));
}

}  // namespace

int main(int argumentCount, char** arguments) {
  std::signal(SIGPIPE, SIG_IGN);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const Options options = parse(argumentCount, arguments);
  const TemporaryFolder folder;
  const Sandbox sandbox(folder / "sandbox");
  World world{sandbox,
              {},
              writeAuthorities(folder, sandbox),
              "build/" + options.build + "/torture/torture-host"};
  for (const std::size_t byteCount : {0, 1'000, 70'000, 1'300'000}) {
    world.files.push_back(folder.writePattern(std::to_string(byteCount), byteCount));
  }
  int faultCount = 0;
  for (const Mode& mode : allModes()) {
    if (!options.only.empty() && options.only != mode.name) continue;
    const Row row = runAll(mode, world, options);
    print(options, mode, row);
    faultCount += row.hangCount + row.faultCount;
  }
  return faultCount == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
