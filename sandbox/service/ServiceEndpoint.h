#pragma once

#include "sandbox/http/Endpoint.h"
#include "sandbox/model/SessionStore.h"
#include "sandbox/store/PresignedAddress.h"

namespace quillbay::sandbox {

/// The sharing service: /cloud/INSTANCE/session and what lies below it, in JSON.
class ServiceEndpoint : public Endpoint {
 public:
  /// Borrows the sessions and the addresses. `host` is where links and objects are reached.
  ServiceEndpoint(SessionStore& sessions, const PresignedAddress& addresses, Clock clock,
                  std::string host);

  Reply answer(Call& call) override;

 private:
  Reply route(Call& call);
  Reply createSession(Call& call);
  Reply deleteSession(const Call& call);
  Reply uploadUrl(const Call& call);
  Reply finalize(Call& call);

  std::shared_ptr<Session> authorizedSession(const Call& call) const;
  std::shared_ptr<Session> livingSession(const Call& call) const;
  std::string linkTo(const Session& session) const;

  SessionStore& sessions_;
  const PresignedAddress& addresses_;
  Clock clock_;
  std::string host_;
};

}  // namespace quillbay::sandbox
