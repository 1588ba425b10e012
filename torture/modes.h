#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "Life.h"

namespace quillbay::torture {

/// One kind of trouble. `run` returns how the share ended and throws `Fault`; it may be called on
/// several threads at once, each time with an empty folder and another name.
struct Mode {
  std::string_view name;
  std::string (*run)(const World& world, const std::filesystem::path& folder,
                     const std::string& name, Random random);
  /// A run takes so many times as long as one of another mode.
  int length = 1;
};

std::span<const Mode> allModes();

}  // namespace quillbay::torture
