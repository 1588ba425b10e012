#pragma once

#include <atomic>
#include <cstddef>
#include <string_view>

namespace quillbay::host {

/// What a run is doing, gathered from the library's log: its only account of the single steps. It
/// tells which file is meant when a run fails, and how many have arrived. Any thread.
class RunJournal {
 public:
  enum class Step {
    fingerprinting,
    creatingSession,
    requestingAddress,
    sending,
    finalizing,
    deletingSession,  ///< noted by no message of the library: hosts know when they delete
  };

  /// A new run begins.
  void restart();
  /// Takes a debug message of the library: the operation's name and the text.
  void note(std::string_view function, std::string_view message);
  /// Takes an error message of the library.
  void noteError(std::string_view function, std::string_view message);
  /// The session exists, which the library does not log.
  void noteSession() { step_ = Step::requestingAddress; }

  Step step() const { return step_; }
  /// Files that the service has confirmed.
  std::size_t filesDone() const { return filesDone_; }
  /// Whether the upload failed without a reply of the object store. The error itself does not tell
  /// that from a reply that could not be understood.
  bool isUploadUnanswered() const { return isUploadUnanswered_; }

 private:
  std::atomic<Step> step_ = Step::fingerprinting;
  std::atomic<std::size_t> filesDone_ = 0;
  std::atomic<bool> isUploadUnanswered_ = false;
};

}  // namespace quillbay::host
