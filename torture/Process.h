#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "hosts/common/FileDescriptor.h"

namespace quillbay::torture {

/// A program as a process of its own; killed and reaped when destroyed.
class Process {
 public:
  /// What ends a program by a signal adds to its number.
  static constexpr int kSignalled = 1000;

  /// `command` is one simple command for a shell; the program takes the shell's place.
  explicit Process(const std::string& command);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  void signal(int number) const;
  /// Its exit status, or `kSignalled` and the signal that ended it; nothing if it has not ended by
  /// then.
  std::optional<int> waitFor(std::chrono::milliseconds bound);

 private:
  pid_t process_ = -1;
  host::FileDescriptor ending_;
  std::optional<int> status_;
};

}  // namespace quillbay::torture
