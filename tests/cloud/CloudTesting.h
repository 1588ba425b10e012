#pragma once

#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONError.h>
#include <gtest/gtest.h>

#include <any>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillbay::test {

/// Names the cases of a table after their rows: the behaviour that a fault would break.
inline constexpr auto nameOfRow = [](const auto& info) { return std::string(info.param.name); };

template <class T>
auto decoded(std::string_view json,
             platform::JSONDatePolicy policy = platform::JSONDatePolicy::secondsSince2001) {
  return platform::JSONDecoder(policy).decode<T>(json);
}

/// Why the text does not read as a T: the kind of failure and the key, as in "missingKey id"; ""
/// if it does.
template <class T>
std::string readingFailure(std::string_view json) {
  const auto result = decoded<T>(json);
  if (result) return "";
  const auto* error = dynamic_cast<const platform::JSONError*>(result.error().get());
  if (!error) return "no JSONError";
  constexpr const char* kKinds[] = {"missingKey",   "nullValue",     "wrongType",
                                    "corruptValue", "invalidSyntax", "unwritable"};
  return std::string(kKinds[static_cast<std::size_t>(error->kind())]) + " " + error->keyPath();
}

/// A session with the items "item-1" to "item-N".
cloud::Session sessionWithItems(int count);

/// A host's logger. Lines read "LEVEL FUNCTION: MESSAGE".
struct RecordingLogger {
  using Message = std::function<std::string()>;
  static void debug(const Message& message, std::string_view file, std::string_view function,
                    int line, const std::any& context);
  static void error(const Message& message, std::string_view file, std::string_view function,
                    int line, const std::any& context);

  /// Installs it, without the lines of earlier tests.
  static void install();
  static std::vector<std::string> lines();
  static bool hasLine(std::string_view line);
};

/// What a host's callbacks capture: counts its living copies' owner and fails the test when it is
/// destroyed on another thread than the test's.
class HostObject {
 public:
  explicit HostObject(int& livingCount);
  HostObject(const HostObject&) = delete;
  HostObject& operator=(const HostObject&) = delete;
  ~HostObject();

 private:
  int& livingCount_;
  std::thread::id thread_ = std::this_thread::get_id();
};

/// One run of a controller and everything that its host is told, in order: "session",
/// then "done" or the error's case and values ("webservice: status 410: Gone").
class Host {
 public:
  explicit Host(std::vector<platform::URL> files, cloud::SessionConfiguration configuration =
                                                      cloud::SessionConfiguration::default_());

  void share();
  /// Runs the main queue until the run's callbacks are gone: nothing can come any more.
  [[nodiscard]] bool waitForEnd();

  /// Called inside the callbacks, after they are noted.
  std::function<void()> onSession = [] {};
  std::function<void()> onEnd = [] {};

  std::shared_ptr<cloud::SessionController> controller;
  std::vector<std::string> events;
  std::vector<cloud::Session> sessions;
  int livingObjectCount = 0;
};

}  // namespace quillbay::test
