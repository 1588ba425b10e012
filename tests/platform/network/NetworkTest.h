#pragma once

#include "ScriptedServer.h"
#include "TemporaryFolder.h"
#include "TestCertificates.h"
#include "Waiting.h"

#include <QuillbayPlatform/URLError.h>
#include <QuillbayPlatform/URLSession.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <future>

namespace quillbay::test {

using Code = platform::URLError::Code;

/// In every secret that the tests send; must never come back in an error's text.
inline constexpr std::string_view secret = "confidential";
inline constexpr const char* tokenField = "X-QUILLBAY-SESSION-TOKEN";

inline constexpr std::uint64_t mebibyte = 1024 * 1024;
/// Beyond what the sockets' buffers take: it cannot have been sent unless it was read.
inline constexpr std::uint64_t longByteCount = 64 * mebibyte;

/// What a task's completion handler was told.
struct Outcome {
  std::optional<std::string> data;
  std::optional<platform::HTTPURLResponse> response;
  platform::ErrorPtr error;

  /// 0 without a response.
  int status() const { return response ? response->statusCode() : 0; }
  /// The error's; nothing without an error.
  std::optional<Code> code() const;
};

/// A task that has been resumed.
class RunningTask {
 public:
  /// An upload if there is a file.
  explicit RunningTask(platform::URLRequest request,
                       const std::optional<std::filesystem::path>& file = std::nullopt,
                       platform::URLSession& session = platform::URLSession::shared());

  bool isFinished() const;
  const std::shared_ptr<platform::Progress>& progress() const { return task_->progress(); }

  /// Runs the main queue until the task has ended, and checks what holds of every outcome: one
  /// call, on a background thread, with data and response or else an error that tells no secret.
  Outcome wait();

 private:
  platform::URLSession::CompletionHandler handler();

  std::shared_future<Outcome> outcome_;
  std::shared_ptr<platform::URLSessionTask> task_;
};

platform::URLRequest request(std::string method, std::string_view address);
/// A PUT with the three fields of a store upload.
platform::URLRequest storeRequest(std::string_view address, std::uint64_t announcedByteCount);

Outcome perform(platform::URLRequest request);
Outcome get(std::string_view address);
/// Uploads the file, announcing its size of now.
Outcome upload(std::string_view address, const std::filesystem::path& file);

/// A script that reads one request, sends these bytes and ends the connection in order.
ScriptedServer::ConnectionHandler answering(std::string bytes);

class NetworkTest : public testing::Test {
 protected:
  NetworkTest();

  /// A script that takes the beginning of an upload and then nothing more.
  static void stallUpload(Connection& connection);
  /// An upload of the file "stalled" by way of a host's name, once its progress has moved.
  RunningTask stalledUpload();

  const TemporaryFolder folder_;
  ScriptedServer server_;
};

}  // namespace quillbay::test
