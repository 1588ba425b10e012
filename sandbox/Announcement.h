#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillbay::sandbox {

/// The settings that point quillbay at a sandbox, as lines for a shell.
std::string shellSettings(int port, const std::filesystem::path& authorityFile);

/// Tells the settings: on standard output, and in a file that exists
/// exactly while the sandbox answers.
class Announcement {
 public:
  /// Removes what an earlier run may have left.
  explicit Announcement(std::optional<std::filesystem::path> readyFile);
  ~Announcement();
  Announcement(const Announcement&) = delete;
  Announcement& operator=(const Announcement&) = delete;

  void publish(const std::string& settings) const;

 private:
  std::optional<std::filesystem::path> readyFile_;
};

}  // namespace quillbay::sandbox
