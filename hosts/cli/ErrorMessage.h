#pragma once

#include <string>
#include <vector>

#include "FailureReport.h"
#include "hosts/common/RunJournal.h"

namespace quillbay::cli {

/// What people read when something fails: first what failed, with which file, and why; then, where
/// there is something to do, what to do. One line each. Texts of servers stand in them as plain
/// text.

/// A run failed at `step`; `fileName` is the file of that step, as it is to be shown.
std::vector<std::string> shareFailureLines(const FailureReport& report, host::RunJournal::Step step,
                                           const std::string& fileName);

/// The deletion that the user asked for failed.
std::vector<std::string> deletionFailureLines(const FailureReport& report,
                                              const std::string& sessionIdentifier);

/// Why, in one line without a full stop.
std::string reasonText(const FailureReport& report);

}  // namespace quillbay::cli
