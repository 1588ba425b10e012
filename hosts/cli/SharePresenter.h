#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "CommandLine.h"
#include "ExitStatus.h"
#include "TerminalProgress.h"
#include "hosts/common/ShareRun.h"

namespace quillbay::cli {

class Console;
class ResultOutput;

/// One share, new or continued, as the command line shows it: what is printed when, and the exit
/// status. Main thread only; it must live until the main queue runs no more.
class SharePresenter final : private host::ShareRun::Presenter {
 public:
  using Clock = host::ShareRun::Clock;

  struct Share {
    std::string instanceIdentifier;
    cloud::SessionConfiguration configuration;
    host::SharedFiles files;
    host::ShareRun::Settings settings;
    /// For a share that is continued.
    std::optional<host::ShareRun::Unfinished> unfinished = {};
    /// Files among them are gone when the program has ended: the share cannot be continued.
    bool hasTemporaryFiles = false;
  };

  /// What the run works with. All of it outlives the run; `history` may be null.
  struct Surroundings {
    const CommonOptions& options;
    ResultOutput& output;
    Console& console;
    host::History* history;
    const LinkDisplay& linkDisplay;
  };

  SharePresenter(Share share, Surroundings surroundings);
  SharePresenter(const SharePresenter&) = delete;
  SharePresenter& operator=(const SharePresenter&) = delete;

  /// Starts the run; everything else happens on the main queue.
  void start();
  /// Ctrl-C: ends the run within two seconds.
  void cancel() { run_.cancel(); }
  /// Shows progress and watches the time. Call it regularly, at most ten times a second.
  void tick(Clock::time_point now);

  /// Present when the run is over.
  std::optional<ExitStatus> status() const;

 private:
  void sessionCreated(const cloud::Session& session, bool isDoomed) override;
  void failed(const host::ShareRun::Failure& failure) override;
  void phaseChanged() override;

  void tellRetry();
  void tellCancellation();
  void tellEnd();
  void tellShared();
  void tellUnfinished();
  void tellDeleted();
  /// Tells what has become of the session, and how it can be deleted.
  void printSession(const std::string& state);
  void warnOfHistory();
  std::optional<std::string> pathAt(std::optional<std::size_t> fileIndex) const;

  const CommonOptions options_;
  const std::string instanceIdentifier_;
  ResultOutput& output_;
  Console& console_;
  host::History* const history_;
  const LinkDisplay& linkDisplay_;
  const bool hasTemporaryFiles_;
  TerminalProgress progress_;
  host::ShareRun run_;

  bool hasFileProblems_ = false;
  bool isSessionWritten_ = false;
  bool isCancellationTold_ = false;
  bool isHistoryWarned_ = false;
  /// Standard output failed after the link: the run fails, the session stays.
  bool isOutputLost_ = false;
};

}  // namespace quillbay::cli
