#pragma once

#include <QuillbayCloud/Classes/SessionController.h>

#include <chrono>
#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "ExitStatus.h"
#include "hosts/common/NetworkOptions.h"

namespace quillbay::host {
class RunJournal;
}

namespace quillbay::cli {

class Console;
class FileList;
class ResultOutput;
class TerminalProgress;

/// One share from its first fingerprint to the exit status: what is printed when, and what becomes
/// of the session if the run is cancelled or fails. Main thread only; it must live until the main
/// queue runs no more.
class ShareRun {
 public:
  using Clock = std::chrono::steady_clock;

  /// What the run works with. All of it outlives the run.
  struct Surroundings {
    FileList& files;
    host::RunJournal& journal;
    ResultOutput& output;
    Console& console;
    TerminalProgress& progress;
  };

  struct Options {
    /// The session stays when the run is cancelled or fails.
    bool keep = false;
    /// The reader of the output gets the session's token from there.
    bool json = false;
    /// Tells in the end how the session can be deleted.
    bool tellsDeletion = false;
    host::NetworkOptions network;
  };

  ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
           Options options, Surroundings surroundings);
  ShareRun(const ShareRun&) = delete;
  ShareRun& operator=(const ShareRun&) = delete;

  /// Starts the run; everything else happens on the main queue.
  void start();
  /// Ctrl-C: ends the run within two seconds.
  void cancel();
  /// Shows progress and watches the time. Call it regularly, at most ten times a second.
  void tick(Clock::time_point now);

  /// Present when the run is over.
  std::optional<ExitStatus> status() const { return isOver_ ? status_ : std::nullopt; }

 private:
  void sessionCreated(const cloud::Session& session);
  void completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result);
  void fail(const cloud::QuillbayCloudError& error);
  void printReason(const cloud::QuillbayCloudError& error) const;
  /// The link could not be written: no reader has it, and the run ends.
  void stopWithoutLink();
  /// Standard output failed after the link: the run fails, the session stays.
  void loseOutput();
  void printOutputError();

  /// Deletes the session, if there is one and it is not to be kept, and then ends the run.
  void cleanUp(std::chrono::milliseconds bound);
  void deletionCompleted(const std::expected<void, cloud::QuillbayCloudError>& result);
  /// Tells what has become of the session, and how it can be deleted.
  void printSession(const std::string& state);
  void deadlinePassed();
  void end();

  const std::shared_ptr<cloud::SessionController> controller_;
  const Options options_;
  FileList& files_;
  host::RunJournal& journal_;
  ResultOutput& output_;
  Console& console_;
  TerminalProgress& progress_;

  std::optional<cloud::Session> session_;
  std::optional<ExitStatus> status_;
  bool isSessionWritten_ = false;
  bool isCancelled_ = false;
  bool isDeleting_ = false;
  bool isOver_ = false;
  std::optional<Clock::time_point> deadline_;
};

}  // namespace quillbay::cli
