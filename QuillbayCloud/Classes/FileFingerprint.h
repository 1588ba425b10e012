#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/URL.h>

#include <atomic>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace quillbay::cloud {

class RunActivity;

/// Internal: computes the SHA-256 (FIPS 180-4) of every file of one list, off the main queue, file
/// after file. For one calculation.
class FileFingerprint : public std::enable_shared_from_this<FileFingerprint> {
 public:
  class FileHasherError;

  /// File URL to digest, 64 lower-case hexadecimal digits.
  using Fingerprints = std::unordered_map<platform::URL, std::string>;
  using Completion = std::move_only_function<void(std::expected<Fingerprints, FileHasherError>)>;

  /// `activity`, which may be null, is told on the main queue how far the calculation is.
  static std::shared_ptr<FileFingerprint> create(std::vector<platform::URL> files,
                                                 std::shared_ptr<RunActivity> activity = nullptr);

  const std::vector<platform::URL>& files() const { return files_; }

  /// Any thread.
  bool isCancelled() const { return isCancelled_; }
  /// Skips the files not yet begun and suppresses the report. Any thread.
  void cancel() { isCancelled_ = true; }

  /// Starts and returns at once. Any thread. `completion` is called at most once, on the main
  /// queue, with an entry for every file, or with the error if there are fewer; not at all after
  /// `cancel`, nor if the object is released before the work begins. It is destroyed there too.
  void calculate(Completion completion);

 private:
  struct Calculation;

  FileFingerprint(std::vector<platform::URL> files, std::shared_ptr<RunActivity> activity);

  Calculation calculation() const;
  void report(Calculation calculation, Completion& completion) const;

  const std::vector<platform::URL> files_;
  const std::shared_ptr<RunActivity> activity_;
  std::atomic<bool> isCancelled_ = false;
};

/// Some file yielded no fingerprint.
class FileFingerprint::FileHasherError final : public platform::Error {
 public:
  static FileHasherError hashCalculationFailed() { return {}; }

  std::string description() const override { return "hashCalculationFailed"; }

 private:
  FileHasherError() = default;
};

}  // namespace quillbay::cloud
