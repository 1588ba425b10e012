// bench-heap ITEMS: heap bytes of the sessions that as many uploaders hold, of one session, and of
// the whole queue of uploaders.

#include <QuillbayCloud/Classes/ActivityMonitor.h>
#include <QuillbayCloud/Classes/SessionItemUploadQueue.h>
#include <QuillbayCloud/model/Session.h>
#include <malloc.h>

#include <iostream>

#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/SessionText.h"

namespace quillbay::bench {
namespace {

std::size_t heapByteCount() {
  const auto information = mallinfo2();
  return information.uordblks + information.hblkhd;
}

cloud::Session decoded(const std::string& text) {
  auto session = platform::JSONDecoder().decode<cloud::Session>(text);
  if (!session) fail("the session does not read");
  return *session;
}

std::vector<platform::URL> fileURLs(std::size_t count) {
  std::vector<platform::URL> files;
  files.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    files.push_back(platform::URL::fileURL("/data/" + itemIdentifier(i) + ".dat"));
  }
  return files;
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1) fail("usage: bench-heap ITEMS");
  const std::size_t itemCount = std::stoul(arguments[0]);
  const std::string text = sessionText(itemCount);
  const auto files = fileURLs(itemCount);
  const auto webservice = cloud::Webservice::create(cloud::RequestFactory::create("bench"));
  cloud::ActivityMonitor::Files announced;
  for (std::size_t i = 0; i < itemCount; ++i) announced.push_back({i, files[i]});
  const auto monitor = cloud::ActivityMonitor::create(itemCount);
  const auto activity = monitor->beginRun(std::move(announced), {});
  decoded(text);  // what the reader keeps for later is no session's

  const std::size_t before = heapByteCount();
  const cloud::Session session = decoded(text);
  const std::size_t one = heapByteCount() - before;
  const std::vector<cloud::Session> sessions(itemCount, session);
  const std::size_t all = heapByteCount() - before;
  const auto queue =
      cloud::SessionItemUploadQueue::create(webservice, session, files, false, activity);
  const std::size_t queueByteCount = heapByteCount() - before - all;
  std::cout << all << ' ' << one << ' ' << queueByteCount << '\n';
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-heap", argumentCount, arguments, quillbay::bench::run);
}
