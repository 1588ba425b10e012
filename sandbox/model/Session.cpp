#include "sandbox/model/Session.h"

#include <fcntl.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "sandbox/support/Digest.h"
#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

namespace {

using nlohmann::json;

constexpr const char* recordFile = "session.json";
constexpr const char* objectFolder = "objects";

std::string storedLine(std::size_t index, const StoredObject& object) {
  const json line{{"item", index},
                  {"object", object.fileName},
                  {"entityTag", object.entityTag},
                  {"fingerprint", object.fingerprint},
                  {"byteCount", object.byteCount},
                  {"type", object.contentType},
                  {"inline", object.isInline}};
  // A content type that is not UTF-8 must not keep the object out.
  return line.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string finalizedLine(std::size_t index) {
  return json{{"item", index}, {"finalized", true}}.dump() + "\n";
}

}  // namespace

Session::Session(std::filesystem::path folder, SessionRecord record)
    : folder_(std::move(folder)),
      record_(std::move(record)),
      arriving_(record_.items.size()),
      items_(record_.items.size()) {
  for (std::size_t i = 0; i < record_.items.size(); ++i) {
    indexByIdentifier_.emplace(record_.items[i].identifier, i);
  }
}

std::shared_ptr<Session> Session::create(std::filesystem::path folder, SessionRecord record) {
  std::shared_ptr<Session> session(new Session(std::move(folder), std::move(record)));
  createPrivateFolder(session->folder_ / objectFolder);
  // Written last: a folder without it is the remains of a creation or removal that was cut short.
  writeFileAtomically(session->folder_ / recordFile, session->record_.toJson());
  session->recallLastMovement();
  return session;
}

std::shared_ptr<Session> Session::load(std::filesystem::path folder) {
  SessionRecord record = SessionRecord::fromJson(readFile(folder / recordFile));
  std::shared_ptr<Session> session(new Session(std::move(folder), std::move(record)));
  session->recallLastMovement();
  session->replayJournal();
  return session;
}

std::optional<std::size_t> Session::itemIndex(std::string_view identifier) const {
  const auto found = indexByIdentifier_.find(identifier);
  if (found == indexByIdentifier_.end()) return std::nullopt;
  return found->second;
}

ItemState Session::item(std::size_t index) const {
  const std::lock_guard lock(mutex_);
  return items_[index];
}

void Session::visitItems(const std::function<void(std::span<const ItemState>)>& visit) const {
  const std::lock_guard lock(mutex_);
  visit(items_);
}

void Session::store(std::size_t index, const std::filesystem::path& file, StoredObject object) {
  const std::lock_guard lock(mutex_);
  if (isClosed_) throw SessionConflict("The session no longer exists.");
  if (items_[index].isUploaded) return;
  // A new name each time: the journal line, not the file, decides which object counts.
  object.fileName = record_.items[index].identifier + "-" + randomText(8);
  std::filesystem::rename(file, objectPath(object.fileName));
  try {
    appendToJournal(storedLine(index, object));
  } catch (...) {
    // In no line, it would take room that the disk needs.
    std::filesystem::remove(objectPath(object.fileName));
    throw;
  }
  const auto replaced = std::exchange(items_[index].object, std::move(object));
  if (replaced) std::filesystem::remove(objectPath(replaced->fileName));
}

void Session::finalize(std::size_t index, std::string_view entityTag) {
  const std::lock_guard lock(mutex_);
  const AnnouncedFile& announced = record_.items[index].file;
  ItemState& item = items_[index];
  if (isClosed_) throw SessionConflict("The session no longer exists.");
  if (!item.object) throw SessionConflict("The file has not been uploaded yet.");
  if (!constantTimeEquals(item.object->entityTag, entityTag)) {
    throw SessionConflict("The entity tag is not the one of the uploaded file.");
  }
  if (item.object->byteCount != announced.byteCount) {
    throw SessionConflict("The uploaded file has " + std::to_string(item.object->byteCount) +
                          " bytes, but " + std::to_string(announced.byteCount) +
                          " were announced.");
  }
  if (announced.fingerprint && *announced.fingerprint != item.object->fingerprint) {
    throw SessionConflict("The uploaded file does not have the announced fingerprint.");
  }
  if (item.isUploaded) return;
  appendToJournal(finalizedLine(index));
  item.isUploaded = true;
}

std::shared_ptr<FileDescriptor> Session::openObject(const StoredObject& object) const {
  return std::make_shared<FileDescriptor>(openFile(objectPath(object.fileName), O_RDONLY));
}

void Session::discardObjects() {
  const std::lock_guard lock(mutex_);
  if (isClosed_) return;
  isClosed_ = true;
  std::filesystem::remove_all(folder_ / objectFolder);
}

void Session::remove() {
  const std::lock_guard lock(mutex_);
  isClosed_ = true;
  std::filesystem::remove(folder_ / recordFile);
  std::filesystem::remove_all(folder_);
}

/// From the file that was written last.
void Session::recallLastMovement() {
  const bool hasJournal = std::filesystem::exists(journalPath());
  const auto time =
      std::filesystem::last_write_time(hasJournal ? journalPath() : folder_ / recordFile);
  const auto systemTime = std::filesystem::file_time_type::clock::to_sys(time);
  noteMovement(std::chrono::floor<std::chrono::seconds>(systemTime));
}

void Session::replayJournal() {
  if (!std::filesystem::exists(journalPath())) return;
  const std::string journal = readFile(journalPath());
  std::size_t start = 0;
  for (std::size_t end; (end = journal.find('\n', start)) != std::string::npos; start = end + 1) {
    applyJournalLine(std::string_view(journal).substr(start, end - start));
  }
  // A line that was cut short would swallow the next one.
  if (start < journal.size()) std::filesystem::resize_file(journalPath(), start);
}

void Session::applyJournalLine(std::string_view line) {
  const json change = json::parse(line);
  ItemState& item = items_.at(change.at("item").get<std::size_t>());
  if (change.contains("finalized")) {
    item.isUploaded = true;
    return;
  }
  item.object =
      StoredObject{change.at("object"),    change.at("entityTag"), change.at("fingerprint"),
                   change.at("byteCount"), change.at("type"),      change.at("inline")};
}

void Session::appendToJournal(const std::string& line) const {
  const FileDescriptor journal = openFile(journalPath(), O_WRONLY | O_CREAT | O_APPEND);
  const off_t end = ::lseek(journal.get(), 0, SEEK_END);
  try {
    writeAll(journal.get(), line, journalPath());
  } catch (...) {
    // What a full disk has taken of the line would swallow the next one.
    static_cast<void>(::ftruncate(journal.get(), end) == 0);
    throw;
  }
}

std::filesystem::path Session::objectPath(std::string_view fileName) const {
  return folder_ / objectFolder / fileName;
}

}  // namespace quillbay::sandbox
