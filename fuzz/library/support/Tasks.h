#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/HTTPURLResponse.h>
#include <QuillbayPlatform/URL.h>
#include <QuillbayPlatform/URLRequest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::fuzz {

inline constexpr std::string_view kAddress = "http://127.0.0.1:8080/a?signature=secret";
inline constexpr std::string_view kHost = "127.0.0.1:8080";
inline constexpr const char* kTokenField = "X-QUILLBAY-SESSION-TOKEN";

/// How a task of the library ended, and what arrived of it at the other end.
struct TaskEnd {
  std::optional<std::string> data;
  std::optional<platform::HTTPURLResponse> response;
  platform::ErrorPtr error;
  std::vector<std::string> received;  ///< on each connection

  bool isSuccess() const { return response && response->statusCode() / 100 == 2 && !error; }
};

/// A request to `kAddress` that waits as long as the fuzzer is paused.
platform::URLRequest taskRequest(std::string method);

/// Runs a task to its end against the script (see WirePeer.h) and checks what holds of every one.
/// An upload if there is a file.
TaskEnd runTask(const platform::URLRequest& request, const std::optional<platform::URL>& file,
                std::string_view script);

/// A file of that many bytes, made once. None is on a disk.
platform::URL fileOf(std::size_t byteCount);
/// What that file holds.
std::string contentOf(std::size_t byteCount);

}  // namespace quillbay::fuzz
