#pragma once

#include <filesystem>

#include "Surroundings.h"

namespace quillbay::torture {

/// Surroundings in a new file.
class MappedSurroundings {
 public:
  explicit MappedSurroundings(const std::filesystem::path& file);
  ~MappedSurroundings();
  MappedSurroundings(const MappedSurroundings&) = delete;
  MappedSurroundings& operator=(const MappedSurroundings&) = delete;

  Surroundings* operator->() const { return mapped_; }
  Surroundings& operator*() const { return *mapped_; }

 private:
  Surroundings* mapped_;
};

}  // namespace quillbay::torture
