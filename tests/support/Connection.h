#pragma once

#include "HttpMessages.h"
#include "hosts/common/FileDescriptor.h"

#include <openssl/ssl.h>

#include <chrono>
#include <functional>
#include <limits>
#include <mutex>

namespace quillbay::test {

/// One connection of a `ScriptedServer`, played by a test's script on a thread of its own. Every
/// operation ends at once when the client is gone or the server stops, and says so by its result.
class Connection {
 public:
  using Recorder = std::function<void(const Request&)>;
  static constexpr std::uint64_t all = std::numeric_limits<std::uint64_t>::max();

  /// Speaks TLS if there is a context; shakes hands with the first read. `recorder` is told of the
  /// request whenever more of it has been read.
  Connection(host::FileDescriptor socket, SSL_CTX* tls, Recorder recorder);
  ~Connection() { close(); }

  /// Bounds what the system receives ahead of the script, so that a script that reads slowly is a
  /// slow line for the client.
  void limitReceiveBuffer(int byteCount);

  /// Reads the next request up to its empty line.
  std::optional<Request> readHead();
  /// Reads at most `byteCount` further bytes of the announced body; returns how many.
  std::uint64_t readBody(std::uint64_t byteCount = all);
  /// The latest request, as far as it has been read.
  const Request& request() const { return request_; }
  /// Reads the next request with at most `bodyByteCount` bytes of its body, saying "100 Continue"
  /// if it expects that. Nothing if the client left before.
  std::optional<Request> readRequest(std::uint64_t bodyByteCount = all);

  bool send(std::string_view bytes);
  /// Returns whether the connection can take another request.
  bool send(const Reply& reply);

  /// False if the server stops meanwhile.
  bool pause(std::chrono::milliseconds duration);
  /// Does nothing until the gate opens; false if the client left or the server stops first.
  bool waitFor(const Gate& gate);
  /// Reads and drops everything until the client closes its side.
  void waitForClient() {
    while (receive()) received_.clear();
  }

  /// Ends the sending direction in order: the client reads an end, and can still send.
  void shutdownSending();
  /// Closes in order. Bytes that the script has not read make the system reset the connection, as
  /// it does for any server that closes early.
  void close() {
    shutdownSending();
    release();
  }
  /// Closes with a TCP reset.
  void reset();

  /// Ends whatever the script is waiting for. Any thread.
  void interrupt();

 private:
  /// Appends what has arrived to `received_`, waiting for at least one byte.
  bool receive();
  void release();

  std::mutex mutex_;  // against an interruption while the socket is closed
  host::FileDescriptor socket_;
  std::unique_ptr<SSL, decltype(&SSL_free)> ssl_{nullptr, SSL_free};
  Recorder recorder_;
  std::string received_;
  Request request_;
};

}  // namespace quillbay::test
