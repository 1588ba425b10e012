#pragma once

#include <filesystem>
#include <string>

#include "Life.h"
#include "Process.h"

namespace quillbay::torture {

/// A host of the library as a process of its own, which does what it is told.
class Host {
 public:
  struct Report {
    std::string outcome;
    /// "-" if there is none.
    std::string session;
    long residentKibibyteCount = 0;
    long descriptorCount = 0;

    bool isSuccess() const { return outcome == "success"; }
  };

  Host(const World& world, const std::filesystem::path& folder, const std::string& instance,
       int port);

  /// "share", "resume" or "delete". Throws `Fault` if no report comes.
  Report order(const std::string& what);
  /// Throws `Fault` unless it ends in order.
  void end();

 private:
  std::string readLine();
  [[noreturn]] void fail(const std::string& what) const;

  const std::filesystem::path folder_;
  host::FileDescriptor orders_;
  host::FileDescriptor reports_;
  Process process_;
};

}  // namespace quillbay::torture
