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
  std::optional<Code> code() const {
    if (!error) return std::nullopt;
    return dynamic_cast<const platform::URLError&>(*error).code();
  }
};

/// A task that has been resumed.
class RunningTask {
 public:
  /// An upload if there is a file.
  explicit RunningTask(platform::URLRequest request,
                       const std::optional<std::filesystem::path>& file = std::nullopt,
                       platform::URLSession& session = platform::URLSession::shared())
      : task_(file
                  ? session.uploadTask(std::move(request), platform::URL::fileURL(*file), handler())
                  : session.dataTask(std::move(request), handler())) {
    task_->resume();
  }

  bool isFinished() const {
    return outcome_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }
  const std::shared_ptr<platform::Progress>& progress() const { return task_->progress(); }

  /// Runs the main queue until the task has ended, and checks what holds of every outcome: one
  /// call, on a background thread, with data and response or else an error that tells no secret.
  Outcome wait() {
    if (!waitUntil([this] { return isFinished(); })) {
      ADD_FAILURE() << "the task did not end";
      return {};
    }
    drainMainQueue();
    const Outcome& outcome = outcome_.get();
    EXPECT_EQ(outcome.data.has_value(), outcome.error == nullptr);
    EXPECT_TRUE(outcome.response || outcome.error);
    const std::string text = outcome.error ? outcome.error->description() : "";
    EXPECT_THAT(text, testing::Not(testing::HasSubstr(std::string(secret))));
    return outcome;
  }

 private:
  platform::URLSession::CompletionHandler handler() {
    std::promise<Outcome> promise;
    outcome_ = promise.get_future().share();
    return [promise = std::move(promise), starter = std::this_thread::get_id()](
               auto data, auto response, auto error) mutable {
      EXPECT_NE(std::this_thread::get_id(), starter);
      // A second call ends the process.
      promise.set_value({std::move(data), std::move(response), std::move(error)});
    };
  }

  std::shared_future<Outcome> outcome_;
  std::shared_ptr<platform::URLSessionTask> task_;
};

inline platform::URLRequest request(std::string method, std::string_view address,
                                    std::optional<std::string> body = std::nullopt) {
  platform::URLRequest made(std::move(method), platform::URL::parse(address).value());
  made.body = std::move(body);
  return made;
}

/// A PUT with the three fields of a store upload.
inline platform::URLRequest storeRequest(std::string_view address,
                                         std::uint64_t announcedByteCount) {
  platform::URLRequest put = request("PUT", address);
  put.headerFields = {
      {"Content-Length", std::to_string(announcedByteCount)},
      {"Content-Disposition", "attachment; filename=\"a b.txt\"; filename*=UTF-8''a+b.txt"},
      {"Content-Type", "text/plain"}};
  return put;
}

inline Outcome perform(platform::URLRequest request) {
  return RunningTask(std::move(request)).wait();
}

inline Outcome get(std::string_view address) { return perform(request("GET", address)); }

/// Uploads the file, announcing its size of now.
inline Outcome upload(std::string_view address, const std::filesystem::path& file) {
  return RunningTask(storeRequest(address, std::filesystem::file_size(file)), file).wait();
}

class NetworkTest : public testing::Test {
 protected:
  NetworkTest() { useTestNetwork(); }

  /// A script that takes the beginning of an upload and then nothing more.
  static void stallUpload(Connection& connection) {
    connection.readRequest(mebibyte);
    connection.waitFor(Gate());
  }

  /// A script that reads one request, sends these bytes and ends the connection in order.
  static ScriptedServer::ConnectionHandler answering(std::string bytes) {
    return [bytes = std::move(bytes)](Connection& connection) {
      connection.readRequest();
      connection.send(bytes);
      connection.shutdownSending();
      connection.waitForClient();
    };
  }

  const TemporaryFolder folder_;
  ScriptedServer server_;
};

}  // namespace quillbay::test
