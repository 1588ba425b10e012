// bench-connections AUTHORITY-FILE ROUTE: the seconds of a second request on a new TLS connection,
// and those of the first.

#include <QuillbayPlatform/URLSession.h>

#include <iostream>
#include <optional>

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/MainQueueRun.h"
#include "benchmarks/support/Stopwatch.h"

namespace quillbay::bench {
namespace {

/// Every POST opens a connection of its own.
double secondsOfPost(const std::string& address, int expectedStatusCode) {
  const auto url = platform::URL::parse(address);
  if (!url) fail("no address: " + address);
  platform::URLRequest request("POST", *url);
  request.body = "{}";
  std::optional<int> statusCode;
  const Stopwatch stopwatch;
  const auto task = platform::URLSession::shared().dataTask(
      std::move(request), [&](const auto&, const auto& response, const auto&) {
        const int status = response ? response->statusCode() : 0;
        platform::DispatchQueue::main().async([&statusCode, status] { statusCode = status; });
      });
  task->resume();
  runMainQueueUntil([&] { return statusCode.has_value(); });
  const double seconds = stopwatch.seconds();
  if (statusCode != expectedStatusCode) fail("a request failed");
  return seconds;
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 2) fail("usage: bench-connections AUTHORITY-FILE ROUTE");
  useServer(arguments[0], arguments[1]);
  // Refused at once; what remains of the first request is its connection, not the start of threads.
  secondsOfPost("http://192.0.2.1/", 0);
  const std::string address = kServiceBase + "bench/session";
  const double first = secondsOfPost(address, 200);
  const double second = secondsOfPost(address, 200);
  std::cout << second << ' ' << first << '\n';
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-connections", argumentCount, arguments,
                                     quillbay::bench::run);
}
