#pragma once

#include <fuzz/support/MemoryFolder.h>

#include <map>
#include <string>
#include <vector>

#include "sandbox/http/Router.h"
#include "sandbox/links/LinkEndpoint.h"
#include "sandbox/service/ServiceEndpoint.h"
#include "sandbox/store/StoreEndpoint.h"

namespace quillbay::fuzz {

/// The sandbox behind its server, with two sessions: one that is half uploaded, and one whose file
/// only its password gives away.
class SandboxInMemory {
 public:
  SandboxInMemory();

  sandbox::Endpoint& endpoint() { return router_; }
  /// What takes the place of "$T" and the like: tokens, identifiers, addresses.
  const std::map<char, std::string>& placeholders() const { return placeholders_; }
  /// The identifiers of the two sessions.
  static std::vector<std::string> identifiers();
  /// The files that the store holds, by their tags.
  static const std::map<std::string, std::string>& filesByTag();
  /// Is in the protected file alone.
  static constexpr std::string_view protectedText = "for the holder of the password alone";
  /// Breaks the input unless the folder holds these sessions as they are in memory, and no other.
  void expectKept(const std::vector<std::string>& identifiers) const;

 private:
  void upload(sandbox::Session& session, const std::string& bytes) const;
  void fillPlaceholders(const sandbox::SessionRecord& open, const sandbox::SessionRecord& locked);

  MemoryFolder folder_;
  sandbox::SessionStore sessions_;
  sandbox::PresignedAddress addresses_;
  sandbox::PasswordGate gate_;
  sandbox::ServiceEndpoint service_;
  sandbox::StoreEndpoint store_;
  sandbox::LinkEndpoint links_;
  sandbox::Router router_;
  std::map<char, std::string> placeholders_;
};

}  // namespace quillbay::fuzz
