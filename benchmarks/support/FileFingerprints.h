#pragma once

#include <QuillbayCloud/Classes/FileFingerprint.h>

#include <string>
#include <vector>

namespace quillbay::bench {

/// The fingerprints of the files at these paths, in their order, as the library computes them.
std::vector<std::string> fileFingerprints(const std::vector<std::string>& paths);

}  // namespace quillbay::bench
