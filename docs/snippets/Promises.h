#pragma once

#include <cstdlib>
#include <iostream>

/// Ends the program unless what the page promises is true.
inline void expect(bool isTrue, const char* promise) {
  if (isTrue) return;
  std::cerr << "not true: " << promise << '\n';
  std::exit(EXIT_FAILURE);
}
