// Data and upload tasks against a server that sends anything, in any order. The first three bytes
// of an input choose the task, the rest is the script of the server (see WirePeer.h).
#include <fuzz/support/Expect.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "support/Requests.h"
#include "support/Tasks.h"

using namespace quillbay;
using fuzz::expect;
using fuzz::Request;

namespace {

constexpr std::array<const char*, 4> kMethods = {"GET", "POST", "DELETE", "PUT"};

/// Files that are sent with the head, in several pieces, and with "Expect: 100-continue". The long
/// ones take their time and are asked for by name.
std::size_t fileByteCount(char choice) {
  if (choice == 'x') return (1 << 20) + 1;
  if (choice == 'l') return 100'000;
  constexpr std::array<std::size_t, 4> kByteCounts = {0, 1, 3000, 20'000};
  return kByteCounts[static_cast<unsigned char>(choice) % kByteCounts.size()];
}

std::size_t countOf(std::string_view text, std::string_view word) {
  std::size_t count = 0;
  for (std::size_t i = text.find(word); i != std::string_view::npos; i = text.find(word, i + 1))
    ++count;
  return count;
}

/// The bytes of the replies: a mark may split one anywhere (see WirePeer.h).
std::string withoutMarks(std::string_view script) {
  std::string replies(script);
  for (std::size_t i = 0; (i = replies.find('\0', i)) != std::string::npos;) {
    const bool isMark = i + 1 < replies.size() && std::string_view("hbk").contains(replies[i + 1]);
    if (isMark) {
      replies.erase(i, 2);
    } else {
      ++i;
    }
  }
  return replies;
}

std::vector<Request> requestsOf(const fuzz::TaskEnd& end) {
  std::vector<Request> requests;
  for (const std::string& received : end.received) {
    std::ranges::move(fuzz::requestsIn(received), std::back_inserter(requests));
  }
  return requests;
}

/// What holds of every request on the wire.
void expectInOrder(const Request& request) {
  expect(request.values("transfer-encoding").empty(), "no body is sent in chunks");
  expect(request.values("content-length").size() <= 1, "a length is announced once");
  expect(request.values("host").size() == 1, "a request names its host");
  const auto tokens = request.values("x-quillbay-session-token");
  expect(tokens.empty() || request.values("host").front() == fuzz::kHost,
         "the token goes to its own origin alone");
  expect(tokens.size() <= 1, "once");
}

/// Each reply may lead to one more request. Those of `repeating` may lead to one of the same
/// method.
void expectNotRepeated(const std::vector<Request>& requests, std::string_view script,
                       const std::string& method,
                       std::initializer_list<std::string_view> repeating) {
  constexpr std::size_t kMaximumRedirectCount = 10;
  const auto sameMethod = static_cast<std::size_t>(
      std::ranges::count_if(requests, [&](const Request& r) { return r.method() == method; }));
  const std::string replies = withoutMarks(script);
  const std::size_t withoutAsking = countOf(replies, " 417");
  std::size_t following = withoutAsking;
  for (const std::string_view status : repeating) following += countOf(replies, status);
  if (method == "POST" || method == "PUT") {
    expect(sameMethod <= 1 + following, "nothing is sent twice unasked");
  }
  expect(requests.size() <= 1 + kMaximumRedirectCount + withoutAsking, "redirects are bounded");
}

void expectDataTask(char method, char body, std::string_view script) {
  auto request = fuzz::taskRequest(kMethods[static_cast<unsigned char>(method) % kMethods.size()]);
  request.headerFields[fuzz::kTokenField] = "token";
  if (body % 2 == 1) request.body = R"({"fingerprint":"00"})";
  const auto end = fuzz::runTask(request, std::nullopt, script);
  const auto requests = requestsOf(end);
  std::ranges::for_each(requests, expectInOrder);
  // 301 and 302 make a GET of a POST alone.
  if (request.method == "PUT") {
    expectNotRepeated(requests, script, request.method, {" 301", " 302", " 307", " 308"});
  } else {
    expectNotRepeated(requests, script, request.method, {" 307", " 308"});
  }
  if (!end.data || script.find("zip") != std::string_view::npos) return;
  expect(end.data->size() <= script.size(), "no more is given than was sent");
}

void expectUpload(char file, char announcement, std::string_view script) {
  const std::size_t byteCount = fileByteCount(file);
  auto request = fuzz::taskRequest("PUT");
  // Nothing, the file's length, or less than that.
  const std::size_t announced = announcement % 3 == 2 ? byteCount / 2 : byteCount;
  if (announcement % 3 != 0) request.headerFields["Content-Length"] = std::to_string(announced);
  const auto end = fuzz::runTask(request, fuzz::fileOf(byteCount), script);
  const auto requests = requestsOf(end);
  std::ranges::for_each(requests, expectInOrder);
  expectNotRepeated(requests, script, request.method, {" 307", " 308"});
  const std::string content = fuzz::contentOf(announced);
  for (const Request& sent : requests) {
    expect(sent.method() == "PUT", "an upload stays a PUT");
    expect(sent.bodyByteCount() == announced, "the announced length is the file's");
    expect(content.starts_with(sent.body), "the bytes are the file's");
  }
  expect(!end.isSuccess() || std::ranges::any_of(requests, &Request::isWhole),
         "a success comes after the whole file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), byteCount);
  if (input.size() < 3) return 0;
  const std::string_view script = input.substr(3);
  if (input[0] % 2 == 0) {
    expectDataTask(input[1], input[2], script);
  } else {
    expectUpload(input[1], input[2], script);
  }
  return 0;
}
