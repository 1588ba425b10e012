// bench-upload AUTHORITY-FILE ROUTE ADDRESS FILE [observe]: sends the file by the library's upload
// task. With `observe`, prints the number of progress deliveries and the seconds of the upload.

#include <QuillbayPlatform/URLSession.h>

#include <filesystem>
#include <iostream>
#include <optional>

#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/MainQueueRun.h"
#include "benchmarks/support/Stopwatch.h"

namespace quillbay::bench {
namespace {

platform::URLRequest uploadRequest(const std::string& address, const std::string& path) {
  const auto url = platform::URL::parse(address);
  if (!url) fail("no address: " + address);
  platform::URLRequest request("PUT", *url);
  request.headerFields["Content-Length"] = std::to_string(std::filesystem::file_size(path));
  request.headerFields["Content-Type"] = "application/octet-stream";
  return request;
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 4) fail("usage: bench-upload AUTHORITY-FILE ROUTE ADDRESS FILE [observe]");
  useServer(arguments[0], arguments[1]);

  std::optional<int> statusCode;
  const auto session = platform::URLSession::create();
  const auto task = session->uploadTask(
      uploadRequest(arguments[2], arguments[3]), platform::URL::fileURL(arguments[3]),
      [&](const auto&, const auto& response, const auto&) {
        const int status = response ? response->statusCode() : 0;
        platform::DispatchQueue::main().async([&statusCode, status] { statusCode = status; });
      });
  int deliveryCount = 0;
  platform::Progress::Observation observation;
  if (arguments.size() > 4) {
    observation = task->progress()->observe([&](const auto&) { ++deliveryCount; });
  }
  const Stopwatch stopwatch;
  task->resume();
  runMainQueueUntil([&] { return statusCode && task->progress()->isFinished(); });
  if (statusCode != 200) fail("the upload failed");
  if (arguments.size() > 4) std::cout << deliveryCount << ' ' << stopwatch.seconds() << '\n';
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-upload", argumentCount, arguments,
                                     quillbay::bench::run);
}
