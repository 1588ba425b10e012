#include "Sandbox.h"

#include <csignal>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "TemporaryFolder.h"

namespace quillbay::torture {
namespace {

using nlohmann::json;
using test::readFile;

struct StoredItem {
  std::string object;
  bool isFinalized = false;
};

/// By position. Throws for a line that is not whole.
std::map<std::size_t, StoredItem> readJournal(const std::filesystem::path& file) {
  std::map<std::size_t, StoredItem> items;
  std::istringstream lines(readFile(file));
  for (std::string line; std::getline(lines, line);) {
    const json change = json::parse(line);
    StoredItem& item = items[change.at("item")];
    if (change.contains("finalized")) item.isFinalized = true;
    if (change.contains("object")) item.object = change["object"];
  }
  return items;
}

}  // namespace

Sandbox::Sandbox(const std::filesystem::path& folder, const std::string& prefix)
    : folder_(folder), prefix_(prefix) {
  std::filesystem::create_directories(folder_);
  restart();
}

void Sandbox::restart() {
  if (process_) process_->signal(SIGTERM);
  if (process_ && process_->waitFor(std::chrono::seconds(10)) != 0) {
    throw std::runtime_error("the sandbox did not end in order");
  }
  const std::string folder = folder_.string();
  process_ = std::make_unique<Process>(
      prefix_ + TORTURE_SANDBOX " --port " + std::to_string(port_) + " --data " + folder +
      "/data --ready-file " + folder + "/ready >/dev/null 2>" + folder + "/log");
  std::string ready;
  for (int i = 0; ready.empty(); ++i) {
    if (i == 500 || process_->waitFor(std::chrono::milliseconds(20))) {
      throw std::runtime_error("the sandbox does not start: " + readFile(folder_ / "log"));
    }
    ready = readFile(folder_ / "ready");
  }
  port_ = std::stoi(ready.substr(ready.find("127.0.0.1:") + 10));
}

bool Sandbox::has(const std::string& session) const {
  return std::filesystem::exists(sessionFolder(session) / "session.json");
}

std::vector<std::string> Sandbox::sessionsOf(const std::string& instance) const {
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(folder_ / "data/sessions")) {
    const json record = json::parse(readFile(entry.path() / "session.json"), nullptr, false);
    if (record.is_object() && record.at("instance") == instance) {
      found.push_back(entry.path().filename());
    }
  }
  return found;
}

std::string Sandbox::slugOf(const std::string& session) const {
  return json::parse(readFile(sessionFolder(session) / "session.json")).at("slug");
}

std::optional<std::string> Sandbox::lackOf(const std::string& session,
                                           const std::vector<std::filesystem::path>& files) const {
  const auto folder = sessionFolder(session);
  try {
    auto items = readJournal(folder / "journal.jsonl");
    for (std::size_t i = 0; i < files.size(); ++i) {
      const std::string name = files[i].filename().string();
      if (!items[i].isFinalized) return name + " is not finalized";
      if (readFile(folder / "objects" / items[i].object) != readFile(files[i])) {
        return name + " has other bytes";
      }
    }
    return std::nullopt;
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace quillbay::torture
