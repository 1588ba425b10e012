// bench-share AUTHORITY-FILE ROUTE observe|ignore FILE...: shares the files by the library, with or
// without an observer of its activity.

#include <QuillbayCloud/QuillbayCloud.h>

#include <optional>

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/MainQueueRun.h"

namespace quillbay::bench {
namespace {

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 4) {
    fail("usage: bench-share AUTHORITY-FILE ROUTE observe|ignore FILE...");
  }
  useServer(arguments[0], arguments[1]);
  std::vector<platform::URL> files;
  for (std::size_t i = 3; i < arguments.size(); ++i) {
    files.push_back(platform::URL::fileURL(arguments[i]));
  }
  const auto controller = cloud::SessionController::create({kUsualInstance, std::move(files)},
                                                           cloud::SessionConfiguration::default_());
  std::size_t finishedFileCount = 0;
  platform::Observation observation;
  if (arguments[2] == "observe") {
    observation = controller->observeActivity([&](const cloud::SessionActivity& activity) {
      finishedFileCount = activity.finishedFileCount;
    });
  }
  std::optional<bool> isShared;
  controller->createSession([&](const auto& result) { isShared = result.has_value(); });
  runMainQueueUntil([&] { return isShared.has_value(); });
  if (!*isShared) fail("the share failed");
  if (arguments[2] == "observe" && finishedFileCount == 0) fail("nothing was observed");
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-share", argumentCount, arguments, quillbay::bench::run);
}
