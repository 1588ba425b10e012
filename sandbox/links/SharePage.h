#pragma once

#include "sandbox/http/Reply.h"
#include "sandbox/model/Session.h"

namespace quillbay::sandbox {

/// The page of a link: what is shared, what has arrived and what is still on its way, or that the
/// upload was interrupted. With status 503 it is the answer to a request for content that has not
/// arrived.
Reply sharePage(Session& session, Instant now, int status = 200);

/// Asks for the link's password; `problem` tells what was wrong with the last one.
Reply passwordPage(int status, const SessionRecord& session, std::string_view problem);

}  // namespace quillbay::sandbox
