#pragma once

#include <QuillbayCloud/Classes/SessionController.h>

#include <chrono>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>

#include "ExitStatus.h"
#include "hosts/common/NetworkOptions.h"

namespace quillbay::host {
class History;
}

namespace quillbay::cli {

class Console;
class ResultOutput;

/// One deletion that the user asked for. Main thread only; it must live until the main queue runs
/// no more.
class DeleteRun {
 public:
  using Clock = std::chrono::steady_clock;

  struct Options {
    std::string sessionIdentifier;
    std::string instanceIdentifier;
    std::string token;
    host::NetworkOptions network;
    /// In the history; 0 if it is not remembered.
    std::int64_t historyIdentifier = 0;
  };

  /// What the run works with. All of it outlives the run.
  struct Surroundings {
    ResultOutput& output;
    Console& console;
    host::History& history;
  };

  DeleteRun(Options options, Surroundings surroundings);
  DeleteRun(const DeleteRun&) = delete;
  DeleteRun& operator=(const DeleteRun&) = delete;

  void start();
  void cancel();
  void tick(Clock::time_point now);
  std::optional<ExitStatus> status() const { return status_; }

 private:
  void completed(const std::expected<void, cloud::QuillbayCloudError>& result);

  const Options options_;
  ResultOutput& output_;
  Console& console_;
  host::History& history_;
  Clock::time_point start_;
  std::optional<ExitStatus> status_;
};

}  // namespace quillbay::cli
