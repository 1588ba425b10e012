// A GLib host: shares the files named on the command line from a GMainLoop and prints their link.

#include "TestService.h"

#include <QuillbayCloud/QuillbayCloud.h>

#include <glib.h>

#include <cstdlib>
#include <iostream>

using namespace quillbay;

namespace {

void postToMainLoop(std::function<void()> runOneItem) {
  auto* const work = new std::function<void()>(std::move(runOneItem));
  g_idle_add_full(
      G_PRIORITY_DEFAULT,
      [](gpointer data) -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
      },
      work, [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

}  // namespace

int main(int argumentCount, char** arguments) {
  platform::setMainQueuePoster(postToMainLoop);
  useTestService();
  std::vector<platform::URL> files;
  for (int i = 1; i < argumentCount; ++i) files.push_back(platform::URL::fileURL(arguments[i]));

  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  int status = EXIT_FAILURE;
  const auto controller = cloud::SessionController::create({"glib-example", files},
                                                           cloud::SessionConfiguration::default_());
  controller->createSession(
      [](const cloud::Session& session) {
        std::cout << session.url().absoluteString() << '\n' << std::flush;
      },
      [&](std::expected<cloud::Session, cloud::QuillbayCloudError> result) {
        if (result) status = EXIT_SUCCESS;
        if (!result) std::cerr << result.error().description() << '\n';
        g_main_loop_quit(loop);
      });
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  return status;
}
