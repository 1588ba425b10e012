#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <glib.h>

using namespace quillbay;

int main() {
  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);

  // [poster]
  platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    auto* work = new std::function<void()>(std::move(runOneItem));
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) {
          (*static_cast<std::function<void()>*>(data))();
          return G_SOURCE_REMOVE;
        },
        work, [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
  });
  // [poster]

  platform::DispatchQueue::main().async([loop] { g_main_loop_quit(loop); });
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
}
