#include "Life.h"

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "TemporaryFolder.h"

namespace quillbay::torture {
namespace {

using nlohmann::json;
using test::readFile;

constexpr auto kBound = std::chrono::seconds(40);
constexpr int kCancelled = 130;
/// Of a shell or a loader that cannot start the program.
constexpr int kNotStarted = 127;

std::string nameOf(const json& event) { return event.at("event"); }

}  // namespace

/// How a command ended, and what it told.
struct Life::End {
  int status = 0;
  std::string error;
  /// It may give up in the middle, if it says why.
  bool isShortOfMemory = false;
  std::vector<json> events = {};

  auto count(const std::string& name) const { return std::ranges::count(events, name, nameOf); }
  bool told(const std::string& name) const { return count(name) > 0; }
  const json& event(const std::string& name) const {
    return *std::ranges::find(events, name, nameOf);
  }
  bool isAbnormal() const {
    const bool gaveUp = isShortOfMemory && status == 1 && !told("error");
    return gaveUp || (status >= kNotStarted && status != kCancelled);
  }

  [[noreturn]] void fail(const std::string& what) const {
    std::string text = what + "; status " + std::to_string(status) + "\n" + error;
    for (const json& event : events) {
      if (event.at("event") != "progress") text += event.dump() + "\n";
    }
    throw Fault(text);
  }
  void require(bool condition, const std::string& what) const {
    if (!condition) fail(what);
  }
  /// Exactly one outcome, and the status that belongs to it.
  void checkOutcome() const {
    require(count("session") <= 1, "two sessions");
    require(count("done") + count("error") + count("cancelled") <= 1, "two outcomes");
    require(count("deleted") <= 1 && !(told("deleted") && told("done")), "done and deleted");
    require(status != 0 || told("done"), "a success without an outcome");
    require(status != 1 || told("error") || isAbnormal(), "a failure without an outcome");
    require(status != kCancelled || told("cancelled"), "a cancellation without an outcome");
    require(!told("done") || status == 0 || isAbnormal(), "done, but no success");
  }
  /// By a signal that it got, or because it had too little memory and said so.
  void checkAbnormality(int signal) const {
    if (signal != 0 && status == Process::kSignalled + signal) return;
    const bool isOrderly =
        status == 1 || status == kNotStarted || status == Process::kSignalled + SIGABRT;
    require(isShortOfMemory && isOrderly && !error.empty(), "crashed");
  }
};

std::string World::routeThrough(int port) const {
  const std::string place = ":127.0.0.1:" + std::to_string(port);
  return "cloud.quillbay.example:443" + place + ",localhost:" + std::to_string(sandbox.port()) +
         place;
}

Life::Life(const World& world, std::filesystem::path folder, std::string instance, Random random)
    : world_(world),
      folder_(std::move(folder)),
      instance_(std::move(instance)),
      random_(random),
      surroundings_(folder_ / "surroundings"),
      port_(world.sandbox.port()) {
  constexpr std::int64_t kSpeedOfRetries = 5;
  surroundings_->steadyClockSpeed = kSpeedOfRetries;
}

std::string Life::run() {
  const std::string outcome = share();
  for (int i = 0; i < 2 && isUnfinished() && hasHistory_; ++i) resume(false);
  if (!session_.empty() && between(random_, 0, 3) == 0) remove(false);
  isCalm_ = true;
  if (whenCalm_) whenCalm_();
  surroundings_->freeByteCount = Surroundings::kUnlimited;
  surroundings_->wallClockJumpSeconds = 0;
  memoryKibibyteCount_ = 0;
  output_.clear();
  if (isUnfinished() && hasHistory_) resume(true);
  if (!session_.empty()) remove(world_.sandbox.has(session_));
  return outcome;
}

Life::End Life::start(const std::string& command) {
  const std::string folder = folder_.string();
  const std::string limit =
      memoryKibibyteCount_ == 0
          ? ""
          : "sh -c 'ulimit -v " + std::to_string(memoryKibibyteCount_) + " && exec \"$@\"' sh ";
  Process process(limit + "env -i PATH=/usr/bin:/bin LC_ALL=C.UTF-8 HOME=" + folder +
                  " QUILLBAY_CACERT=" + world_.authorities.string() + " QUILLBAY_CONNECT_TO=" +
                  world_.routeThrough(port_) + " " + Surroundings::kVariable + "=" + folder +
                  "/surroundings LD_PRELOAD=" TORTURE_SURROUNDINGS " " TORTURE_CLI " " + command +
                  " </dev/null >" + (output_.empty() ? folder + "/output" : output_) + " 2>" +
                  folder + "/error");
  const int signal = std::exchange(signal_, 0);
  if (signal != 0 && !process.waitFor(signalMoment_)) process.signal(signal);
  const auto status = process.waitFor(kBound);
  End end{.status = status.value_or(-1),
          .error = readFile(folder_ / "error"),
          .isShortOfMemory = memoryKibibyteCount_ != 0};
  if (!status) throw Hang(command + "\n" + end.error);
  if (!output_.empty()) return end;
  std::istringstream lines(readFile(folder_ / "output"));
  for (std::string line; std::getline(lines, line);) {
    end.events.push_back(json::parse(line, nullptr, false));
    if (end.events.back().is_object()) continue;
    end.events.pop_back();
    end.require(end.isAbnormal(), "no JSON: " + line);
  }
  if (end.isAbnormal()) end.checkAbnormality(signal);
  return end;
}

std::string Life::share() {
  std::string command =
      "share --json --instance " + instance_ + " --retry " + std::to_string(between(random_, 0, 2));
  if (between(random_, 0, 1) == 0) command += " --keep";
  for (const auto& file : world_.files) command += " " + file.string();
  const End end = start(command);
  if (end.told("session")) {
    session_ = end.event("session").at("id");
    token_ = end.event("session").at("token");
  }
  if (output_.empty()) {
    end.checkOutcome();
  } else {
    end.require(end.status == 1, "no failure");
  }
  checkSession(end);
  isDone_ = end.told("done");
  end.require(!mustSucceed_ || isDone_, "failed without a reason");
  if (end.told("error")) return end.event("error").at("cause");
  if (end.told("cancelled")) return "cancelled";
  if (end.told("done")) return "done";
  return end.isAbnormal() ? "ended with " + std::to_string(end.status) : "output lost";
}

void Life::checkSession(const End& end) const {
  const auto sessions = world_.sandbox.sessionsOf(instance_);
  end.require(sessions.size() <= 1, "the session was created twice");
  if (end.told("done")) {
    const auto lack = world_.sandbox.lackOf(session_, world_.files);
    end.require(!lack, "done, but " + lack.value_or(""));
  }
  if (end.told("deleted")) end.require(sessions.empty(), "told deleted, but it is there");
  if (sessions.empty() || end.told("done") || end.isAbnormal()) return;
  const bool isNamed =
      end.error.contains(sessions[0]) || end.error.contains(world_.sandbox.slugOf(sessions[0]));
  const bool isSuspected = end.error.contains("it is not known whether the service created") ||
                           end.error.contains("if it has created a session");
  end.require(isNamed || isSuspected, "a session is left, and nothing told of it");
}

bool Life::isUnfinished() const {
  return !session_.empty() && !isDone_ && world_.sandbox.has(session_);
}

void Life::resume(bool mustSucceed) {
  const End end = start("resume --json " + session_ + " --retry 1");
  const bool isRefused = end.status == 2 && !mustSucceed;
  if (!isRefused) end.checkOutcome();
  end.require(!end.told("deleted"), "continued, but deleted");
  checkSession(end);
  isDone_ = isDone_ || end.told("done");
  end.require(!mustSucceed || isDone_, "cannot be continued");
}

void Life::remove(bool mustSucceed) {
  const End end =
      start("delete --json --instance " + instance_ + " " + session_ + " --token " + token_);
  end.require(end.told("deleted") == (end.status == 0), "deleted, or not deleted");
  end.require(!end.told("deleted") || !world_.sandbox.has(session_),
              "told deleted, but it is there");
  end.require(!mustSucceed || end.told("deleted"), "cannot be deleted");
}

}  // namespace quillbay::torture
