#pragma once

#include <exception>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::bench {

/// Ends a program of the benchmarks with a message: a run whose output is wrong is no measurement.
[[noreturn]] inline void fail(const std::string& message) { throw std::runtime_error(message); }

/// Runs `body` with the program's arguments; an exception becomes a line on standard error and 1.
template <class Body>
int runProgram(std::string_view name, int argumentCount, char** arguments, Body body) {
  try {
    const std::span all(arguments, static_cast<std::size_t>(argumentCount));
    body(std::vector<std::string>(all.begin() + 1, all.end()));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return 1;
  }
}

}  // namespace quillbay::bench
