#pragma once

#include "Connection.h"
#include "Gate.h"
#include "Reply.h"
#include "Request.h"
#include "TestCertificates.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillbay::test {

/// An HTTP/1.1 server on 127.0.0.1 that does, byte by byte, what a test says, and remembers what
/// it was sent. Declare it after everything its handlers use: its destructor joins their threads.
class ScriptedServer {
 public:
  using RequestHandler = std::function<Reply(const Request&)>;
  using ConnectionHandler = std::function<void(Connection&)>;

  /// Listens at once. Without a certificate it speaks plain HTTP.
  explicit ScriptedServer(
      std::optional<TestCertificates::Server> certificate = TestCertificates::Server::trusted);
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;
  ~ScriptedServer();

  static constexpr std::nullopt_t plain = std::nullopt;

  /// Ordinary service: every request is read whole, `handler` (on the connection's thread) makes
  /// its reply, connections are kept. May be set again at any time. Without a handler every
  /// request gets an empty 200.
  void onRequest(RequestHandler handler);

  /// Plays every new connection with `script`, on a thread of its own, in place of the above; the
  /// connection closes when the script returns.
  void onConnection(ConnectionHandler script);

  int port() const { return port_; }
  /// "https://127.0.0.1:PORT" (or http) followed by `path`.
  std::string address(std::string_view path = "/", std::string_view host = "127.0.0.1") const;

  /// Connections accepted so far, whatever became of them.
  std::size_t connectionCount() const;
  /// The requests so far, in the order in which they began, each as far as it has been read.
  std::vector<Request> requests() const;

  /// Stops listening and ends all connections, stalled ones too. Idempotent.
  void stop();

 private:
  void acceptConnections();
  void serve(FileDescriptor socket, std::size_t number);
  void serveRequests(Connection& connection);

  const bool isTLS_;
  std::shared_ptr<SSL_CTX> tls_;
  FileDescriptor listener_;
  int port_ = 0;
  Gate stopped_;

  mutable std::mutex mutex_;
  RequestHandler requestHandler_;
  ConnectionHandler connectionHandler_;
  std::size_t connectionCount_ = 0;
  std::vector<Request> requests_;
  std::vector<std::thread> connectionThreads_;

  std::thread acceptThread_;
};

/// A port of 127.0.0.1 at which nobody listens.
int unusedPort();

}  // namespace quillbay::test
