#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "FileDescriptor.h"

namespace quillbay::test {

/// The program under test as a process of its own, with its streams in the test's hands. Killed
/// and reaped when destroyed.
class ChildProcess {
 public:
  enum class Stream {
    pipe,      ///< read by the test
    terminal,  ///< a pseudo-terminal of 80 columns, the process's controlling one
    closed,
    brokenPipe,  ///< a pipe that nobody reads
  };

  struct Setup {
    std::string program = QUILLBAY_PROGRAM;
    std::vector<std::string> arguments = {};
    /// "NAME=value"; PATH, the locale and TERM are given.
    std::vector<std::string> environment = {};
    Stream output = Stream::pipe;
    Stream error = Stream::pipe;
    /// Given on standard input, which then ends.
    std::string input = {};
    /// Signals that the process is to ignore.
    std::vector<int> ignoredSignals = {};
  };

  explicit ChildProcess(const Setup& setup);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// Everything read so far.
  const std::string& output() const { return output_; }
  const std::string& error() const { return error_; }
  const std::string& terminal() const { return terminal_; }
  bool shows(const std::string& text) const { return terminal_.contains(text); }

  /// Reads until `condition` holds; false if it does not within a generous bound.
  [[nodiscard]] bool waitUntil(const std::function<bool()>& condition);
  /// Reads to the end of the process; its exit status, or 1000 and the signal that ended it, or
  /// nothing if it does not end.
  std::optional<int> waitForExit();

  /// Stops reading standard output.
  void closeOutput() { outputSource_.reset(); }
  void signal(int number) const;
  void type(const std::string& text) const;
  bool terminalEchoes() const;

 private:
  /// Reads what is there; waits a moment if there is nothing.
  void readSome();

  pid_t process_ = -1;
  std::optional<int> status_;
  FileDescriptor outputSource_;
  FileDescriptor errorSource_;
  FileDescriptor terminalSource_;
  std::string output_;
  std::string error_;
  std::string terminal_;
};

}  // namespace quillbay::test
