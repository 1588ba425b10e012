#pragma once

#include <map>
#include <string>

#include "sandbox/http/Endpoint.h"

namespace quillbay::sandbox {

/// Chooses the endpoint by the first segment of the path.
class Router : public Endpoint {
 public:
  /// Endpoints are borrowed and outlive the router. `fallback` answers for unknown paths.
  Router(std::map<std::string, Endpoint*> endpoints, Endpoint& fallback);

  Reply answer(Call& call) override;
  std::optional<Reply> refuseEarly(Call& call) override;

 private:
  Endpoint& endpointFor(const Call& call) const;

  std::map<std::string, Endpoint*> endpoints_;
  Endpoint& fallback_;
};

}  // namespace quillbay::sandbox
