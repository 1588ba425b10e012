#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Process.h"

namespace quillbay::torture {

/// The sandbox as a process of its own, and what lies in its folder.
class Sandbox {
 public:
  /// `prefix`: goes before the program, such as "env NAME=VALUE ".
  explicit Sandbox(const std::filesystem::path& folder, const std::string& prefix = "");

  int port() const { return port_; }
  std::filesystem::path authorityFile() const { return folder_ / "data/tls/ca.pem"; }

  bool has(const std::string& session) const;
  /// The sessions that an instance has now.
  std::vector<std::string> sessionsOf(const std::string& instance) const;
  /// The end of its link.
  std::string slugOf(const std::string& session) const;
  /// Why not all bytes of these files are stored and finalized; nothing if they are.
  std::optional<std::string> lackOf(const std::string& session,
                                    const std::vector<std::filesystem::path>& files) const;

  /// On the same port, with what lies in the folder.
  void restart();

 private:
  std::filesystem::path sessionFolder(const std::string& session) const {
    return folder_ / "data/sessions" / session;
  }

  const std::filesystem::path folder_;
  const std::string prefix_;
  int port_ = 0;
  std::unique_ptr<Process> process_;
};

}  // namespace quillbay::torture
