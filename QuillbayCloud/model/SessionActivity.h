#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/URL.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace quillbay::cloud {

/// What a run of a `SessionController` is doing at one moment. A value; any thread.
struct SessionActivity {
  /// What a run does, in the order of a run; the last three end it.
  enum class Step {
    idle,               ///< no run has been started
    fingerprinting,     ///< reads the files and hashes them
    creatingSession,    ///< asks the service for a session
    requestingAddress,  ///< asks the service where to upload `file`
    uploading,          ///< sends `file`
    finalizing,         ///< tells the service that `file` has arrived
    finished,           ///< every file has arrived
    failed,             ///< an error has ended the run
    cancelled,          ///< the host has ended the run
  };

  /// One of the files of the `SessionContext`.
  struct File {
    /// Position in the context's list.
    std::size_t index = 0;
    /// The file's address, as the context has it.
    platform::URL url;

    /// By value.
    friend bool operator==(const File&, const File&) = default;
  };

  /// What the run is doing now, or how it has ended.
  Step step = Step::idle;
  /// The step in which a finished, failed or cancelled run ended; `idle` before that.
  Step endedIn = Step::idle;
  /// The file of the step, or of the step in which the run ended. Absent while the session is
  /// being created, and where a failure is about no single file.
  std::optional<File> file = {};
  /// The files that could not be read, for a run that failed with `fingerprintFailure`. Empty if
  /// the failure was a file that is twice in the list.
  std::vector<File> filesWithoutFingerprint = {};

  /// Why the object store did not reply, for a run that failed with `invalidResponse` because of
  /// that; null otherwise.
  platform::ErrorPtr transportError = {};

  /// Files that the service has confirmed, those of earlier runs included, of all files.
  std::size_t finishedFileCount = 0;
  /// All files of the context.
  std::size_t fileCount = 0;

  /// Bytes that have been read and hashed, of the files that this run uploads.
  std::uint64_t fingerprintedByteCount = 0;
  /// Bytes that have been sent, of the files that this run uploads.
  std::uint64_t sentByteCount = 0;
  /// All bytes of the files that this run uploads: 0 until their sizes are known; it changes if a
  /// file grows or shrinks before it is read.
  std::uint64_t totalByteCount = 0;

  /// Whether the run has finished, failed or been cancelled.
  bool isOver() const { return step >= Step::finished; }

  /// By value.
  friend bool operator==(const SessionActivity&, const SessionActivity&) = default;
};

}  // namespace quillbay::cloud
