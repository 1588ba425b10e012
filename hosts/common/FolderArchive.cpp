#include "FolderArchive.h"

#include <QuillbayPlatform/DispatchQueue.h>

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <stop_token>
#include <string_view>
#include <system_error>
#include <utility>

#include "FileDescriptor.h"
#include "PlainText.h"

namespace quillbay::host {

struct FolderPacking::State {
  std::atomic<std::size_t> folderIndex = 0;
  std::atomic<std::uint64_t> packedByteCount = 0;
  std::atomic<std::uint64_t> totalByteCount = 0;
  /// Main queue only.
  std::move_only_function<void(Result)> completion;
};

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPieceByteCount = 128 * 1024;
constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;

/// Why there is no archive, for people.
class PackingFailure : public std::exception {
 public:
  explicit PackingFailure(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

/// The result is of no interest any more.
struct Stopped {};

[[noreturn]] void throwCannotPack(const fs::path& path, int number = errno) {
  throw PackingFailure("cannot pack " + inQuotes(path.native()) + ": " + std::strerror(number));
}

[[noreturn]] void throwNotText(const fs::path& path) {
  throw PackingFailure("cannot pack " + inQuotes(path.native()) +
                       ": the name is not UTF-8 text; rename it");
}

[[noreturn]] void throwChanged(const fs::path& path) {
  throw PackingFailure(inQuotes(path.native()) + " changed while it was being packed");
}

struct Entry {
  /// Below the folder; empty for the folder itself.
  std::string path;
  mode_t mode = 0;
  std::uint64_t byteCount = 0;
  timespec modified{};
};

/// What is to be packed of one folder.
class Listing {
 public:
  /// `excluded` is the folder in which the archives are made.
  Listing(fs::path folder, const struct stat& excluded, const std::stop_token& stop)
      : folder_(std::move(folder)), excluded_(excluded), stop_(stop) {
    struct stat status{};
    if (::stat(folder_.c_str(), &status) != 0) throwCannotPack(folder_);
    if (!S_ISDIR(status.st_mode)) throwCannotPack(folder_, ENOTDIR);
    addFolder("", status);
  }

  const std::vector<Entry>& entries() const { return entries_; }
  const std::vector<std::string>& omissions() const { return omissions_; }
  std::uint64_t byteCount() const { return byteCount_; }

 private:
  void addFolder(const std::string& path, const struct stat& status) {
    entries_.push_back({.path = path, .mode = status.st_mode, .modified = status.st_mtim});
    for (const std::string& name : namesIn(folder_ / path)) {
      if (stop_.stop_requested()) throw Stopped();
      add(path.empty() ? name : path + "/" + name);
    }
  }

  /// In the order of their bytes, so that the same folder gives the same archive.
  static std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
      names.push_back(entry->path().filename());
    }
    if (error) throwCannotPack(folder, error.value());
    std::ranges::sort(names);
    return names;
  }

  void add(const std::string& path) {
    const fs::path whole = folder_ / path;
    struct stat status{};
    if (::lstat(whole.c_str(), &status) != 0) throwCannotPack(whole);
    if (status.st_dev == excluded_.st_dev && status.st_ino == excluded_.st_ino) return;
    const bool isFolder = S_ISDIR(status.st_mode);
    if (!isFolder && !S_ISREG(status.st_mode)) return omit(whole, status.st_mode);
    if (!codePointCount(path)) throwNotText(whole);
    if (isFolder) return addFolder(path, status);
    const auto byteCount = static_cast<std::uint64_t>(status.st_size);
    entries_.push_back({path, status.st_mode, byteCount, status.st_mtim});
    byteCount_ += byteCount;
  }

  void omit(const fs::path& path, mode_t mode) {
    const char* kind = S_ISLNK(mode)    ? "a symbolic link"
                       : S_ISFIFO(mode) ? "a pipe"
                       : S_ISSOCK(mode) ? "a socket"
                                        : "a device";
    omissions_.push_back(inQuotes(path.native()) + " is " + kind + " and is left out");
  }

  const fs::path folder_;
  const struct stat& excluded_;
  const std::stop_token& stop_;
  std::vector<Entry> entries_;
  std::vector<std::string> omissions_;
  std::uint64_t byteCount_ = 0;
};

/// A ZIP file that is being written.
class ZIPFile {
 public:
  explicit ZIPFile(fs::path path)
      : path_(std::move(path)), file_(created(path_)), archive_(::archive_write_new()) {
    check(::archive_write_set_format_zip(archive_.get()));
    // Else names would be converted through the locale, which is "C" in most programs.
    check(::archive_write_set_options(archive_.get(), "zip:hdrcharset=UTF-8"));
    check(::archive_write_set_bytes_per_block(archive_.get(), kPieceByteCount));
    check(::archive_write_set_bytes_in_last_block(archive_.get(), 1));
    check(::archive_write_open_fd(archive_.get(), file_.get()));
  }

  ZIPFile(const ZIPFile&) = delete;
  ZIPFile& operator=(const ZIPFile&) = delete;
  /// Leaves no file that is not complete.
  ~ZIPFile() {
    if (!isComplete_) ::unlink(path_.c_str());
  }

  void begin(const std::string& name, const Entry& entry) {
    const std::unique_ptr<archive_entry, decltype(&::archive_entry_free)> header(
        ::archive_entry_new(), ::archive_entry_free);
    const bool isFolder = S_ISDIR(entry.mode);
    ::archive_entry_set_pathname_utf8(header.get(), name.c_str());
    ::archive_entry_set_filetype(header.get(), isFolder ? AE_IFDIR : AE_IFREG);
    ::archive_entry_set_perm(header.get(), entry.mode & kPermissions);
    ::archive_entry_set_mtime(header.get(), entry.modified.tv_sec, entry.modified.tv_nsec);
    ::archive_entry_set_size(header.get(), static_cast<la_int64_t>(entry.byteCount));
    check(::archive_write_header(archive_.get(), header.get()));
  }

  void append(std::string_view bytes) {
    const la_ssize_t count = ::archive_write_data(archive_.get(), bytes.data(), bytes.size());
    check(count < 0 ? static_cast<int>(count) : ARCHIVE_OK);
  }

  void close() {
    check(::archive_write_close(archive_.get()));
    isComplete_ = true;
  }

 private:
  /// Completes an archive that is still open: without that, libarchive keeps the compressor.
  struct Discard {
    void operator()(archive* handle) const noexcept { ::archive_write_free(handle); }
  };

  static FileDescriptor created(const fs::path& path) {
    FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen()) throwCannotPack(path);
    return file;
  }

  void check(int result) const {
    if (result >= ARCHIVE_WARN) return;
    const char* reason = ::archive_error_string(archive_.get());
    throw PackingFailure("cannot write " + inQuotes(path_.native()) + ": " +
                         (reason == nullptr ? "unknown error" : reason));
  }

  const fs::path path_;
  const FileDescriptor file_;
  const std::unique_ptr<archive, Discard> archive_;
  bool isComplete_ = false;
};

/// "photos" for "photos" and "./photos/"; the folder's own name for ".".
std::string nameOf(const fs::path& folder) {
  fs::path name = folder.has_filename() ? folder.filename() : folder.parent_path().filename();
  if (name.empty() || name == "." || name == "..") {
    std::error_code error;
    name = fs::canonical(folder, error).filename();
    if (error) throwCannotPack(folder, error.value());
  }
  if (!codePointCount(name.native())) throwNotText(folder);
  return name.empty() ? "root" : name.string();
}

/// Packs one folder.
class Packer {
 public:
  Packer(fs::path folder, FolderPacking::State& state, const std::stop_token& stop)
      : folder_(std::move(folder)), state_(state), stop_(stop) {}

  /// `destination` is a new folder in `excluded`.
  FolderArchive pack(const fs::path& destination, const struct stat& excluded) {
    const std::string name = nameOf(folder_);
    Listing listing(folder_, excluded, stop_);
    state_.totalByteCount = listing.byteCount();
    const fs::path path = destination / (name + ".zip");
    ZIPFile file(path);
    for (const Entry& entry : listing.entries()) {
      if (stop_.stop_requested()) throw Stopped();
      const bool isFolder = S_ISDIR(entry.mode);
      file.begin(name + (entry.path.empty() ? "" : "/" + entry.path) + (isFolder ? "/" : ""),
                 entry);
      if (!isFolder) copyContent(entry, file);
    }
    file.close();
    return {.path = path, .omissions = listing.omissions()};
  }

 private:
  void copyContent(const Entry& entry, ZIPFile& file) {
    const fs::path path = folder_ / entry.path;
    // It may have become a link or a pipe since it was listed.
    const FileDescriptor source(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    if (!source.isOpen()) throwCannotPack(path);
    std::uint64_t left = entry.byteCount;
    while (left > 0) {
      if (stop_.stop_requested()) throw Stopped();
      const ssize_t count =
          ::read(source.get(), piece_.data(), std::min<std::uint64_t>(piece_.size(), left));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) throwCannotPack(path);
      if (count == 0) throwChanged(path);
      file.append({piece_.data(), static_cast<std::size_t>(count)});
      left -= static_cast<std::uint64_t>(count);
      state_.packedByteCount += static_cast<std::uint64_t>(count);
    }
    if (hasChanged(source, entry)) throwChanged(path);
  }

  static bool hasChanged(const FileDescriptor& source, const Entry& entry) {
    struct stat status{};
    if (::fstat(source.get(), &status) != 0) return true;
    return !S_ISREG(status.st_mode) ||
           static_cast<std::uint64_t>(status.st_size) != entry.byteCount ||
           status.st_mtim.tv_sec != entry.modified.tv_sec ||
           status.st_mtim.tv_nsec != entry.modified.tv_nsec;
  }

  const fs::path folder_;
  FolderPacking::State& state_;
  const std::stop_token& stop_;
  std::vector<char> piece_ = std::vector<char>(kPieceByteCount);
};

std::vector<FolderArchive> packAll(const std::vector<std::string>& folders,
                                   const fs::path& destination, FolderPacking::State& state,
                                   const std::stop_token& stop) {
  struct stat excluded{};
  if (::stat(destination.c_str(), &excluded) != 0) throwCannotPack(destination);
  std::vector<FolderArchive> archives;
  for (std::size_t index = 0; index < folders.size(); ++index) {
    state.totalByteCount = 0;
    state.packedByteCount = 0;
    state.folderIndex = index;
    // Folders of the same name give archives of the same name.
    const fs::path place = destination / std::to_string(index);
    fs::create_directory(place);
    archives.push_back(Packer(folders[index], state, stop).pack(place, excluded));
  }
  return archives;
}

FolderPacking::Result packedOrFailure(const std::vector<std::string>& folders,
                                      const fs::path& destination, FolderPacking::State& state,
                                      const std::stop_token& stop) {
  try {
    return packAll(folders, destination, state, stop);
  } catch (const std::exception& failure) {
    return std::unexpected(failure.what());
  }
}

}  // namespace

FolderPacking::FolderPacking(std::vector<std::string> folders, std::filesystem::path destination,
                             std::move_only_function<void(Result)> completion)
    : state_(std::make_shared<State>()) {
  state_->completion = std::move(completion);
  thread_ = std::jthread([state = state_, folders = std::move(folders),
                          destination = std::move(destination)](const std::stop_token& stop) {
    try {
      auto result = packedOrFailure(folders, destination, *state, stop);
      platform::DispatchQueue::main().async([state, result = std::move(result)]() mutable {
        if (state->completion) std::exchange(state->completion, nullptr)(std::move(result));
      });
    } catch (const Stopped&) {
      return;
    }
  });
}

FolderPacking::~FolderPacking() { state_->completion = nullptr; }

PackingProgress FolderPacking::progress() const {
  return {.folderIndex = state_->folderIndex,
          .packedByteCount = state_->packedByteCount,
          .totalByteCount = state_->totalByteCount};
}

}  // namespace quillbay::host
