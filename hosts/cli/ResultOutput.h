#pragma once

#include <QuillbayCloud/model/Session.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "FailureReport.h"

namespace quillbay::cli {

/// Standard output: the result and nothing else, each piece written at once. Main thread only.
class ResultOutput {
 public:
  virtual ~ResultOutput() = default;
  ResultOutput(const ResultOutput&) = delete;
  ResultOutput& operator=(const ResultOutput&) = delete;

  /// The link alone on its line.
  static std::unique_ptr<ResultOutput> plain(int descriptor);
  /// One JSON object a line.
  static std::unique_ptr<ResultOutput> json(int descriptor);

  /// How far a run is.
  struct Progress {
    /// Of the uploads, 0 to 1, every file alike.
    double fraction = 0;
    /// Name of the library's step.
    std::string_view step = {};
    /// Path of the file of the step.
    std::optional<std::string> file = {};
    /// Sent, of all files.
    std::uint64_t byteCount = 0;
    std::uint64_t totalByteCount = 0;
  };

  virtual void sessionCreated(const cloud::Session& session) = 0;
  /// The session was created after the run was cancelled, and will be deleted.
  virtual void doomedSessionCreated(const cloud::Session& session) = 0;
  /// Call it at most ten times a second.
  virtual void progressed(const Progress& progress) = 0;
  /// The run waits for its next try, number `attempt`.
  virtual void retrying(std::chrono::seconds wait, int attempt, std::string_view cause) = 0;
  virtual void cancelled() = 0;
  virtual void done(std::uint64_t totalByteCount) = 0;
  virtual void deleted() = 0;
  virtual void failed(const FailureReport& report) = 0;

  /// The error number of the first write that failed, else 0. Nothing is written after it.
  int writeError() const { return writeError_; }

 protected:
  explicit ResultOutput(int descriptor) : descriptor_(descriptor) {}

  int descriptor() const { return descriptor_; }
  void write(std::string_view bytes);

 private:
  const int descriptor_;
  int writeError_ = 0;
};

}  // namespace quillbay::cli
