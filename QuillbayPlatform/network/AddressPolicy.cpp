#include <QuillbayPlatform/network/AddressPolicy.h>
#include <arpa/inet.h>

namespace quillbay::platform {
namespace {

bool isLoopbackIPv4(const std::string& host) {
  in_addr address = {};
  return inet_pton(AF_INET, host.c_str(), &address) == 1 &&
         (ntohl(address.s_addr) >> 24) == IN_LOOPBACKNET;
}

bool isLoopbackIPv6(const std::string& host) {
  in6_addr address = {};
  return inet_pton(AF_INET6, host.c_str(), &address) == 1 && IN6_IS_ADDR_LOOPBACK(&address);
}

}  // namespace

bool isLoopbackHost(std::string_view host) {
  const std::string name(host);
  return name == "localhost" || isLoopbackIPv4(name) || isLoopbackIPv6(name);
}

bool isAllowedAddress(const URL& url) {
  const std::string host = url.host();
  if (host.empty() || url.hasUserInfo()) return false;
  const std::string scheme = url.scheme();
  return scheme == "https" || (scheme == "http" && isLoopbackHost(host));
}

bool haveSameOrigin(const URL& first, const URL& second) {
  return first.scheme() == second.scheme() && first.host() == second.host() &&
         first.port() == second.port();
}

}  // namespace quillbay::platform
