#include "sandbox/links/ZipStream.h"

#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <ctime>
#include <cwchar>
#include <cwctype>
#include <map>
#include <stdexcept>

#include "sandbox/http/ContentDisposition.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t pieceByteCount = 256 * 1024;

struct FreeArchive {
  void operator()(archive* handle) const noexcept { archive_write_free(handle); }
};
struct FreeEntry {
  void operator()(archive_entry* handle) const noexcept { archive_entry_free(handle); }
};

/// libarchive converts names through the thread's locale, and a service has mostly none.
class Utf8Locale {
 public:
  Utf8Locale() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (locale_ == nullptr) throw std::runtime_error("the locale C.UTF-8 is missing");
    previous_ = uselocale(locale_);
  }
  ~Utf8Locale() {
    uselocale(previous_);
    freelocale(locale_);
  }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  locale_t locale_;
  locale_t previous_ = nullptr;
};

void check(archive* handle, int result) {
  if (result < ARCHIVE_WARN) throw std::runtime_error(archive_error_string(handle));
}

la_ssize_t passOn(archive* handle, void* write, const void* data, std::size_t byteCount) {
  if ((*static_cast<const Write*>(write))({static_cast<const char*>(data), byteCount})) {
    return static_cast<la_ssize_t>(byteCount);
  }
  archive_set_error(handle, ECONNRESET, "the client has gone");
  return -1;
}

/// The same for names that some systems keep in one file: those that differ in case only.
std::wstring foldedCase(const std::string& name) {
  std::wstring folded(name.size(), L'\0');
  const char* start = name.c_str();
  std::mbstate_t state{};
  const std::size_t length = std::mbsrtowcs(folded.data(), &start, folded.size(), &state);
  if (length == static_cast<std::size_t>(-1)) return {name.begin(), name.end()};
  folded.resize(length);
  for (wchar_t& c : folded) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  return folded;
}

/// "letter (2).txt", ".hidden (2)"
std::string numbered(const std::string& name, int number) {
  const std::size_t lastDot = name.rfind('.');
  const std::size_t end = lastDot == 0 ? name.size() : std::min(lastDot, name.size());
  return name.substr(0, end) + " (" + std::to_string(number) + ")" + name.substr(end);
}

void makeNamesDistinct(std::vector<ZipEntry>& entries) {
  const Utf8Locale locale;
  // With the number that was given last: a thousand files of one name are not compared with all.
  std::map<std::wstring, int> lastNumberByName;
  for (ZipEntry& entry : entries) {
    const std::string wanted = safeFileName(entry.name);
    const auto [first, isFree] = lastNumberByName.emplace(foldedCase(wanted), 1);
    entry.name = wanted;
    if (isFree) continue;
    do {
      entry.name = numbered(wanted, ++first->second);
    } while (!lastNumberByName.emplace(foldedCase(entry.name), 1).second);
  }
}

void copyContent(archive* zip, const ZipEntry& entry) {
  const auto file = entry.open();
  std::vector<char> piece(pieceByteCount);
  std::uint64_t left = entry.byteCount;
  while (left > 0) {
    const ssize_t count =
        ::read(file->get(), piece.data(), std::min<std::uint64_t>(piece.size(), left));
    if (count <= 0) throw std::runtime_error("a stored file is shorter than it was");
    check(zip, static_cast<int>(std::min<la_ssize_t>(
                   0, archive_write_data(zip, piece.data(), static_cast<std::size_t>(count)))));
    left -= static_cast<std::uint64_t>(count);
  }
}

void writeEntry(archive* zip, const ZipEntry& entry) {
  const std::unique_ptr<archive_entry, FreeEntry> header(archive_entry_new());
  archive_entry_set_pathname_utf8(header.get(), entry.name.c_str());
  archive_entry_set_size(header.get(), static_cast<la_int64_t>(entry.byteCount));
  archive_entry_set_filetype(header.get(), AE_IFREG);
  archive_entry_set_perm(header.get(), 0644);
  archive_entry_set_mtime(header.get(), std::time(nullptr), 0);
  check(zip, archive_write_header(zip, header.get()));
  copyContent(zip, entry);
}

void writeArchive(const std::vector<ZipEntry>& entries, const Write& write) {
  const Utf8Locale locale;
  const std::unique_ptr<archive, FreeArchive> zip(archive_write_new());
  check(zip.get(), archive_write_set_format_zip(zip.get()));
  // Shared files are mostly packed already, and loopback is faster than any compressor.
  check(zip.get(), archive_write_zip_set_compression_store(zip.get()));
  check(zip.get(), archive_write_set_options(zip.get(), "zip:hdrcharset=UTF-8"));
  check(zip.get(), archive_write_set_bytes_per_block(zip.get(), pieceByteCount));
  check(zip.get(), archive_write_set_bytes_in_last_block(zip.get(), 1));
  check(zip.get(),
        archive_write_open(zip.get(), const_cast<Write*>(&write), nullptr, passOn, nullptr));
  for (const ZipEntry& entry : entries) writeEntry(zip.get(), entry);
  check(zip.get(), archive_write_close(zip.get()));
}

}  // namespace

Producer zipStream(std::vector<ZipEntry> entries) {
  makeNamesDistinct(entries);
  return [entries = std::move(entries)](const Write& write) {
    try {
      writeArchive(entries, write);
      return true;
    } catch (const std::exception&) {
      // The head of the reply is long gone; breaking off is all that is left to say.
      return false;
    }
  };
}

}  // namespace quillbay::sandbox
