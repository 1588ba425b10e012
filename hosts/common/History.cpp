#include "History.h"

#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>
#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>
#include <thread>
#include <utility>

#include "FileDescriptor.h"

namespace quillbay::host {
namespace {

using State = RememberedShare::State;

constexpr std::chrono::milliseconds kBusyTimeout(2000);
constexpr std::chrono::milliseconds kBusyPause(10);
constexpr int kVersion = 1;
constexpr auto kDatePolicy = platform::JSONDatePolicy::secondsSince1970;

// The session's record holds link, title, expiration and token; two of its values again, to find it
// by. `uploader` names the process that uploads it, or did.
constexpr const char* kSchema = R"(
CREATE TABLE share (
  id INTEGER PRIMARY KEY,
  created REAL NOT NULL,
  instance TEXT NOT NULL,
  session TEXT NOT NULL,
  link TEXT NOT NULL,
  record TEXT NOT NULL,
  link_type TEXT NOT NULL,
  state TEXT NOT NULL,
  uploader TEXT
);
CREATE TABLE file (
  share INTEGER NOT NULL REFERENCES share ON DELETE CASCADE,
  position INTEGER NOT NULL,
  path BLOB NOT NULL,
  byte_count INTEGER NOT NULL,
  has_arrived INTEGER NOT NULL,
  PRIMARY KEY (share, position)
) WITHOUT ROWID;
)";

// `total` never overflows, as `sum` does; what is not exact in it is beyond petabytes.
constexpr const char* kSelect = R"(
SELECT id, created, instance, record, link_type, state, uploader,
  (SELECT count(*) FROM file WHERE share = id),
  (SELECT count(*) FROM file WHERE share = id AND has_arrived),
  (SELECT max(0, CAST(total(byte_count) AS INTEGER)) FROM file WHERE share = id)
FROM share )";

constexpr std::pair<State, const char*> kStateNames[] = {
    {State::uploading, "uploading"},
    {State::complete, "complete"},
    {State::unfinished, "unfinished"},
    {State::deleted, "deleted"},
};

const char* nameOf(State state) {
  for (const auto& [value, name] : kStateNames) {
    if (value == state) return name;
  }
  return "";
}

State stateNamed(const std::string& text) {
  for (const auto& [value, name] : kStateNames) {
    if (text == name) return value;
  }
  return State::unfinished;
}

/// "PID START", which no later process with the same number has; nothing if there is none.
std::optional<std::string> processName(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(file, text);
  // The program's name, in parentheses, may hold blanks; the start is the 20th field after it.
  const auto nameEnd = text.rfind(')');
  if (nameEnd == std::string::npos) return std::nullopt;
  std::istringstream fields(text.substr(nameEnd + 1));
  std::string field;
  constexpr int kStartField = 20;
  for (int i = 0; i < kStartField; ++i) fields >> field;
  return std::to_string(process) + " " + field;
}

bool isRunning(const std::string& process) {
  pid_t number = 0;
  std::from_chars(process.data(), process.data() + process.size(), number);
  return number > 0 && processName(number) == process;
}

[[noreturn]] void throwSystemError(const std::filesystem::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

/// Only for the user, whatever the umask or an earlier program made of them.
void makePrivate(const std::filesystem::path& file) {
  const std::filesystem::path folder = file.parent_path();
  std::filesystem::create_directories(folder.parent_path());
  if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) throwSystemError(folder);
  if (::chmod(folder.c_str(), S_IRWXU) != 0) throwSystemError(folder);
  const FileDescriptor descriptor(
      ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
  if (!descriptor.isOpen() || ::fchmod(descriptor.get(), S_IRUSR | S_IWUSR) != 0) {
    throwSystemError(file);
  }
}

std::optional<RememberedShare> readShare(SQLite::Statement& row) {
  int column = 0;
  const std::int64_t identifier = row.getColumn(column++).getInt64();
  const platform::Date created = platform::dateFromSecondsSince1970(row.getColumn(column++));
  const std::string instance = row.getColumn(column++);
  const std::string record = row.getColumn(column++);
  const std::string linkType = row.getColumn(column++);
  const State state = stateNamed(row.getColumn(column++));
  const std::string uploader = row.getColumn(column++);
  const auto session = platform::JSONDecoder(kDatePolicy).decode<cloud::Session>(record);
  if (!session) return std::nullopt;
  const bool isAbandoned = state == State::uploading && !isRunning(uploader);
  return RememberedShare{
      .identifier = identifier,
      .created = created,
      .instanceIdentifier = instance,
      .session = *session,
      .linkType =
          cloud::SessionLinkType::fromRawValue(linkType).value_or(cloud::SessionLinkType::page),
      .state = isAbandoned ? State::unfinished : state,
      .fileCount = static_cast<std::size_t>(row.getColumn(column++).getInt64()),
      .arrivedFileCount = static_cast<std::size_t>(row.getColumn(column++).getInt64()),
      .byteCount = static_cast<std::uint64_t>(row.getColumn(column++).getInt64())};
}

}  // namespace

std::optional<std::filesystem::path> History::standardFile(const Environment& environment) {
  const std::filesystem::path name = "quillbay/history.sqlite";
  // A relative path is invalid (XDG Base Directory Specification).
  const auto state = environment("XDG_STATE_HOME");
  if (state && state->starts_with('/')) return *state / name;
  const auto home = environment("HOME");
  if (home && home->starts_with('/')) return *home / std::filesystem::path(".local/state") / name;
  return std::nullopt;
}

History::History(std::optional<std::filesystem::path> file)
    : file_(std::move(file).value_or(std::filesystem::path())) {
  if (file_.empty()) {
    problem_ = "the history cannot be used: neither XDG_STATE_HOME nor HOME names a folder";
  }
  attempt([this] { open(); });
}

History::~History() = default;

void History::open() {
  makePrivate(file_);
  database_ = std::make_unique<SQLite::Database>(file_, SQLite::OPEN_READWRITE,
                                                 static_cast<int>(kBusyTimeout.count()));
  // A commit need not survive a power failure, and must not wait for the disk.
  database_->exec(
      "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
      "PRAGMA foreign_keys = ON; PRAGMA secure_delete = ON;");
  SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
  const int version = database_->execAndGet("PRAGMA user_version");
  if (version > kVersion) throw std::runtime_error("it was written by a newer version");
  if (version < kVersion) {
    database_->exec(kSchema);
    database_->exec("PRAGMA user_version = " + std::to_string(kVersion));
  }
  transaction.commit();
}

/// Each work is one transaction, or only reads: it can be done again. SQLite waits for most locks
/// by itself, but not for those that a change of the journal or a recovery after a kill takes.
void History::attempt(const std::function<void()>& work) {
  const auto deadline = std::chrono::steady_clock::now() + kBusyTimeout;
  while (!problem_) {
    try {
      return work();
    } catch (const SQLite::Exception& error) {
      const bool mayPass = error.getErrorCode() == SQLITE_BUSY;
      if (!mayPass || std::chrono::steady_clock::now() >= deadline) fail(error);
    } catch (const std::exception& error) {
      fail(error);
    }
    std::this_thread::sleep_for(kBusyPause);
  }
}

void History::fail(const std::exception& error) {
  problem_ = "the history " + file_.string() + " cannot be used: " + error.what();
}

std::int64_t History::add(const std::string& instanceIdentifier, const cloud::Session& session,
                          cloud::SessionLinkType linkType, const std::vector<RememberedFile>& files,
                          platform::Date now) {
  std::int64_t identifier = 0;
  attempt([&] {
    const auto record = platform::JSONEncoder(kDatePolicy).encode(session);
    if (!record) throw std::runtime_error(record.error()->description());
    SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
    SQLite::Statement share(*database_,
                            "INSERT INTO share (created, instance, session, link, record, "
                            "link_type, state, uploader) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    SQLite::bind(share, platform::secondsSince1970(now), instanceIdentifier, session.identifier(),
                 session.url().absoluteString(), *record, std::string(linkType.rawValue()),
                 nameOf(State::uploading), processName(::getpid()).value_or(""));
    share.exec();
    const std::int64_t added = database_->getLastInsertRowid();
    SQLite::Statement file(*database_, "INSERT INTO file VALUES (?, ?, ?, ?, ?)");
    for (std::size_t position = 0; position < files.size(); ++position) {
      const RememberedFile& entry = files[position];
      file.reset();
      file.bind(1, added);
      file.bind(2, static_cast<std::int64_t>(position));
      file.bind(3, entry.path.data(), static_cast<int>(entry.path.size()));
      file.bind(4, static_cast<std::int64_t>(entry.byteCount));
      file.bind(5, entry.hasArrived ? 1 : 0);
      file.exec();
    }
    transaction.commit();
    identifier = added;
  });
  return identifier;
}

void History::noteArrivals(std::int64_t identifier, std::span<const std::size_t> positions) {
  attempt([&] {
    SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
    SQLite::Statement file(*database_,
                           "UPDATE file SET has_arrived = 1 WHERE share = ? AND position = ?");
    for (const std::size_t position : positions) {
      file.reset();
      SQLite::bind(file, identifier, static_cast<std::int64_t>(position));
      file.exec();
    }
    transaction.commit();
  });
}

void History::setState(std::int64_t identifier, State state) {
  attempt([&] {
    SQLite::Statement share(*database_, "UPDATE share SET state = ?, uploader = ? WHERE id = ?");
    const bool isUploader = state == State::uploading;
    SQLite::bind(share, nameOf(state), isUploader ? processName(::getpid()).value_or("") : "",
                 identifier);
    share.exec();
  });
}

bool History::claim(std::int64_t identifier) {
  bool isClaimed = false;
  attempt([&] {
    SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
    SQLite::Statement row(*database_, kSelect + std::string("WHERE id = ?"));
    row.bind(1, identifier);
    const auto share = row.executeStep() ? readShare(row) : std::nullopt;
    if (!share || share->state == State::uploading) return;
    setState(identifier, State::uploading);
    row.reset();
    transaction.commit();
    isClaimed = !problem_;
  });
  return isClaimed;
}

std::vector<RememberedShare> History::select(const std::string& condition, const std::string& value,
                                             std::size_t limit) {
  std::vector<RememberedShare> shares;
  attempt([&] {
    SQLite::Statement row(*database_, kSelect + condition + " ORDER BY created DESC, id DESC");
    if (row.getBindParameterCount() > 0) row.bind(1, value);
    shares.clear();
    while (shares.size() < limit && row.executeStep()) {
      if (auto share = readShare(row)) shares.push_back(std::move(*share));
    }
  });
  return shares;
}

std::vector<RememberedShare> History::shares() {
  return select("", "", std::numeric_limits<std::size_t>::max());
}

std::optional<RememberedShare> History::find(std::string_view linkOrSession) {
  auto found = select("WHERE link = ?1 OR session = ?1", std::string(linkOrSession), 1);
  return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::optional<RememberedShare> History::newest() {
  auto found = select("", "", 1);
  return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::vector<RememberedFile> History::files(std::int64_t identifier) {
  std::vector<RememberedFile> files;
  attempt([&] {
    SQLite::Statement row(
        *database_,
        "SELECT path, byte_count, has_arrived IS TRUE FROM file WHERE share = ? ORDER BY position");
    row.bind(1, identifier);
    files.clear();
    while (row.executeStep()) {
      files.push_back({.path = row.getColumn(0).getString(),
                       .byteCount = static_cast<std::uint64_t>(row.getColumn(1).getInt64()),
                       .hasArrived = row.getColumn(2).getInt() != 0});
    }
  });
  return files;
}

void History::forget(std::int64_t identifier) {
  attempt([&] {
    SQLite::Statement share(*database_, "DELETE FROM share WHERE id = ?");
    share.bind(1, identifier);
    share.exec();
  });
}

std::size_t History::forgetExpired(platform::Date now) {
  std::size_t count = 0;
  for (const RememberedShare& share : shares()) {
    if (share.state != State::deleted && !share.isExpired(now)) continue;
    forget(share.identifier);
    ++count;
  }
  return count;
}

}  // namespace quillbay::host
