#pragma once

#include "FileDescriptor.h"
#include "Gate.h"
#include "Reply.h"
#include "Request.h"

#include <openssl/ssl.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::test {

/// One connection of a `ScriptedServer`, played by a test's script on a thread of its own. Every
/// operation ends at once when the client is gone or the server stops, and says so by its result.
class Connection {
 public:
  using Recorder = std::function<void(const Request&)>;
  static constexpr std::uint64_t all = std::numeric_limits<std::uint64_t>::max();

  /// `recorder` is told of the request whenever more of it has been read.
  Connection(FileDescriptor socket, SSL_CTX* tls, std::size_t number, int stopDescriptor,
             Recorder recorder);
  ~Connection();

  std::size_t number() const { return request_.connectionNumber; }

  /// Bounds what the system receives ahead of the script, so that a script that reads slowly is a
  /// slow line for the client.
  void limitReceiveBuffer(int byteCount);

  /// Reads the next request up to its empty line.
  std::optional<Request> readHead();
  /// Reads at most `byteCount` further bytes of the announced body; returns how many.
  std::uint64_t readBody(std::uint64_t byteCount = all);
  /// Reads the next request with its whole body, saying "100 Continue" if it expects that.
  std::optional<Request> readRequest();

  bool send(std::string_view bytes);
  /// Returns whether the connection can take another request.
  bool send(const Reply& reply);
  /// Sends byte by byte, with a pause before each.
  bool drip(std::string_view bytes, std::chrono::milliseconds interval);

  /// False if the server stops meanwhile.
  bool pause(std::chrono::milliseconds duration);
  /// Does nothing until the gate opens; false if the client left or the server stops first.
  bool waitFor(const Gate& gate);
  /// Reads and drops everything until the client closes its side. False if the server stops first.
  bool waitForClient();

  /// Ends the sending direction in order: the client reads an end, and can still send.
  void shutdownSending();
  /// Closes in order. What the client has sent and nobody has read makes the system reset the
  /// connection, as it does for any server that closes early.
  void close();
  /// Closes with a TCP reset.
  void reset();

 private:
  struct SSLDeleter {
    void operator()(SSL* ssl) const { SSL_free(ssl); }
  };

  bool handshake();
  bool waitForSocket(short events, int alsoDescriptor = -1);
  /// After a call that moved nothing: the event to wait for, 0 if the connection is over.
  short eventToWaitFor(ssize_t result, short direction) const;
  /// Appends what has arrived to `received_`, waiting for at least one byte.
  bool receive();

  FileDescriptor socket_;
  std::unique_ptr<SSL, SSLDeleter> ssl_;
  int stopDescriptor_;
  Recorder recorder_;
  std::string received_;
  Request request_;
};

}  // namespace quillbay::test
