#pragma once

#include "FileDescriptor.h"

namespace quillbay::test {

/// Closed until somebody opens it, then open for good. Any thread. Held by `std::shared_ptr`
/// wherever a server's thread may still be waiting at it.
class Gate {
 public:
  Gate();

  void open();
  bool isOpen() const;

  /// Readable once the gate is open.
  int descriptor() const { return event_.get(); }

 private:
  FileDescriptor event_;
};

}  // namespace quillbay::test
