#include "CloudTesting.h"

#include <QuillbayCloud/service/Configuration.h>

#include <mutex>

#include "Waiting.h"

namespace quillbay::test {
namespace {

std::mutex linesMutex;
std::vector<std::string> recordedLines;

void record(std::string_view level, const RecordingLogger::Message& message, std::string_view file,
            std::string_view function, int line, const std::any& context) {
  EXPECT_TRUE(file.starts_with("QuillbayCloud/")) << file;
  EXPECT_GT(line, 0);
  EXPECT_FALSE(context.has_value());
  const std::lock_guard lock(linesMutex);
  recordedLines.push_back(std::string(level) + " " + std::string(function) + ": " + message());
}

struct SilentLogger {
  static void debug(const RecordingLogger::Message& /*message*/, std::string_view /*file*/,
                    std::string_view /*function*/, int /*line*/, const std::any& /*context*/) {}
  static constexpr auto& error = debug;
};

}  // namespace

void RecordingLogger::debug(const Message& message, std::string_view file,
                            std::string_view function, int line, const std::any& context) {
  record("debug", message, file, function, line, context);
}

void RecordingLogger::error(const Message& message, std::string_view file,
                            std::string_view function, int line, const std::any& context) {
  record("error", message, file, function, line, context);
}

void RecordingLogger::install() {
  const std::lock_guard lock(linesMutex);
  recordedLines.clear();
  cloud::Configuration::setLog<SilentLogger>();
  cloud::Configuration::setLog<RecordingLogger>();
}

std::vector<std::string> RecordingLogger::lines() {
  const std::lock_guard lock(linesMutex);
  return recordedLines;
}

HostObject::HostObject(int& livingCount) : livingCount_(livingCount) { ++livingCount_; }

HostObject::~HostObject() {
  EXPECT_EQ(std::this_thread::get_id(), thread_) << "destroyed on another thread";
  --livingCount_;
}

Host::Host(std::vector<platform::URL> files, cloud::SessionConfiguration configuration)
    : controller(cloud::SessionController::create({"host-1", std::move(files)},
                                                  std::move(configuration))) {}

void Host::share() {
  controller->createSession(
      [this, object = std::make_unique<HostObject>(livingObjectCount)](const auto& session) {
        events.emplace_back("session");
        sessions.push_back(session);
        onSession();
      },
      [this, object = std::make_unique<HostObject>(livingObjectCount)](auto result) {
        events.emplace_back(result ? "done" : result.error().description());
        if (result) sessions.push_back(*result);
        onEnd();
      });
}

bool Host::waitForEnd() {
  return waitUntil([this] { return livingObjectCount == 0; });
}

ServiceTest::ServiceTest() {
  service_.install();
  RecordingLogger::install();
}

platform::URL ServiceTest::file(const std::string& name, std::string_view content) const {
  return platform::URL::fileURL(folder_.write(name, content));
}

std::vector<platform::URL> ServiceTest::files(int count) const {
  std::vector<platform::URL> urls;
  for (int i = 1; i <= count; ++i) {
    const std::string name = "file-" + std::to_string(i);
    urls.push_back(file(name, "content of " + name));
  }
  return urls;
}

bool ServiceTest::waitForCall(Call call) const {
  return waitUntil([&] { return !service_.requests(call).empty(); });
}

}  // namespace quillbay::test
