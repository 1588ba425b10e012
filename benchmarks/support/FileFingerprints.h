#pragma once

#include <QuillbayCloud/Classes/FileFingerprint.h>

#include <string>
#include <vector>

namespace quillbay::bench {

/// The fingerprints of the files at these paths, in their order, as the library computes them.
std::vector<std::string> fileFingerprints(const std::vector<std::string>& paths);

/// The same, while the activity of a run is kept and an observer is told of it.
std::vector<std::string> observedFileFingerprints(const std::vector<std::string>& paths);

}  // namespace quillbay::bench
