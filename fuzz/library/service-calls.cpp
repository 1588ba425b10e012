// Replies that are in order but for one cut: what each must become is known beforehand, for calls
// of the service, data tasks and upload tasks.
#include <QuillbayCloud/service/Webservice.h>
#include <fuzz/support/Expect.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "support/Tasks.h"
#include "support/WirePeer.h"

using namespace quillbay;
using cloud::Webservice;
using fuzz::expect;

namespace {

/// The script's marks begin with a NUL, lines end with the others.
std::string without(std::string text, std::string_view characters) {
  std::erase_if(text, [&](char c) { return characters.find(c) != std::string_view::npos; });
  return text;
}

std::string trimmed(const std::string& text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::string chunked(std::string_view body, std::size_t chunkByteCount) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  while (!body.empty()) {
    const std::string_view chunk = body.substr(0, chunkByteCount);
    text.append({kDigits[chunk.size()], '\r', '\n'}).append(chunk).append("\r\n");
    body.remove_prefix(chunk.size());
  }
  return text + "0\r\n\r\n";
}

struct Reply {
  explicit Reply(FuzzedDataProvider& input) {
    status = input.ConsumeIntegralInRange(200, 599);
    const std::string fields =
        "Content-Encoding: " + input.PickValueInArray<std::string>({"identity", "gzip", "br"}) +
        "\r\n";
    const bool isAfterInterim = input.ConsumeBool();
    const auto framing = input.PickValueInArray({'c', 'l', 'e'});
    const auto chunkByteCount = input.ConsumeIntegralInRange<std::size_t>(1, 15);
    const auto cutByteCount = input.ConsumeIntegralInRange<std::size_t>(0, 4);
    tag = without(input.ConsumeRandomLengthString(32), std::string_view("\0\r\n", 3));
    body = without(input.ConsumeRemainingBytesAsString(), std::string_view("\0", 1));

    std::string framed = framing == 'c' ? chunked(body, chunkByteCount) : body;
    head = isAfterInterim ? "HTTP/1.1 103 Early Hints\r\nETag: early\r\n\r\n" : "";
    head += "HTTP/1.1 " + std::to_string(status) + " Reason\r\n" + fields + "ETag: " + tag + "\r\n";
    if (framing == 'c') head += "Transfer-Encoding: chunked\r\n";
    if (framing == 'l') head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    head += "\r\n";
    if (status == 204 || status == 304) body.clear();
    // libcurl does not miss the last line end of a body in chunks.
    const bool isCut = framing != 'e' && cutByteCount > (framing == 'c') && !framed.empty();
    if (isCut) framed.resize(framed.size() - std::min(cutByteCount, framed.size()));
    isWhole = !isCut || status == 204 || status == 304;
    bytes = head + framed;
  }

  int status;
  std::string tag;
  std::string head;
  std::string body;  // as it is to arrive
  std::string bytes;
  bool isWhole;
};

Webservice::RawResult called(std::string_view script) {
  auto result = std::make_shared<std::optional<Webservice::RawResult>>();
  const auto service = Webservice::create(cloud::RequestFactory::create("fuzz"));
  service->perform(fuzz::taskRequest("GET"), [result](auto outcome) {
    platform::DispatchQueue::main().async([result, outcome = std::move(outcome)] {
      expect(!*result, "a call ends once");
      result->emplace(outcome);
    });
  });
  fuzz::WirePeer::shared().play(script, [&] { return result->has_value(); });
  return **result;
}

void expectClassified(const Reply& reply) {
  const auto result = called(std::string("\0h", 2) + reply.bytes);
  if (reply.isWhole && reply.status / 100 == 2) {
    return expect(result && *result == reply.body, "a success gives its body");
  }
  expect(!result, "all else is an error");
  const Webservice::Error& error = result.error();
  if (!reply.isWhole) {
    return expect(error.as<Webservice::Error::Underlying>(), "a reply that was cut is no reply");
  }
  const auto refusal = platform::JSONDecoder().decode<cloud::CloudError>(reply.body);
  const auto* told = error.as<Webservice::Error::Cloud>();
  expect((told != nullptr) == refusal.has_value(), "a refusal is told if its record reads");
  expect(!told || told->error == *refusal, "as the record says");
  expect(told || error.as<Webservice::Error::Parse>(), "another refusal makes no sense");
  expect(error.description().find('\n') == std::string::npos, "a description is a single line");
}

void expectDelivered(const Reply& reply, const fuzz::TaskEnd& end) {
  expect(end.response.has_value(), "a head that is complete is given");
  expect(end.response->statusCode() == reply.status, "with its status");
  expect(end.response->valueForHTTPHeaderField("eTAG") == trimmed(reply.tag), "and its fields");
  expect(end.data.has_value() == reply.isWhole, "a body is given if it is whole");
  expect(!end.data || *end.data == reply.body, "as it was sent");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  FuzzedDataProvider input(bytes, byteCount);
  const int kind = input.ConsumeIntegralInRange(0, 2);
  const Reply reply(input);
  // What is packed is another fuzzer's matter.
  if (reply.body.starts_with("\x1F\x8B")) return 0;
  if (kind == 0) expectClassified(reply);
  const std::string awaitHead("\0h", 2);
  if (kind == 1) {
    expectDelivered(reply,
                    fuzz::runTask(fuzz::taskRequest("GET"), std::nullopt, awaitHead + reply.bytes));
  }
  if (kind == 2) {
    const std::string awaitBody("\0b", 2);
    expectDelivered(reply, fuzz::runTask(fuzz::taskRequest("PUT"), fuzz::fileOf(3000),
                                         awaitHead + awaitBody + reply.bytes));
  }
  return 0;
}
