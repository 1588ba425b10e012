#include "PathList.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "Interruption.h"
#include "hosts/common/FileDescriptor.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

constexpr std::size_t kLongestListByteCount = 64 * 1024 * 1024;

std::unexpected<SecretSource::Failure> unusable(std::string message) {
  return std::unexpected(SecretSource::Failure{ExitStatus::usage, std::move(message)});
}

/// Everything up to the end. `failure` begins the message.
std::expected<std::string, SecretSource::Failure> readAll(int descriptor,
                                                          const std::string& failure,
                                                          const Interruption& interruption) {
  std::string text;
  std::array<char, 16 * 1024> piece{};
  while (true) {
    std::array<pollfd, 2> events = {
        {{interruption.descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
    ::poll(events.data(), events.size(), -1);
    if (events[0].revents != 0) {
      return std::unexpected(SecretSource::Failure{ExitStatus::cancelled, {}});
    }
    if (events[1].revents == 0) continue;
    const ssize_t count = ::read(descriptor, piece.data(), piece.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) return unusable(failure + std::strerror(errno));
    if (count == 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(count));
    if (text.size() > kLongestListByteCount) return unusable(failure + "it is longer than 64 MiB");
  }
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> paths;
  while (!text.empty()) {
    const std::string_view path = text.substr(0, text.find(separator));
    if (!path.empty()) paths.emplace_back(path);
    text.remove_prefix(path.size() + (path.size() < text.size() ? 1 : 0));
  }
  return paths;
}

}  // namespace

std::expected<std::vector<std::string>, SecretSource::Failure> readPathList(
    const std::string& file, PathSeparator separator, const Interruption& interruption) {
  const bool isStandardInput = file == "-";
  const std::string list =
      "the list of files in " + (isStandardInput ? "standard input" : host::inQuotes(file));
  const std::string failure = "cannot read " + list + ": ";
  host::FileDescriptor opened;
  if (!isStandardInput) {
    opened =
        host::FileDescriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!opened.isOpen()) return unusable(failure + std::strerror(errno));
  }
  const auto text = readAll(isStandardInput ? STDIN_FILENO : opened.get(), failure, interruption);
  if (!text) return std::unexpected(text.error());
  const bool isLines = separator == PathSeparator::newline;
  if (isLines && text->contains('\0')) return unusable(list + " holds a NUL byte; add --null");
  auto paths = split(*text, isLines ? '\n' : '\0');
  if (paths.empty()) return unusable(list + " names no file");
  return paths;
}

}  // namespace quillbay::cli
