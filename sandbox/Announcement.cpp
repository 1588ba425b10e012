#include "sandbox/Announcement.h"

#include <iostream>
#include <system_error>

#include "sandbox/support/Files.h"

namespace quillbay::sandbox {

namespace {

std::string shellQuoted(const std::string& text) {
  constexpr const char* harmless =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./:";
  if (text.find_first_not_of(harmless) == std::string::npos) return text;
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace

std::string shellSettings(int port, const std::filesystem::path& authorityFile) {
  return "export QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:" + std::to_string(port) +
         "\nexport QUILLBAY_CACERT=" + shellQuoted(authorityFile.string()) + "\n";
}

Announcement::Announcement(std::optional<std::filesystem::path> readyFile)
    : readyFile_(std::move(readyFile)) {
  if (readyFile_) std::filesystem::remove(*readyFile_);
}

Announcement::~Announcement() {
  std::error_code ignored;
  if (readyFile_) std::filesystem::remove(*readyFile_, ignored);
}

void Announcement::publish(const std::string& settings) const {
  if (readyFile_) writeFileAtomically(*readyFile_, settings, 0644);
  std::cout << settings << std::flush;
}

}  // namespace quillbay::sandbox
