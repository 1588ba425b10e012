#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <string>

#include "benchmarks/runner/ChildProcess.h"

namespace quillbay::bench {

/// A program that is written to and read from line by line. It ends when its standard input does:
/// with this object, or when this program is gone.
class TalkingProcess {
 public:
  explicit TalkingProcess(const Command& command);
  ~TalkingProcess();
  TalkingProcess(const TalkingProcess&) = delete;
  TalkingProcess& operator=(const TalkingProcess&) = delete;

  pid_t pid() const { return pid_; }
  void writeLine(const std::string& line);
  /// Fails if the program has ended.
  std::string readLine();

 private:
  using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

  const std::string name_;
  Stream input_{nullptr, std::fclose};
  Stream output_{nullptr, std::fclose};
  pid_t pid_ = -1;
};

}  // namespace quillbay::bench
