#pragma once

#include <string>
#include <vector>

#include "HttpMessages.h"

namespace quillbay::torture {

/// What a service, a store or a proxy on the way may say in place of the proper reply: real error
/// documents, redirects, some of them to `redirectTarget`, and what no server should say.
std::vector<test::Reply> allErrorReplies(const std::string& redirectTarget);

}  // namespace quillbay::torture
