#pragma once

#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/model/SessionLinkType.h>
#include <QuillbayPlatform/Date.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "NetworkOptions.h"

namespace SQLite {
class Database;
}

namespace quillbay::host {

/// A file of a remembered share.
struct RememberedFile {
  std::string path;
  std::uint64_t byteCount = 0;
  /// The service has confirmed it.
  bool hasArrived = false;

  friend bool operator==(const RememberedFile&, const RememberedFile&) = default;
};

/// A share that this user made, as the history remembers it.
struct RememberedShare {
  enum class State {
    uploading,   ///< a program that is running now uploads it
    complete,    ///< every file has arrived
    unfinished,  ///< files are missing, and no program is uploading them
    deleted,     ///< the service has confirmed its deletion
  };

  std::int64_t identifier = 0;
  platform::Date created;
  std::string instanceIdentifier;
  /// Holds the token that deletes and continues the share: a secret.
  cloud::Session session;
  cloud::SessionLinkType linkType = cloud::SessionLinkType::page;
  State state = State::unfinished;
  std::size_t fileCount = 0;
  std::size_t arrivedFileCount = 0;
  std::uint64_t byteCount = 0;

  bool isExpired(platform::Date now) const {
    return session.expirationDate() && *session.expirationDate() <= now;
  }
};

/// The shares that this user made, so that they can be listed, continued and deleted later: an
/// SQLite database that only the user can read. It never holds a password.
///
/// Several processes may use it at a time; a process that is killed leaves a consistent database.
/// A database that cannot be opened or written makes every operation do nothing, and `problem` says
/// why: a share must not fail because it cannot be remembered. One thread at a time.
class History {
 public:
  /// "$XDG_STATE_HOME/quillbay/history.sqlite", or below ~/.local/state without that variable;
  /// nothing without a home folder.
  static std::optional<std::filesystem::path> standardFile(const Environment& environment);

  /// Opens the database at `file`, and makes it and its folder if they are missing. Without a file,
  /// which `standardFile` cannot always tell, it cannot be used.
  explicit History(std::optional<std::filesystem::path> file);
  History(const History&) = delete;
  History& operator=(const History&) = delete;
  ~History();

  /// What failed first, for people; absent while all is well.
  const std::optional<std::string>& problem() const { return problem_; }

  /// Remembers a session that this process uploads from now on. Returns its identifier here; 0 if
  /// it cannot be remembered.
  std::int64_t add(const std::string& instanceIdentifier, const cloud::Session& session,
                   cloud::SessionLinkType linkType, const std::vector<RememberedFile>& files,
                   platform::Date now);
  /// The files at these positions of the list have arrived.
  void noteArrivals(std::int64_t identifier, std::span<const std::size_t> positions);
  /// `uploading` makes this process the one that uploads it.
  void setState(std::int64_t identifier, RememberedShare::State state);

  /// As `setState(uploading)`, unless another running process uploads the share: whether this one
  /// may upload it now.
  [[nodiscard]] bool claim(std::int64_t identifier);

  /// All shares, the newest first.
  std::vector<RememberedShare> shares();
  /// The newest share with this link or session identifier.
  std::optional<RememberedShare> find(std::string_view linkOrSession);
  std::optional<RememberedShare> newest();
  /// The files of a share in the order of the list.
  std::vector<RememberedFile> files(std::int64_t identifier);

  void forget(std::int64_t identifier);
  /// Forgets the shares whose link no longer works: expired, or deleted. Returns how many.
  std::size_t forgetExpired(platform::Date now);

 private:
  void open();
  /// Runs `work` unless something has failed before, and notes its failure.
  void attempt(const std::function<void()>& work);
  void fail(const std::exception& error);
  /// The newest first, at most `limit`. Rows that cannot be read are passed over.
  std::vector<RememberedShare> select(const std::string& condition, const std::string& value,
                                      std::size_t limit);

  const std::filesystem::path file_;
  std::unique_ptr<SQLite::Database> database_;
  std::optional<std::string> problem_;
};

}  // namespace quillbay::host
