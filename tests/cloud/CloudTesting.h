#pragma once

#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/service/Configuration.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <any>
#include <future>
#include <nlohmann/json.hpp>

#include "FakeService.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

namespace quillbay::test {

using Call = FakeService::Call;
using Lines = std::vector<std::string>;

template <class T>
auto decoded(std::string_view json,
             platform::JSONDatePolicy policy = platform::JSONDatePolicy::secondsSince2001) {
  return platform::JSONDecoder(policy).decode<T>(json);
}

/// A host's logger. Lines read "LEVEL FUNCTION: MESSAGE".
class RecordingLogger {
  enum Level { silent, atDebug, atError };

  template <Level level>
  static void record(const cloud::Configuration::LogMessage& message, std::string_view file,
                     std::string_view function, int line, const std::any& context) {
    if (level == silent) return;
    EXPECT_TRUE(file.starts_with("QuillbayCloud/")) << file;
    EXPECT_GT(line, 0);
    EXPECT_FALSE(context.has_value());
    const char* const name = level == atDebug ? "debug " : "error ";
    const std::lock_guard lock(mutex_);
    lines_.push_back(name + std::string(function) + ": " + message());
  }

 public:
  static constexpr auto& debug = record<atDebug>;
  static constexpr auto& error = record<atError>;

  /// Installs it in place of another, without the lines of earlier tests.
  static void install() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
    cloud::Configuration::setLog<SilentLogger>();
    cloud::Configuration::setLog<RecordingLogger>();
  }
  static Lines lines() {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  static std::string lastLine() { return lines().empty() ? "" : lines().back(); }

 private:
  struct SilentLogger {
    static constexpr auto& debug = record<silent>;
    static constexpr auto& error = record<silent>;
  };

  static inline std::mutex mutex_;
  static inline Lines lines_;
};

/// What a host's callbacks capture: counts those that live and fails the test when it is destroyed
/// on another thread than the test's.
class HostObject {
 public:
  explicit HostObject(int& livingCount) : livingCount_(livingCount) { ++livingCount_; }
  HostObject(const HostObject&) = delete;
  HostObject& operator=(const HostObject&) = delete;
  ~HostObject() {
    EXPECT_TRUE(isOnItsThread()) << "destroyed on another thread";
    --livingCount_;
  }

  bool isOnItsThread() const { return std::this_thread::get_id() == thread_; }

 private:
  int& livingCount_;
  std::thread::id thread_ = std::this_thread::get_id();
};

/// "uploading 1", or "failed in uploading 1".
inline std::string textOf(const cloud::SessionActivity& activity) {
  constexpr const char* kNames[] = {"idle",       "fingerprinting", "creating",
                                    "requesting", "uploading",      "finalizing",
                                    "finished",   "failed",         "cancelled"};
  const auto nameOf = [&](auto step) -> std::string { return kNames[static_cast<int>(step)]; };
  std::string text = nameOf(activity.step);
  const bool isSuccess = activity.step == cloud::SessionActivity::Step::finished;
  if (activity.isOver() && !isSuccess) text += " in " + nameOf(activity.endedIn);
  return activity.file ? text + " " + std::to_string(activity.file->index) : text;
}

/// One run of a controller and everything that its host is told, in order: "session",
/// then "done" or the error's case and values ("webservice: status 410: Gone").
struct Host {
  explicit Host(std::vector<platform::URL> files,
                cloud::SessionConfiguration configuration = cloud::SessionConfiguration::default_())
      : controller(cloud::SessionController::create({"host-1", std::move(files)},
                                                    std::move(configuration))) {}

  void share() {
    controller->createSession(
        [this, object = std::make_unique<HostObject>(livingObjectCount)](const auto& session) {
          events.emplace_back("session");
          sessions.push_back(session);
          onSession();
        },
        completion());
  }
  void resume(const cloud::Session& session, const std::vector<std::size_t>& uploadedItems) {
    controller->resumeSession(session, uploadedItems, completion());
  }
  /// Runs the main queue until the run's callbacks are gone: nothing can come any more, and none of
  /// them keeps the controller alive by holding it.
  [[nodiscard]] bool waitForEnd() const {
    return waitUntil([this] { return livingObjectCount == 0; });
  }
  [[nodiscard]] bool shareToEnd() { return share(), waitForEnd(); }

  /// Called inside the callbacks, after they are noted.
  std::function<void()> onSession = [] {};
  std::function<void()> onEnd = [] {};

  std::shared_ptr<cloud::SessionController> controller;
  Lines events;
  std::vector<cloud::Session> sessions;
  int livingObjectCount = 0;

 private:
  cloud::SessionController::Completion completion() {
    return [this, object = std::make_unique<HostObject>(livingObjectCount)](const auto& result) {
      EXPECT_TRUE(object->isOnItsThread());
      events.emplace_back(result ? "done" : result.error().description());
      if (result) sessions.push_back(*result);
      onEnd();
    };
  }
};

/// The library against a service of the test's, with a logger and files to share.
class ServiceTest : public testing::Test {
 protected:
  ServiceTest() {
    service_.install();
    RecordingLogger::install();
  }

  platform::URL file(const std::string& name, std::string_view content = "") const {
    return platform::URL::fileURL(folder_.write(name, content));
  }
  /// "file-1" to "file-N", each with the content "content of file-1" or so.
  std::vector<platform::URL> files(int count) const {
    std::vector<platform::URL> urls;
    for (int i = 1; i <= count; ++i) {
      const std::string name = "file-" + std::to_string(i);
      urls.push_back(file(name, "content of " + name));
    }
    return urls;
  }
  [[nodiscard]] bool waitForCall(Call call) const {
    return waitUntil([&] { return !service_.requests(call).empty(); });
  }

  const Reply gone_ = Reply::json(R"({"message":"Gone","status":410})", 410);
  const std::thread::id thread_ = std::this_thread::get_id();
  const TemporaryFolder folder_;
  FakeService service_;
  const std::shared_ptr<const cloud::Webservice> webservice_ =
      cloud::Webservice::create(cloud::RequestFactory::create("host-1"));
};

}  // namespace quillbay::test
