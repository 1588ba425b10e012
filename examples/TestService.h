#pragma once

#include <QuillbayPlatform/NetworkSettings.h>

#include <cstdlib>

/// Lets an example reach a service other than the public one, if the environment names it as
/// quillbay-sandbox prints it. A product needs no such thing.
inline void useTestService() {
  const char* const route = std::getenv("QUILLBAY_CONNECT_TO");
  const char* const authority = std::getenv("QUILLBAY_CACERT");
  if (route == nullptr) return;
  quillbay::platform::NetworkSettings::set({{route}, authority != nullptr ? authority : "", ""});
}
