#include "Console.h"

#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "StandardStreams.h"

namespace quillbay::cli {
namespace {

constexpr std::size_t kUsualColumnCount = 79;
constexpr std::string_view kEraseStatus = "\r\x1b[J";

}  // namespace

bool Console::canShowStatus(int descriptor) {
  if (::isatty(descriptor) == 0) return false;
  const char* kind = std::getenv("TERM");
  return kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

std::size_t Console::columnCount() const {
  return terminalColumnCount(descriptor_).value_or(kUsualColumnCount);
}

void Console::printError(std::string_view text) { printLine("quillbay: " + std::string(text)); }

void Console::printNote(std::string_view text) {
  if (showsStatus_) printLine(text);
}

void Console::printLine(std::string_view text) {
  const std::lock_guard lock(mutex_);
  const std::string status = std::exchange(status_, {});
  const std::string erasure(status.empty() ? "" : kEraseStatus);
  write(erasure + std::string(text) + "\n" + status + (status.empty() ? "" : "\r"));
  status_ = status;
}

void Console::sendSequence(std::string_view sequence) {
  const std::lock_guard lock(mutex_);
  write(sequence);
}

void Console::setStatus(std::string text) {
  if (!showsStatus_ || !canWriteNow(descriptor_)) return;
  const std::lock_guard lock(mutex_);
  if (text == status_) return;
  // In one write, and erasing behind the text: nothing flickers. The cursor goes back to the
  // beginning: when the window becomes narrower and breaks the line, the rest is below the cursor,
  // where the next erasure reaches it.
  write("\r" + text + "\x1b[J\r");
  status_ = std::move(text);
}

void Console::clearStatus() {
  const std::lock_guard lock(mutex_);
  if (!status_.empty()) write(kEraseStatus);
  status_.clear();
}

void Console::abandonStatus() {
  // Another thread may hold the lock in a write that a stopped terminal does not let through.
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (lock && !status_.empty() && canWriteNow(descriptor_)) write("\n");
}

void Console::write(std::string_view bytes) const {
  // There is no other stream to report an error of standard error on.
  static_cast<void>(writeAll(descriptor_, bytes));
}

}  // namespace quillbay::cli
