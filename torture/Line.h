#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <list>
#include <thread>

#include "Gate.h"

namespace quillbay::torture {

/// What happens to one connection of a `Line`.
struct Disturbance {
  enum class Kind { none, cut, reset, trickle };

  Kind kind = Kind::none;
  /// Counts the bytes of the client; else those of the server.
  bool isOfRequests = true;
  /// It happens once so many bytes have passed that way.
  std::uint64_t byteCount = 0;
  /// Nothing passes for so long before.
  std::chrono::milliseconds silence{0};
};

/// The network between a client and a server on loopback: carries bytes until a disturbance comes.
class Line {
 public:
  /// What happens to the n-th connection, counted from 0. Called on a thread of the line.
  using Plan = std::function<Disturbance(std::size_t connection)>;

  Line(int serverPort, Plan plan);
  /// Ends all connections.
  ~Line();
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  int port() const { return port_; }

 private:
  class Carrier;

  void acceptConnections();

  const int serverPort_;
  const Plan plan_;
  test::Gate end_;
  host::FileDescriptor listener_;
  int port_ = 0;
  std::list<std::future<void>> carriers_;
  std::jthread acceptor_;
};

}  // namespace quillbay::torture
