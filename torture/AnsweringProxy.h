#pragma once

#include <functional>
#include <optional>

#include "ScriptedServer.h"

namespace quillbay::torture {

/// Takes a request's place.
struct Substitution {
  enum class Moment {
    beforeBody,
    inBody,
    afterBody,
    afterCarryingOut,  ///< the request has reached the server and been carried out
  };

  Moment moment = Moment::afterBody;
  test::Reply reply;
};

/// Between a client and the sandbox, in front of its service and its store: passes requests on, and
/// answers some of them by itself.
class AnsweringProxy {
 public:
  /// What happens to a request, if anything. Called on threads of the proxy.
  using Plan = std::function<std::optional<Substitution>(const test::Request& head)>;

  AnsweringProxy(int sandboxPort, Plan plan);

  int port() const { return server_.port(); }

 private:
  void serve(test::Connection& connection) const;

  const int sandboxPort_;
  const Plan plan_;
  test::ScriptedServer server_;
};

}  // namespace quillbay::torture
