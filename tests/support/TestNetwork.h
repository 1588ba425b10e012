#pragma once

namespace quillbay::test {

class ScriptedServer;

/// Has https://cloud.quillbay.example and https://store.quillbay.example lead to `server` (to
/// `storeServer` for the latter, if given), trusts the test's authority alone, and forgets the
/// proxies of the environment. Call it before the transfers that are to be routed so.
void useTestNetwork(const ScriptedServer& server);
void useTestNetwork(const ScriptedServer& server, const ScriptedServer& storeServer);

/// The same without routes: for servers that are called by their own address.
void useTestNetwork();

}  // namespace quillbay::test
