// Bodies of requests that create a session, and the records that are kept of them.
#include <fuzz/support/Expect.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "sandbox/model/SessionRecord.h"

using namespace quillbay::sandbox;
using nlohmann::json;
using quillbay::fuzz::expect;

namespace {

constexpr Instant now{std::chrono::seconds(1'700'000'000)};
constexpr Instant endOfYear9999{std::chrono::seconds(253'402'300'799)};

void expectSound(const AnnouncedFile& file) {
  expect(!file.name.empty() && file.name != "." && file.name != "..", "a file has a name");
  expect(!file.name.contains('/') && !file.name.contains('\0'), "a name is no path");
  expect(file.contentType.contains('/'), "a type is a media type");
  expect(std::ranges::all_of(file.contentType, [](char c) { return c >= ' ' && c <= '~'; }),
         "a type fits into a header");
  expect(file.byteCount <= std::uint64_t{1} << 50, "a file is not endless");
  expect(!file.fingerprint || file.fingerprint->size() == 64, "a fingerprint is a SHA-256 digest");
}

std::optional<std::string> textAt(const json& object, const char* key) {
  if (!object.contains(key)) return std::nullopt;
  return object[key].get<std::string>();
}

void expectAsSent(const CreateRequest& request, const json& body) {
  expect(request.files.size() == body["items"].size(), "every file is taken");
  for (std::size_t i = 0; i < request.files.size(); ++i) {
    const AnnouncedFile& file = request.files[i];
    const json& item = body["items"][i];
    expectSound(file);
    expect(file.name == textAt(item, "file_name") &&
               file.contentType == textAt(item, "content_type") &&
               file.fingerprint == textAt(item, "f"),
           "a file is taken as it was announced");
  }
  const json& config = body["config"];
  expect(text(request.linkType) == textAt(config, "link_type"), "the type of the link is taken");
  expect(request.title == textAt(config, "title"), "the title is taken as it is");
  expect(request.isSecret == config.contains("is_secret"), "a long link is made when asked for");
  expect(request.expiration.has_value() == config.contains("expiration"), "an end is taken");
  if (request.expiration) {
    expect(*request.expiration > now && *request.expiration <= endOfYear9999,
           "the end is to come, in a year of four digits");
  }
  expect(!request.password || (config.contains("p") && !request.password->empty()),
         "only a password that was sent protects");
}

void expectKept(const SessionRecord& record, const CreateRequest& request) {
  const std::string stored = record.toJson();
  const SessionRecord read = SessionRecord::fromJson(stored);
  expect(read.toJson() == stored, "a record is read back as it was written");
  expect(read.title == request.title && read.expiration == request.expiration &&
             read.linkType == request.linkType && read.items.size() == request.files.size(),
         "a record holds what was asked for");
  for (std::size_t i = 0; i < read.items.size(); ++i) {
    const AnnouncedFile& file = read.items[i].file;
    expect(file.name == request.files[i].name && file.contentType == request.files[i].contentType &&
               file.byteCount == request.files[i].byteCount &&
               file.fingerprint == request.files[i].fingerprint,
           "a record holds the files as they were announced");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  const std::string_view body(reinterpret_cast<const char*>(bytes), byteCount);
  try {
    CreateRequest request = CreateRequest::parse(body, now);
    expectAsSent(request, json::parse(body));
    // Its hash is slow by design, and has no form that depends on it.
    request.password.reset();
    const NewSession made = makeSession("host-1", request);
    expect(made.record.isTokenRight(made.token) && !made.record.isTokenRight(made.token + " "),
           "only the token fits");
    expectKept(made.record, request);
  } catch (const InvalidRequest& error) {
    const std::string_view message = error.what();
    expect(!message.empty() && message.size() < 200 && !message.contains('\n'),
           "a refusal is a sentence");
  }
  return 0;
}
