#pragma once

#include <QuillbayPlatform/NetworkSettings.h>

#include <cstdlib>
#include <iostream>

/// Sends the library to the service that QUILLBAY_CONNECT_TO and QUILLBAY_CACERT name, if they are
/// set.
inline void useTestService() {
  const char* const route = std::getenv("QUILLBAY_CONNECT_TO");
  const char* const authority = std::getenv("QUILLBAY_CACERT");
  if (route && authority) quillbay::platform::NetworkSettings::set({{route}, authority, ""});
}

/// Ends the program unless what the page promises is true.
inline void expect(bool isTrue, const char* promise) {
  if (isTrue) return;
  std::cerr << "not true: " << promise << '\n';
  std::exit(EXIT_FAILURE);
}
