#pragma once

#include <csignal>
#include <functional>
#include <optional>
#include <string>

#include "TemporaryFolder.h"
#include "hosts/common/FileDescriptor.h"

namespace quillbay::test {

/// A program as a process of its own, at a terminal of 80 columns that is in the test's hands.
/// Killed and reaped when destroyed.
class ChildProcess {
 public:
  /// `command` is one simple command as a shell reads it in `folder`: "NAME=value"s, the program,
  /// arguments, and redirections, of which "</dev/tty" and "2>/dev/tty" lead to the terminal. The
  /// process has no other variables than PATH, TERM, the locale and those of the sanitizers. It
  /// reads `input`, and the program takes the shell's place, so that signals reach it.
  ChildProcess(const std::filesystem::path& folder, const std::string& command,
               std::string_view input = "");
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// Everything written so far to streams that are not redirected.
  std::string output() const { return readFile(streams_ / "output"); }
  std::string error() const { return readFile(streams_ / "error"); }
  const std::string& terminal() const { return shown_; }

  /// Waits until `condition` holds; false if it does not within a generous bound.
  [[nodiscard]] bool waitUntil(const std::function<bool()>& condition);
  /// Waits until the terminal has shown `text`.
  [[nodiscard]] bool waitToShow(const std::string& text) {
    return waitUntil([&] { return shown_.contains(text); });
  }
  /// Waits for the end of the process; its exit status, or 1000 and the signal that ended it, or
  /// nothing if it does not end.
  std::optional<int> waitForExit();

  void signal(int number) const { ::kill(process_, number); }
  void type(const std::string& text) const;
  bool terminalEchoes() const;
  void turnEchoOn() const;

 private:
  /// Reads what stands in the terminal; waits a moment if there is nothing. False if there was not.
  bool readTerminal();

  const TemporaryFolder streams_;
  pid_t process_ = -1;
  std::optional<int> status_;
  host::FileDescriptor terminal_;
  std::string shown_;
};

}  // namespace quillbay::test
