#include "fuzz/sandbox/SandboxInMemory.h"

#include <fuzz/support/Expect.h>

#include "sandbox/support/Digest.h"
#include "sandbox/support/Files.h"
#include "sandbox/support/Hex.h"

namespace quillbay::fuzz {

using namespace sandbox;

namespace {

constexpr const char* host = "localhost:8443";
constexpr const char* token = "token-of-both-sessions";
constexpr const char* password = "open-sesame-0815";
const std::string pendingFile = "Dear all";

Instant fixedTime() { return Instant{std::chrono::seconds(1'700'000'000)}; }

std::string arrivedFile() {
  std::string bytes;
  for (int i = 0; i < 300; ++i) bytes += std::to_string(i) + "\n";
  return bytes;
}

std::string tagOf(const std::string& bytes) {
  Digest digest = Digest::md5();
  digest.update(bytes);
  return "\"" + hexEncode(digest.finish()) + "\"";
}

Item item(const std::string& identifier, const std::string& name, const std::string& bytes) {
  return {identifier, {name, "text/plain", bytes.size(), hexEncode(sha256(bytes))}};
}

SessionRecord record(const std::string& identifier, const std::string& slug) {
  SessionRecord record;
  record.identifier = identifier;
  record.instance = "host-1";
  record.tokenHash = hexEncode(sha256(token));
  record.slug = slug;
  return record;
}

SessionRecord openRecord() {
  SessionRecord open = record("OpenSession", "open-slug");
  open.title = "Überraschung & <more>";
  open.items = {item("ArrivedItem", "numbers.txt", arrivedFile()),
                item("PendingItem", "letter \"ä\".txt", pendingFile)};
  return open;
}

SessionRecord lockedRecord() {
  static const PasswordHash hash = PasswordHash::of(password);
  SessionRecord locked = record("LockedSession", "locked-slug");
  locked.linkType = LinkType::direct;
  locked.passwordHash = hash;
  locked.items = {item("LockedItem", "secret.txt", std::string(SandboxInMemory::protectedText))};
  return locked;
}

bool areEqual(const ItemState& left, const ItemState& right) {
  if (left.isUploaded != right.isUploaded || left.object.has_value() != right.object.has_value())
    return false;
  return !left.object || (left.object->fileName == right.object->fileName &&
                          left.object->entityTag == right.object->entityTag &&
                          left.object->fingerprint == right.object->fingerprint &&
                          left.object->byteCount == right.object->byteCount &&
                          left.object->contentType == right.object->contentType &&
                          left.object->isInline == right.object->isInline);
}

void expectEqual(const Session& left, const Session& right) {
  expect(left.record().toJson() == right.record().toJson(), "a record is read back as it was");
  for (std::size_t i = 0; i < left.record().items.size(); ++i) {
    expect(areEqual(left.item(i), right.item(i)), "the state of an item is read back as it was");
  }
}

void ignore(const std::string&) {}

}  // namespace

SandboxInMemory::SandboxInMemory()
    : sessions_(folder_.path() / "sessions", ignore),
      addresses_({"KEY", std::string(64, 's')}, fixedTime),
      gate_(std::string(64, 'c'), fixedTime),
      service_(sessions_, addresses_, fixedTime, host),
      store_(sessions_, addresses_, fixedTime, folder_.path() / "incoming"),
      links_(sessions_, gate_, fixedTime),
      router_({{"cloud", &service_}, {StoreEndpoint::bucket, &store_}}, links_) {
  createPrivateFolder(folder_.path() / "incoming");
  const auto open = sessions_.create(openRecord());
  const auto locked = sessions_.create(lockedRecord());
  upload(*open, arrivedFile());
  upload(*locked, std::string(protectedText));
  fillPlaceholders(open->record(), locked->record());
}

std::vector<std::string> SandboxInMemory::identifiers() {
  return {openRecord().identifier, lockedRecord().identifier};
}

const std::map<std::string, std::string>& SandboxInMemory::filesByTag() {
  static const std::map<std::string, std::string> files{
      {tagOf(arrivedFile()), arrivedFile()},
      {tagOf(std::string(protectedText)), std::string(protectedText)}};
  return files;
}

void SandboxInMemory::expectKept(const std::vector<std::string>& identifiers) const {
  const SessionStore read(folder_.path() / "sessions",
                          [](const std::string&) { expect(false, "no session is damaged"); });
  for (const std::string& identifier : identifiers) {
    const auto kept = sessions_.findByIdentifier(identifier);
    const auto again = read.findByIdentifier(identifier);
    expect((kept == nullptr) == (again == nullptr), "a session is kept until it is deleted");
    if (kept) expectEqual(*kept, *again);
  }
  expect(std::filesystem::is_empty(folder_.path() / "incoming"), "nothing is left of an upload");
}

/// As the first item.
void SandboxInMemory::upload(Session& session, const std::string& bytes) const {
  const auto file = folder_.path() / "upload";
  writeFileAtomically(file, bytes);
  session.store(0, file,
                {.fileName = {},
                 .entityTag = tagOf(bytes),
                 .fingerprint = hexEncode(sha256(bytes)),
                 .byteCount = bytes.size(),
                 .contentType = "text/plain",
                 .isInline = true});
  session.finalize(0, tagOf(bytes));
}

void SandboxInMemory::fillPlaceholders(const SessionRecord& open, const SessionRecord& locked) {
  const std::string address = addresses_.make(
      "PUT", host, StoreEndpoint::objectPath(open, open.items[1]), open.items[1].file.contentType);
  const std::string pass = gate_.passFor(locked);
  placeholders_ = {{'T', token},
                   {'S', open.identifier},
                   {'A', open.items[0].identifier},
                   {'B', open.items[1].identifier},
                   {'U', address.substr(std::string("https://").size() + std::string(host).size())},
                   {'H', host},
                   {'L', open.slug},
                   {'P', locked.slug},
                   {'F', locked.items[0].identifier},
                   {'W', password},
                   {'C', pass.substr(0, pass.find(';'))},
                   {'E', tagOf(arrivedFile())},
                   {'D', tagOf(pendingFile).substr(1, 32)}};
}

}  // namespace quillbay::fuzz
