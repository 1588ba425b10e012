// Presigned addresses, and requests that differ from what was signed.
#include <fuzz/support/Expect.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <httplib.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/http/HeadCheck.h"
#include "sandbox/store/PresignedAddress.h"
#include "sandbox/store/StoreError.h"

using namespace quillbay::sandbox;
using quillbay::fuzz::expect;

namespace {

constexpr Instant signedAt{std::chrono::seconds(1'700'000'000)};
const std::string secret(64, 's');

struct Request {
  std::string method;
  std::string target;
  std::vector<std::pair<std::string, std::string>> headers;
};

Request signedRequest(const std::string& path, const std::string& host, const std::string& type) {
  const PresignedAddress addresses({"KEY", secret}, [] { return signedAt; });
  const std::string address = addresses.make("PUT", host, path, type);
  return {"PUT",
          address.substr(std::string("https://").size() + host.size()),
          {{"Host", host}, {"Content-Type", type}}};
}

bool isAccepted(const Request& request, Instant now) {
  httplib::Request received;
  received.method = request.method;
  received.target = request.target;
  for (const auto& [name, value] : request.headers) received.headers.emplace(name, value);
  const Target target(request.target);
  RequestBody body(received, nullptr);
  const PresignedAddress addresses({"KEY", secret}, [&] { return now; });
  try {
    addresses.verify(Call{received, target, body});
    return true;
  } catch (const StoreError&) {
    return false;
  }
}

/// Whether the server lets such a request through to the check of its address.
bool isReadable(const Request& request) {
  HeadCheck head;
  bool isReadable = head.accepts(request.method + " " + request.target + " HTTP/1.1\r\n");
  for (const auto& [name, value] : request.headers) {
    isReadable = isReadable && head.accepts(name + ": " + value + "\r\n");
  }
  return isReadable;
}

/// Cuts a piece out of the text and puts another one there.
void edit(std::string& text, FuzzedDataProvider& input) {
  const auto at = input.ConsumeIntegralInRange<std::size_t>(0, text.size());
  const auto length = input.ConsumeIntegralInRange<std::size_t>(0, text.size() - at);
  text.replace(at, std::min<std::size_t>(length, 200), input.ConsumeRandomLengthString(200));
}

void alter(Request& request, FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange(0, 4)) {
    case 0:
      edit(request.method, input);
      break;
    case 1:
      edit(request.target, input);
      break;
    case 2:
      request.headers.emplace_back(input.ConsumeRandomLengthString(20),
                                   input.ConsumeRandomLengthString(40));
      break;
    case 3:
      edit(request.headers[input.ConsumeIntegralInRange<std::size_t>(0, 1)].second, input);
      break;
    case 4:
      // A doubled parameter of the query.
      request.target +=
          "&" + request.target.substr(request.target.find('?') + 1,
                                      input.ConsumeIntegralInRange<std::size_t>(0, 400));
  }
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// Written anew, so that no fault of the sandbox's own decoder hides.
std::string decoded(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape = text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 &&
                          hexDigit(text[i + 2]) >= 0;
    plain +=
        isEscape ? static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2])) : text[i];
    if (isEscape) i += 2;
  }
  return plain;
}

/// The parts of an address that mean something, however they are written.
std::vector<std::string> meaning(const std::string& target) {
  const std::size_t queryStart = target.find('?');
  std::vector<std::string> parameters;
  std::string query = queryStart == std::string::npos ? "" : target.substr(queryStart + 1);
  while (!query.empty()) {
    const std::string parameter = query.substr(0, query.find('&'));
    query.erase(0, parameter.size() + 1);
    if (parameter.empty()) continue;
    const std::size_t equals = std::min(parameter.find('='), parameter.size());
    const std::size_t valueStart = std::min(equals + 1, parameter.size());
    parameters.push_back(decoded(parameter.substr(0, equals)) + "=" +
                         decoded(parameter.substr(valueStart)));
  }
  std::ranges::sort(parameters);
  parameters.push_back(decoded(target.substr(0, queryStart)));
  return parameters;
}

std::string trimmed(const std::string& text) {
  const std::size_t start = std::min(text.find_first_not_of(" \t"), text.size());
  return text.substr(start, text.find_last_not_of(" \t") + 1 - start);
}

/// The value that the server takes: of several headers, the first.
std::string headerOf(const Request& request, const std::string& name) {
  httplib::Headers headers;
  for (const auto& [key, value] : request.headers) headers.emplace(key, value);
  const auto found = headers.find(name);
  return found == headers.end() ? "" : trimmed(found->second);
}

bool isInTime(Instant now) {
  return now >= signedAt - std::chrono::minutes(15) && now <= signedAt + std::chrono::hours(1);
}

std::string visible(FuzzedDataProvider& input, std::size_t limit) {
  std::string text = input.ConsumeRandomLengthString(limit);
  std::erase_if(text, [](char c) { return c <= ' ' || c > '~'; });
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  FuzzedDataProvider input(bytes, byteCount);
  const std::string path = "/objects/" + input.ConsumeRandomLengthString(30);
  const std::string host = "localhost:" + visible(input, 10);
  const std::string type = visible(input, 30);
  const Instant now =
      signedAt + std::chrono::seconds(input.ConsumeIntegralInRange(-100'000, 100'000));
  const Request original = signedRequest(path, host, type);
  expect(isAccepted(original, now) == isInTime(now),
         "what was signed is accepted while it is valid");

  Request altered = original;
  while (input.remaining_bytes() > 0) alter(altered, input);
  if (!isReadable(altered) || !isAccepted(altered, now)) return 0;
  expect(isInTime(now), "nothing is accepted before or after its time");
  expect(altered.method == original.method, "only the signed method is accepted");
  expect(meaning(altered.target) == meaning(original.target),
         "only the signed address is accepted");
  for (const char* name : {"host", "content-type"}) {
    expect(headerOf(altered, name) == headerOf(original, name), "signed headers are as signed");
  }
  return 0;
}
