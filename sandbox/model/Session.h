#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sandbox/model/SessionRecord.h"
#include "sandbox/support/Files.h"

namespace quillbay::sandbox {

/// The bytes that the store holds for an item.
struct StoredObject {
  /// Its name in the session's folder of objects.
  std::string fileName;
  /// With the quotes around it.
  std::string entityTag;
  std::string fingerprint;
  std::uint64_t byteCount = 0;
  std::string contentType;
  bool isInline = false;
};

struct ItemState {
  std::optional<StoredObject> object;
  /// Set by a successful finalize: the object is the announced file.
  bool isUploaded = false;
};

/// A request that the session's present state does not allow.
class SessionConflict : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A session with its state on disk, in a folder of its own: the record, the objects, and a
/// journal with one line for every change of an item, so that a change costs the same in a session
/// of any size. All operations may be called on any thread.
class Session {
 public:
  /// Writes the new session to `folder`.
  static std::shared_ptr<Session> create(std::filesystem::path folder, SessionRecord record);
  /// Reads what an earlier run has left in `folder`.
  static std::shared_ptr<Session> load(std::filesystem::path folder);

  const SessionRecord& record() const { return record_; }
  std::optional<std::size_t> itemIndex(std::string_view identifier) const;
  ItemState item(std::size_t index) const;
  /// The states in the order of the record's items, valid during the call.
  void visitItems(const std::function<void(std::span<const ItemState>)>& visit) const;

  /// Bytes of an upload that is under way, for the link's page.
  std::atomic<std::uint64_t>& arrivingByteCount(std::size_t index) { return arriving_[index]; }

  /// To be called whenever bytes of an upload arrive: a page that waits for them can then tell a
  /// slow upload from an abandoned one.
  void noteMovement(Instant now) { lastMovement_.store(now, std::memory_order_relaxed); }
  /// Known to the second, over restarts too.
  Instant lastMovement() const { return lastMovement_.load(std::memory_order_relaxed); }

  /// Moves a complete file into the session. `object.fileName` is chosen here. A finalized item
  /// keeps the object that it has: its client may have been killed before it could remember that,
  /// and uploads anew. `finalize` then tells whether the content is the same.
  void store(std::size_t index, const std::filesystem::path& file, StoredObject object);
  /// Compares the stored object with what was announced and with the tag the client was given.
  void finalize(std::size_t index, std::string_view entityTag);
  std::shared_ptr<FileDescriptor> openObject(const StoredObject& object) const;

  /// Removes the objects; the record stays and the link can still say that it has expired.
  void discardObjects();
  /// Removes everything; later changes are refused.
  void remove();

 private:
  Session(std::filesystem::path folder, SessionRecord record);

  void recallLastMovement();
  void replayJournal();
  void applyJournalLine(std::string_view line);
  void appendToJournal(const std::string& line) const;
  std::filesystem::path objectPath(std::string_view fileName) const;
  std::filesystem::path journalPath() const { return folder_ / "journal.jsonl"; }

  const std::filesystem::path folder_;
  const SessionRecord record_;
  std::unordered_map<std::string_view, std::size_t> indexByIdentifier_;
  std::vector<std::atomic<std::uint64_t>> arriving_;
  std::atomic<Instant> lastMovement_;

  mutable std::mutex mutex_;
  std::vector<ItemState> items_;
  bool isClosed_ = false;
};

}  // namespace quillbay::sandbox
