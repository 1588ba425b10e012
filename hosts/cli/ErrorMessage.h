#pragma once

#include <QuillbayCloud/model/Session.h>

#include <string>
#include <string_view>

#include "hosts/common/FailureAdvice.h"

namespace quillbay::cli {

class Console;

/// What failed and why.
std::string failureText(const host::FailureAdvice& advice);

/// Prints what failed and why, then what to do, in one line each.
void printFailure(Console& console, const host::FailureAdvice& advice);

/// Standard output failed with this error of the system.
void printOutputError(Console& console, int errorNumber);

/// "quillbay VERB LINK" for a share that the history remembers, as a line for a shell.
std::string historyCommand(std::string_view verb, const cloud::Session& session);

/// A line for a shell that deletes `session` without the history. Holds the session's token, which
/// is a secret, but not as an argument, where other users of the computer could see it.
std::string deletionCommand(const cloud::Session& session, const std::string& instanceIdentifier);

}  // namespace quillbay::cli
