#pragma once

#include <cstdio>
#include <cstdlib>
#include <source_location>

namespace quillbay::fuzz {

/// Reports the input as a crash unless `holds`. `what` is the rule that the code under test broke.
inline void expect(bool holds, const char* what,
                   std::source_location place = std::source_location::current()) {
  if (holds) return;
  std::fprintf(stderr, "%s:%u: broken: %s\n", place.file_name(),
               static_cast<unsigned>(place.line()), what);
  std::abort();
}

}  // namespace quillbay::fuzz
