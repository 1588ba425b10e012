#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

#include "sandbox/http/RequestLog.h"
#include "sandbox/support/Time.h"

namespace quillbay::sandbox {

struct SandboxOptions {
  /// 0 chooses a free port.
  int port = 0;
  /// Where everything is kept; one running sandbox a folder.
  std::filesystem::path dataFolder;
  /// Clients served at once.
  std::size_t connectionLimit = 512;
  Clock clock = systemTime;
  LogSink log = [](const std::string&) {};
};

/// The whole sandbox: sharing service, object store and links behind one TLS port on loopback.
class SandboxServer {
 public:
  /// Prepares the data folder and binds the port; throws std::exception with a reason for people.
  explicit SandboxServer(SandboxOptions options);
  /// Stops.
  ~SandboxServer();

  /// From here on requests are answered.
  void start();
  /// Ends transfers that are under way and returns when all threads have ended.
  void stop();

  int port() const;
  /// What a client has to trust.
  std::filesystem::path authorityFile() const;

 private:
  struct Parts;

  void sweepRegularly(const std::stop_token& stop);

  std::unique_ptr<Parts> parts_;
  std::mutex mutex_;
  std::condition_variable_any wake_;
  std::jthread sweeper_;
};

}  // namespace quillbay::sandbox
