#pragma once

#include <string>
#include <vector>

#include "hosts/common/SharedFiles.h"

namespace quillbay::cli {

/// What a person needs to hear of the files of the command line, as they were when the command
/// began. It decides nothing: whether they can be shared, the library says.

/// A sentence for each file that cannot be shared, and why.
std::vector<std::string> fileProblems(const host::SharedFiles& files);

/// A sentence for each file that the list names by several paths: it can be shared, but will
/// be uploaded once for each.
std::vector<std::string> fileAliases(const host::SharedFiles& files);

}  // namespace quillbay::cli
