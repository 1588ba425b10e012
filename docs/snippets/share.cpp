#include "TestService.h"

// [share]
#include <QuillbayCloud/QuillbayCloud.h>

#include <iostream>

using namespace quillbay;
// [share]

int main() {
  useTestService();

  // [share]
  auto controller = cloud::SessionController::create(
      cloud::SessionContext("my-app", {platform::URL::fileURL("video.mp4")}),
      cloud::SessionConfiguration::default_());
  controller->createSession(
      [](const cloud::Session& session) { std::cout << session.url().absoluteString() << '\n'; },
      [](std::expected<cloud::Session, cloud::QuillbayCloudError> result) {
        if (!result) std::cerr << result.error().description() << '\n';
        platform::stopMainQueue();
      });
  platform::runMainQueue();
  // [share]
}
