#include "benchmarks/server/DelayingRelay.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "benchmarks/server/Listener.h"
#include "benchmarks/support/RoundTrip.h"

namespace quillbay::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPieceByteCount = 64UZ * 1024;

// A sleep ends some tenths of a millisecond late, which the clients would be charged with.
constexpr std::chrono::microseconds kLongestOversleep(500);

/// Empty at the end of the stream.
using Piece = std::vector<char>;

/// Pieces on their way. One thread puts them in, another takes them out when they have arrived.
class Wire {
 public:
  void put(Piece piece, Clock::time_point arrival) {
    const std::lock_guard lock(mutex_);
    pieces_.emplace_back(arrival, std::move(piece));
    changed_.notify_one();
  }

  Piece take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !pieces_.empty(); });
    auto [arrival, piece] = std::move(pieces_.front());
    pieces_.pop_front();
    lock.unlock();
    std::this_thread::sleep_until(arrival - kLongestOversleep);
    while (Clock::now() < arrival) continue;
    return std::move(piece);
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<Clock::time_point, Piece>> pieces_;  // guarded by mutex_
};

void receive(int socket, Clock::time_point open, Wire& wire) {
  for (;;) {
    Piece piece(kPieceByteCount);
    const ssize_t count = recv(socket, piece.data(), piece.size(), 0);
    piece.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    const bool isEnd = piece.empty();
    wire.put(std::move(piece), std::max(Clock::now(), open) + (kRoundTrip / 2));
    if (isEnd) return;
  }
}

void send(int socket, Wire& wire) {
  for (Piece piece = wire.take(); !piece.empty(); piece = wire.take()) {
    for (std::size_t sent = 0; sent < piece.size();) {
      const ssize_t count = ::send(socket, piece.data() + sent, piece.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) break;
      sent += static_cast<std::size_t>(count);
    }
  }
  shutdown(socket, SHUT_WR);
}

}  // namespace

void relayWithDelay(int client, int port) {
  const int server = connectToLoopback(port);
  const auto now = Clock::now();
  {
    Wire up;
    Wire down;
    const std::jthread fromClient([&] { receive(client, now + kRoundTrip, up); });
    const std::jthread toServer([&] { send(server, up); });
    const std::jthread fromServer([&] { receive(server, now, down); });
    send(client, down);
  }
  close(server);
  close(client);
}

}  // namespace quillbay::bench
