#pragma once

#include "sandbox/http/Endpoint.h"
#include "sandbox/links/PasswordGate.h"
#include "sandbox/model/SessionStore.h"

namespace quillbay::sandbox {

/// What recipients see: /s/SLUG, the page that lists its files (/files), each file (/files/ID) and
/// the ZIP archive of all (/all.zip).
class LinkEndpoint : public Endpoint {
 public:
  /// Borrows the sessions and the gate.
  LinkEndpoint(SessionStore& sessions, PasswordGate& gate, Clock clock);

  Reply answer(Call& call) override;

 private:
  Reply route(Call& call);
  Reply unlock(Call& call, Session& session);
  static Reply open(const Call& call, const std::shared_ptr<Session>& session, Instant now);

  SessionStore& sessions_;
  PasswordGate& gate_;
  Clock clock_;
};

}  // namespace quillbay::sandbox
