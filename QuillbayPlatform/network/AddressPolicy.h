#pragma once

#include <QuillbayPlatform/URL.h>

#include <string>
#include <string_view>

namespace quillbay::platform {

/// Whether a host name or address is this machine's loopback.
bool isLoopbackHost(std::string_view host);

/// Whether the engine may connect to an address: https with a host, plain http to a loopback host
/// only, and no user name or password in it.
bool isAllowedAddress(const URL& url);

/// Scheme, host and port are the same (RFC 6454, section 5).
bool haveSameOrigin(const URL& first, const URL& second);

}  // namespace quillbay::platform
