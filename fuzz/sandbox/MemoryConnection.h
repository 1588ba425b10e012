#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "sandbox/http/Connection.h"

namespace quillbay::fuzz {

/// A client that has sent all its bytes and reads what it gets.
class MemoryConnection : public sandbox::Connection {
 public:
  /// Borrows the bytes. They arrive in pieces of at most `pieceByteCount`.
  MemoryConnection(std::string_view received, std::size_t pieceByteCount)
      : received_(received), pieceByteCount_(pieceByteCount) {}

  bool hasMore() const { return readByteCount_ < received_.size(); }
  std::string_view rest() const { return received_.substr(readByteCount_); }
  const std::string& sent() const { return sent_; }

  bool flush() override { return true; }
  std::uint64_t readByteCount() const override { return readByteCount_; }
  std::uint64_t writtenByteCount() const override { return sent_.size(); }
  bool is_readable() const override { return true; }
  bool is_writable() const override { return true; }
  ssize_t read(char* data, std::size_t byteLimit) override {
    const std::string_view piece = rest().substr(0, std::min(byteLimit, pieceByteCount_));
    if (piece.empty()) return -1;
    std::ranges::copy(piece, data);
    readByteCount_ += piece.size();
    return static_cast<ssize_t>(piece.size());
  }
  ssize_t write(const char* data, std::size_t byteCount) override {
    sent_.append(data, byteCount);
    return static_cast<ssize_t>(byteCount);
  }
  void get_remote_ip_and_port(std::string&, int&) const override {}
  void get_local_ip_and_port(std::string&, int&) const override {}
  socket_t socket() const override { return -1; }

 private:
  std::string_view received_;
  std::size_t pieceByteCount_;
  std::size_t readByteCount_ = 0;
  std::string sent_;
};

}  // namespace quillbay::fuzz
