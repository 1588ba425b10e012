#include "NetworkTest.h"

namespace quillbay::test {

using platform::URL;
using platform::URLError;
using platform::URLRequest;
using platform::URLSession;

std::optional<Code> Outcome::code() const {
  if (!error) return std::nullopt;
  return dynamic_cast<const URLError&>(*error).code();
}

RunningTask::RunningTask(URLRequest request, const std::optional<std::filesystem::path>& file,
                         URLSession& session)
    : task_(file ? session.uploadTask(std::move(request), URL::fileURL(*file), handler())
                 : session.dataTask(std::move(request), handler())) {
  task_->resume();
}

URLSession::CompletionHandler RunningTask::handler() {
  std::promise<Outcome> promise;
  outcome_ = promise.get_future().share();
  return [promise = std::move(promise), starter = std::this_thread::get_id()](
             auto data, auto response, auto error) mutable {
    EXPECT_NE(std::this_thread::get_id(), starter);
    // A second call ends the process.
    promise.set_value({std::move(data), std::move(response), std::move(error)});
  };
}

bool RunningTask::isFinished() const {
  return outcome_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

Outcome RunningTask::wait() {
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

URLRequest request(std::string method, std::string_view address) {
  return URLRequest(std::move(method), URL::parse(address).value());
}

URLRequest storeRequest(std::string_view address, std::uint64_t announcedByteCount) {
  URLRequest put = request("PUT", address);
  put.headerFields = {
      {"Content-Length", std::to_string(announcedByteCount)},
      {"Content-Disposition", "attachment; filename=\"a b.txt\"; filename*=UTF-8''a+b.txt"},
      {"Content-Type", "text/plain"}};
  return put;
}

Outcome perform(URLRequest request) { return RunningTask(std::move(request)).wait(); }

Outcome get(std::string_view address) { return perform(request("GET", address)); }

Outcome upload(std::string_view address, const std::filesystem::path& file) {
  return RunningTask(storeRequest(address, std::filesystem::file_size(file)), file).wait();
}

ScriptedServer::ConnectionHandler answering(std::string bytes) {
  return [bytes = std::move(bytes)](Connection& connection) {
    connection.readRequest();
    connection.send(bytes);
    connection.shutdownSending();
    connection.waitForClient();
  };
}

NetworkTest::NetworkTest() { useTestNetwork(); }

void NetworkTest::stallUpload(Connection& connection) {
  connection.readRequest(mebibyte);
  connection.waitFor(Gate());
}

RunningTask NetworkTest::stalledUpload() {
  server_.onConnection(stallUpload);
  RunningTask running(storeRequest(server_.address("/", "localhost"), longByteCount),
                      folder_.writeSparse("stalled", longByteCount));
  EXPECT_TRUE(waitUntil([&] { return running.progress()->fractionCompleted() > 0; }));
  return running;
}

}  // namespace quillbay::test
