#pragma once

#include <QuillbayPlatform/Export.h>

#include <string>
#include <vector>

namespace quillbay::platform {

/// How this process reaches the network: what a system's settings would say. Set by the host once,
/// before the first transfer; without it, the system's defaults hold. TLS is never switched off.
struct QUILLBAY_EXPORT NetworkSettings {
  /// Extra routes "HOST:PORT:HOST:PORT" with the meaning of curl's `--connect-to`: connections to
  /// the first host and port go to the second; an empty part matches or keeps any. IPv6 addresses
  /// stand in brackets. Certificates are still checked against the first host.
  std::vector<std::string> connectTo;
  /// Path of a PEM file with the certificate authorities to trust in place of the system's.
  std::string caBundlePath;
  /// Address of a proxy for https, in place of what the environment says, `no_proxy` included.
  /// Loopback addresses are always reached without one. Empty: what the environment says.
  std::string proxy;

  /// Whether `route` has the form of an entry of `connectTo`.
  static bool isValidRoute(const std::string& route);

  /// Any thread. Transfers that have started keep what they started with.
  static void set(NetworkSettings settings);
  /// A copy of what `set` was last given; without it, the system's defaults. Any thread.
  static NetworkSettings current();
};

}  // namespace quillbay::platform
