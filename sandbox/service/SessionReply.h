#pragma once

#include <string>
#include <string_view>

#include "sandbox/model/Session.h"

namespace quillbay::sandbox {

/// The session object of the service's replies. The token is the one the client has just shown or
/// been given; the session itself does not know it.
std::string sessionReply(const Session& session, std::string_view token, std::string_view link);

}  // namespace quillbay::sandbox
