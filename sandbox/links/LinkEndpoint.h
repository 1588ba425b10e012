#pragma once

#include "sandbox/http/Endpoint.h"
#include "sandbox/links/PasswordGate.h"
#include "sandbox/model/SessionStore.h"

namespace quillbay::sandbox {

/// What recipients see: /s/SLUG, its files and its ZIP archive.
class LinkEndpoint : public Endpoint {
 public:
  /// Borrows the sessions and the gate.
  LinkEndpoint(SessionStore& sessions, PasswordGate& gate, Clock clock);

  Reply answer(Call& call) override;

 private:
  Reply route(Call& call);
  Reply unlock(Call& call, Session& session);
  static Reply open(const Call& call, const std::shared_ptr<Session>& session);

  SessionStore& sessions_;
  PasswordGate& gate_;
  Clock clock_;
};

}  // namespace quillbay::sandbox
