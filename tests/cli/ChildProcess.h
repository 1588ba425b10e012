#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "hosts/common/FileDescriptor.h"

namespace quillbay::test {

using host::FileDescriptor;

/// The program under test as a process of its own, with its streams in the test's hands. Killed
/// and reaped when destroyed.
class ChildProcess {
 public:
  enum class Stream {
    file,      ///< for `output()` and `error()`
    terminal,  ///< the process's controlling terminal, of 80 columns
    pipe,      ///< not read, until `closeOutput()`
    closed,
  };

  struct Setup {
    std::string program = QUILLBAY_PROGRAM;
    std::vector<std::string> arguments = {};
    /// "NAME=value"; PATH, the locale and TERM are given.
    std::vector<std::string> environment = {};
    Stream output = Stream::file;
    Stream error = Stream::file;
    /// Given on standard input, which then ends; absent: the terminal.
    std::optional<std::string> input = "";
    /// Signals that the process is to ignore.
    std::vector<int> ignoredSignals = {};
  };

  explicit ChildProcess(const Setup& setup);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// Everything written so far.
  std::string output() const { return readFile(folder_ / "output"); }
  std::string error() const { return readFile(folder_ / "error"); }
  const std::string& terminal() const { return shown_; }

  /// Waits until `condition` holds; false if it does not within a generous bound.
  [[nodiscard]] bool waitUntil(const std::function<bool()>& condition);
  /// Waits until the terminal has shown `text`.
  [[nodiscard]] bool waitToShow(const std::string& text);
  /// Waits for the end of the process; its exit status, or 1000 and the signal that ended it, or
  /// nothing if it does not end.
  std::optional<int> waitForExit();

  void closeOutput() { outputSource_.reset(); }
  void signal(int number) const;
  void type(const std::string& text) const;
  bool terminalEchoes() const;
  void turnEchoOn() const;

 private:
  /// Reads what stands in the terminal; waits a moment if there is nothing. False if there was not.
  bool readTerminal();

  const TemporaryFolder folder_;
  pid_t process_ = -1;
  std::optional<int> status_;
  FileDescriptor outputSource_;
  FileDescriptor terminal_;
  std::string shown_;
};

}  // namespace quillbay::test
