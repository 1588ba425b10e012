#include "NetworkTest.h"

#include "TestNetwork.h"
#include "Waiting.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <utility>

namespace quillbay::test {
namespace {

using platform::URL;
using platform::URLError;
using platform::URLRequest;
using platform::URLSession;

const char* nameOf(URLError::Code code) {
  switch (code) {
    case URLError::Code::cancelled:
      return "cancelled";
    case URLError::Code::timedOut:
      return "timedOut";
    case URLError::Code::cannotFindHost:
      return "cannotFindHost";
    case URLError::Code::cannotConnectToHost:
      return "cannotConnectToHost";
    case URLError::Code::networkConnectionLost:
      return "networkConnectionLost";
    case URLError::Code::secureConnectionFailed:
      return "secureConnectionFailed";
    case URLError::Code::unsupportedURL:
      return "unsupportedURL";
    case URLError::Code::tooManyRedirects:
      return "tooManyRedirects";
    case URLError::Code::dataLengthExceedsMaximum:
      return "dataLengthExceedsMaximum";
    case URLError::Code::cannotReadFile:
      return "cannotReadFile";
    case URLError::Code::unknown:
      return "unknown";
  }
  return "?";
}

}  // namespace

struct RunningTask::State {
  // Written by the handler before `callCount`.
  Outcome outcome;
  std::thread::id thread;
  std::atomic<int> callCount = 0;

  static URLSession::CompletionHandler handlerFor(std::shared_ptr<State> state) {
    return [state = std::move(state)](std::optional<std::string> data,
                                      std::optional<platform::HTTPURLResponse> response,
                                      platform::ErrorPtr error) {
      state->outcome = {std::move(data), std::move(response), std::move(error)};
      state->thread = std::this_thread::get_id();
      ++state->callCount;
    };
  }
};

std::optional<std::string> Outcome::field(std::string_view name) const {
  return response ? response->valueForHTTPHeaderField(name) : std::nullopt;
}

std::string Outcome::errorName() const {
  if (!error) return "none";
  const auto* urlError = dynamic_cast<const URLError*>(error.get());
  return urlError ? nameOf(urlError->code()) : "not a URLError: " + error->description();
}

RunningTask RunningTask::data(URLRequest request, URLSession& session) {
  RunningTask running;
  running.state_ = std::make_shared<State>();
  running.task_ = session.dataTask(std::move(request), State::handlerFor(running.state_));
  running.task_->resume();
  return running;
}

RunningTask RunningTask::upload(URLRequest request, const std::filesystem::path& file,
                                URLSession& session) {
  RunningTask running;
  running.state_ = std::make_shared<State>();
  running.task_ =
      session.uploadTask(std::move(request), URL::fileURL(file), State::handlerFor(running.state_));
  running.task_->resume();
  return running;
}

bool RunningTask::isFinished() const { return state_->callCount > 0; }

Outcome RunningTask::wait() {
  if (!waitUntil([this] { return isFinished(); })) {
    ADD_FAILURE() << "the task did not end";
    return {};
  }
  drainMainQueue();
  const Outcome& outcome = state_->outcome;
  EXPECT_EQ(state_->callCount, 1);
  EXPECT_NE(state_->thread, std::this_thread::get_id());
  EXPECT_EQ(outcome.data.has_value(), outcome.error == nullptr);
  if (!outcome.error) {
    EXPECT_TRUE(outcome.response);
  } else {
    EXPECT_EQ(outcome.error->description().find(secret), std::string::npos)
        << outcome.error->description();
  }
  return outcome;
}

URL parsedURL(std::string_view text) {
  auto url = URL::parse(text);
  if (!url) throw std::invalid_argument("no URL: " + std::string(text));
  return *url;
}

URLRequest request(std::string method, std::string_view address) {
  return URLRequest(std::move(method), parsedURL(address));
}

URLRequest storeRequest(std::string_view address, std::uint64_t announcedByteCount) {
  URLRequest put = request("PUT", address);
  put.headerFields = {
      {"Content-Length", std::to_string(announcedByteCount)},
      {"Content-Disposition", "attachment; filename=\"a b.txt\"; filename*=UTF-8''a+b.txt"},
      {"Content-Type", "text/plain"}};
  return put;
}

Outcome perform(URLRequest request) { return RunningTask::data(std::move(request)).wait(); }

Outcome upload(std::string_view address, const std::filesystem::path& file) {
  return RunningTask::upload(storeRequest(address, std::filesystem::file_size(file)), file).wait();
}

NetworkTest::NetworkTest() { useTestNetwork(); }

}  // namespace quillbay::test
