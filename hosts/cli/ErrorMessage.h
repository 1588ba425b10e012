#pragma once

#include <QuillbayCloud/model/Session.h>

#include <string>

#include "hosts/common/FailureAdvice.h"

namespace quillbay::cli {

class Console;

/// Prints what failed and why, then what to do, in one line each.
void printFailure(Console& console, const cloud::QuillbayCloudError& error,
                  const host::FailureContext& context);

/// A line for a shell that deletes `session`. Holds the session's token, which is a secret, but
/// not as an argument, where other users of the computer could see it.
std::string deletionCommand(const cloud::Session& session, const std::string& instanceIdentifier);

}  // namespace quillbay::cli
