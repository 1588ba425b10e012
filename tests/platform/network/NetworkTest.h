#pragma once

#include "Request.h"

#include <QuillbayPlatform/URLError.h>
#include <QuillbayPlatform/URLSession.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::test {

/// In every secret that the tests send; must never come back in an error's text.
inline constexpr std::string_view secret = "confidential";
inline constexpr const char* tokenField = "X-QUILLBAY-SESSION-TOKEN";

/// What a task's completion handler was told.
struct Outcome {
  std::optional<std::string> data;
  std::optional<platform::HTTPURLResponse> response;
  platform::ErrorPtr error;

  /// 0 without a response.
  int status() const { return response ? response->statusCode() : 0; }
  std::optional<std::string> field(std::string_view name) const;
  /// The `URLError` code's name, "none" without an error.
  std::string errorName() const;
};

/// A task that has been resumed.
class RunningTask {
 public:
  static RunningTask data(platform::URLRequest request,
                          platform::URLSession& session = platform::URLSession::shared());
  static RunningTask upload(platform::URLRequest request, const std::filesystem::path& file,
                            platform::URLSession& session = platform::URLSession::shared());

  bool isFinished() const;
  platform::URLSessionTask& task() const { return *task_; }
  platform::Progress& progress() const { return *task_->progress(); }

  /// Runs the main queue until the task has ended, and checks what holds of every outcome: one
  /// call, on a background thread, with data and response or else an error that tells no secret.
  Outcome wait();

 private:
  struct State;

  std::shared_ptr<State> state_;
  std::shared_ptr<platform::URLSessionTask> task_;
};

platform::URL parsedURL(std::string_view text);
platform::URLRequest request(std::string method, std::string_view address);
/// A PUT with the three fields of a store upload.
platform::URLRequest storeRequest(std::string_view address, std::uint64_t announcedByteCount);

Outcome perform(platform::URLRequest request);
/// Uploads the file, announcing its size of now.
Outcome upload(std::string_view address, const std::filesystem::path& file);

class NetworkTest : public testing::Test {
 protected:
  NetworkTest();
};

}  // namespace quillbay::test
