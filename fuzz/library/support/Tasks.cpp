#include "Tasks.h"

#include <QuillbayPlatform/URLSession.h>
#include <sys/mman.h>
#include <unistd.h>

#include <map>

#include "WirePeer.h"
#include "fuzz/support/Expect.h"

namespace quillbay::fuzz {
namespace {

/// Part of the address.
constexpr std::string_view kSecret = "secret";

}  // namespace

platform::URLRequest taskRequest(std::string method) {
  constexpr int kLongerThanAnyPauseSeconds = 100'000;
  platform::URLRequest request(std::move(method), platform::URL::parse(kAddress).value());
  request.timeoutSeconds = kLongerThanAnyPauseSeconds;
  return request;
}

TaskEnd runTask(const platform::URLRequest& request, const std::optional<platform::URL>& file,
                std::string_view script) {
  // The handler lives on in the main queue for a moment.
  struct State {
    TaskEnd end;
    std::atomic<int> callCount = 0;
  };
  const auto state = std::make_shared<State>();
  auto handler = [state](auto data, auto response, auto error) {
    expect(state->callCount == 0, "a task ends once");
    state->end = {std::move(data), std::move(response), std::move(error), {}};
    platform::DispatchQueue::main().async([state] { ++state->callCount; });
  };
  auto& session = platform::URLSession::shared();
  const auto task = file ? session.uploadTask(request, *file, std::move(handler))
                         : session.dataTask(request, std::move(handler));
  task->resume();
  TaskEnd& end = state->end;
  auto received = WirePeer::shared().play(script, [&] { return state->callCount > 0; });
  end.received = std::move(received);

  expect(end.data.has_value() == (end.error == nullptr), "a task has data or an error");
  expect(end.response || end.error, "a task has a response or an error");
  const bool mayTellSecret = !end.error || script.find(kSecret) != std::string_view::npos;
  expect(mayTellSecret || end.error->description().find(kSecret) == std::string::npos,
         "an error tells no secret that the server does not tell");
  if (!end.response) return end;
  const int status = end.response->statusCode();
  expect(status >= 200 && status <= 999, "a final reply has a status of three digits");
  return end;
}

std::string contentOf(std::size_t byteCount) {
  std::string content(byteCount, '\0');
  for (std::size_t i = 0; i < byteCount; ++i) content[i] = static_cast<char>(i % 251);
  return content;
}

platform::URL fileOf(std::size_t byteCount) {
  static std::map<std::size_t, int> descriptors;
  const auto [place, isNew] = descriptors.try_emplace(byteCount, -1);
  if (isNew) {
    const std::string content = contentOf(byteCount);
    place->second = memfd_create("content", MFD_CLOEXEC);
    expect(write(place->second, content.data(), byteCount) == static_cast<ssize_t>(byteCount),
           "a file in memory");
  }
  return platform::URL::fileURL("/proc/self/fd/" + std::to_string(place->second));
}

}  // namespace quillbay::fuzz
