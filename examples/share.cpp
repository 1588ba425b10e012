// The smallest host: shares the files named on the command line and prints their link.

#include "TestService.h"

#include <QuillbayCloud/QuillbayCloud.h>

#include <cstdlib>
#include <iostream>

using namespace quillbay;

int main(int argumentCount, char** arguments) {
  std::vector<platform::URL> files;
  for (int i = 1; i < argumentCount; ++i) files.push_back(platform::URL::fileURL(arguments[i]));

  useTestService();

  int status = EXIT_FAILURE;
  const auto controller = cloud::SessionController::create({"share-example", files},
                                                           cloud::SessionConfiguration::default_());
  controller->createSession(
      [](const cloud::Session& session) {
        std::cout << session.url().absoluteString() << '\n' << std::flush;
      },
      [&](std::expected<cloud::Session, cloud::QuillbayCloudError> result) {
        if (result) status = EXIT_SUCCESS;
        if (!result) std::cerr << result.error().description() << '\n';
        platform::stopMainQueue();
      });
  platform::runMainQueue();
  return status;
}
