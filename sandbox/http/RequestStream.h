#pragma once

#include <httplib.h>

#include <string>

#include "sandbox/http/HeadCheck.h"

namespace quillbay::sandbox {

/// One request of a connection as the HTTP library reads it. The library answers a Range header
/// that it does not understand with 416 before any handler runs, where RFC 9110, section 14.2, has
/// it ignored; so it sees the header under the name `rangeAlias`. A head that is malformed breaks
/// off behind the line that is, which the library answers with 400.
class RequestStream : public httplib::Stream {
 public:
  static constexpr const char* rangeAlias = "X-Sandbox-Range";

  /// Borrows the connection.
  explicit RequestStream(httplib::Stream& connection) : connection_(connection) {}

  bool is_readable() const override { return connection_.is_readable(); }
  bool is_writable() const override { return connection_.is_writable(); }
  ssize_t read(char* data, std::size_t byteLimit) override;
  ssize_t write(const char* data, std::size_t byteCount) override {
    return connection_.write(data, byteCount);
  }
  void get_remote_ip_and_port(std::string& ip, int& port) const override {
    connection_.get_remote_ip_and_port(ip, port);
  }
  void get_local_ip_and_port(std::string& ip, int& port) const override {
    connection_.get_local_ip_and_port(ip, port);
  }
  socket_t socket() const override { return connection_.socket(); }

 private:
  bool readHeadLine();

  httplib::Stream& connection_;
  /// What is left of the line that was read last.
  std::string line_;
  HeadCheck head_;
  bool isInHead_ = true;
  bool isMalformed_ = false;
};

}  // namespace quillbay::sandbox
