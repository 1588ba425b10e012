#include "PackRun.h"

#include <cmath>
#include <system_error>
#include <utility>

#include "Console.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {

PackRun::PackRun(std::vector<std::string> paths, std::filesystem::path destination,
                 Console& console)
    : paths_(std::move(paths)), destination_(std::move(destination)), console_(console) {
  for (std::size_t index = 0; index < paths_.size(); ++index) {
    if (isFolder(paths_[index])) folders_.push_back(index);
  }
}

bool PackRun::isFolder(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

void PackRun::start() {
  std::vector<std::string> folders;
  folders.reserve(folders_.size());
  for (const std::size_t index : folders_) folders.push_back(paths_[index]);
  packing_.emplace(std::move(folders), destination_,
                   [this](const auto& result) { completed(result); });
}

void PackRun::cancel() {
  if (status_) return;
  status_ = ExitStatus::cancelled;
  packing_.reset();
  console_.clearStatus();
  console_.printNote("quillbay: cancelled; nothing was shared");
}

void PackRun::tick(Clock::time_point /*now*/) {
  if (status_ || !packing_) return;
  const host::PackingProgress progress = packing_->progress();
  const auto percent = static_cast<int>(std::floor(progress.fraction() * 100));
  const std::string end = "  " + std::to_string(percent) + " %";
  const std::string name = " " + host::inQuotes(paths_[folders_[progress.folderIndex]]);
  const bool hasRoom = name.size() + end.size() + 7 <= console_.columnCount();
  console_.setStatus("Packing" + (hasRoom ? name : "") + end);
}

void PackRun::completed(const host::FolderPacking::Result& result) {
  if (status_) return;
  console_.clearStatus();
  if (!result) {
    console_.printError(result.error());
    console_.printError("nothing was shared");
    status_ = ExitStatus::usage;
    return;
  }
  for (std::size_t index = 0; index < folders_.size(); ++index) {
    const host::FolderArchive& archive = (*result)[index];
    for (const std::string& text : archive.omissions) console_.printError(text);
    paths_[folders_[index]] = archive.path;
  }
  status_ = ExitStatus::success;
}

}  // namespace quillbay::cli
