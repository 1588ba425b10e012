#pragma once

#include "Gate.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillbay::test {

/// An ordinary reply. "Content-Length" is added where it belongs.
struct Reply {
  /// 0: none; the connection closes without a byte of reply.
  int status = 200;
  std::vector<std::pair<std::string, std::string>> headerFields = {};
  std::string body = {};
  /// Closes the connection.
  bool closeAfter = false;
  /// Holds the reply back until the gate opens.
  std::shared_ptr<Gate> sendAfter = {};
  /// Goes out in place of status, fields and body.
  std::string raw = {};

  static Reply json(std::string text, int status = 200);
  static Reply empty(int status);
  static Reply redirect(int status, std::string location);
  static Reply none();

  std::string bytes() const;
};

}  // namespace quillbay::test
