#include "sandbox/http/Router.h"

namespace quillbay::sandbox {

Router::Router(std::map<std::string, Endpoint*> endpoints, Endpoint& fallback)
    : endpoints_(std::move(endpoints)), fallback_(fallback) {}

Reply Router::answer(Call& call) { return endpointFor(call).answer(call); }

std::optional<Reply> Router::refuseEarly(Call& call) { return endpointFor(call).refuseEarly(call); }

Endpoint& Router::endpointFor(const Call& call) const {
  const auto found = endpoints_.find(call.target.segments.front());
  return found == endpoints_.end() ? fallback_ : *found->second;
}

}  // namespace quillbay::sandbox
