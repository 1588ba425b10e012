#include <QuillbayCloud/QuillbayCloud.h>

#include <string>

#include "Promises.h"
#include "TestService.h"

using namespace quillbay;

namespace {

struct Bar {
  void set(double newFraction) { fraction = newFraction; }
  void set(std::uint64_t done, std::uint64_t total) {
    if (total > 0) fraction = static_cast<double>(done) / static_cast<double>(total);
  }
  double fraction = 0;
};

struct Label {
  void set(const std::string& newText) { text = newText; }
  std::string text;
};

std::shared_ptr<cloud::SessionController> makeController() {
  return cloud::SessionController::create(
      cloud::SessionContext("my-app", {platform::URL::fileURL("video.mp4")}),
      cloud::SessionConfiguration::default_());
}

void run(cloud::SessionController& controller) {
  controller.createSession([](const auto&) { platform::stopMainQueue(); });
  platform::runMainQueue();
}

void showProgress() {
  Bar bar;
  const auto controller = makeController();
  // [progress]
  auto observation = controller->progress()->observe(
      [&](const platform::Progress& progress) { bar.set(progress.fractionCompleted()); });
  // [progress]
  run(*controller);
  platform::runMainQueue([&] { return bar.fraction == 1; }, std::chrono::seconds(10));
  expect(bar.fraction == 1, "the progress moves to its end");
}

void showActivity() {
  Bar bar;
  Label label;
  const auto controller = makeController();
  // [activity]
  using Step = cloud::SessionActivity::Step;

  auto observation = controller->observeActivity([&](const cloud::SessionActivity& activity) {
    if (activity.step == Step::fingerprinting) {
      bar.set(activity.fingerprintedByteCount, activity.totalByteCount);
    } else if (activity.step == Step::uploading) {
      label.set(activity.file->url.lastPathComponent());
      bar.set(activity.sentByteCount, activity.totalByteCount);
    }
  });
  // [activity]
  run(*controller);
  expect(label.text == "video.mp4", "the activity names the file that is uploaded");
}

}  // namespace

int main() {
  useTestService();
  showProgress();
  showActivity();
}
