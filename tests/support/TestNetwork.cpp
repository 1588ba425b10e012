#include "TestNetwork.h"

#include "ScriptedServer.h"
#include "TestCertificates.h"

#include <QuillbayPlatform/NetworkSettings.h>

#include <stdlib.h>

#include <string>

namespace quillbay::test {
namespace {

std::string route(const std::string& host, const ScriptedServer& server) {
  return host + ":443:127.0.0.1:" + std::to_string(server.port());
}

void setSettings(std::vector<std::string> routes) {
  for (const char* name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
    // Written only where there is something to remove: other threads may read the environment.
    if (::getenv(name) != nullptr) ::unsetenv(name);
  }
  platform::NetworkSettings settings;
  settings.connectTo = std::move(routes);
  settings.caBundlePath = TestCertificates::shared().authorityPath().string();
  platform::NetworkSettings::set(std::move(settings));
}

}  // namespace

void useTestNetwork(const ScriptedServer& server) { useTestNetwork(server, server); }

void useTestNetwork(const ScriptedServer& server, const ScriptedServer& storeServer) {
  setSettings(
      {route("cloud.quillbay.example", server), route("store.quillbay.example", storeServer)});
}

void useTestNetwork() { setSettings({}); }

}  // namespace quillbay::test
