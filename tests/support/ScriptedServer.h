#pragma once

#include "Connection.h"

#include <list>
#include <thread>

namespace quillbay::test {

/// An HTTP/1.1 server on 127.0.0.1 that does, byte by byte, what a test says, and remembers what
/// it was sent. Declare it after everything its handlers use: its destructor joins their threads.
class ScriptedServer {
 public:
  using RequestHandler = std::function<Reply(const Request&)>;
  using ConnectionHandler = std::function<void(Connection&)>;

  enum Protocol { https, plain };

  /// Listens at once.
  explicit ScriptedServer(Protocol protocol = https);
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;
  ~ScriptedServer();

  /// Ordinary service of new connections: every request is read whole, `handler` (on the
  /// connection's thread) makes its reply, at first an empty 200; connections are kept.
  void onRequest(RequestHandler handler);

  /// Plays every new connection with `script` instead, and closes it when the script returns.
  void onConnection(ConnectionHandler script) {
    const std::lock_guard lock(mutex_);
    script_ = std::move(script);
  }

  int port() const { return port_; }
  /// "https://127.0.0.1:PORT" (or http) followed by `path`.
  std::string address(std::string_view path = "/", std::string_view host = "127.0.0.1") const;

  /// Connections accepted so far, whatever became of them.
  std::size_t connectionCount() const {
    const std::lock_guard lock(mutex_);
    return connections_.size();
  }
  /// The requests so far, in the order in which they began, each as far as it has been read.
  std::vector<Request> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  /// Stops listening and ends all connections, stalled ones too. Idempotent.
  void stop();

 private:
  void acceptConnections();
  Connection::Recorder recorder();

  SSL_CTX* tls_ = nullptr;  // none: plain
  host::FileDescriptor listener_;
  int port_ = 0;

  mutable std::mutex mutex_;
  ConnectionHandler script_;
  std::vector<Request> requests_;
  std::list<Connection> connections_;

  std::vector<std::jthread> connectionThreads_;
  std::jthread acceptThread_;
};

/// Has https://cloud.quillbay.example and https://localhost lead to `server`, if there is one;
/// trusts the test's authority alone; forgets the environment's proxies. Call it before transfers.
void useTestNetwork(const ScriptedServer* server = nullptr);

}  // namespace quillbay::test
