#include "Line.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

namespace quillbay::torture {
namespace {

using host::FileDescriptor;
using Kind = Disturbance::Kind;

constexpr std::size_t kPieceByteCount = 16 * 1024;
// A trickle is slow for so many pieces, so that it ends.
constexpr std::size_t kTrickleByteCount = 97;
constexpr int kTricklePieceCount = 50;
constexpr std::chrono::milliseconds kTricklePause{3};
constexpr std::chrono::milliseconds kCutPause{20};

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

FileDescriptor makeSocket() {
  return FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

FileDescriptor connectTo(int port) {
  FileDescriptor socket = makeSocket();
  const sockaddr_in address = loopback(port);
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    socket.reset();
  }
  return socket;
}

void setUp(const FileDescriptor& socket) {
  const int noDelay = 1;
  ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
  // A peer that does not read must not hold the end of the line up.
  const timeval bound{.tv_sec = 2, .tv_usec = 0};
  ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &bound, sizeof bound);
}

bool sendAll(const FileDescriptor& socket, const char* bytes, std::size_t byteCount) {
  while (byteCount > 0) {
    const ssize_t sent = ::send(socket.get(), bytes, byteCount, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes += sent;
    byteCount -= static_cast<std::size_t>(sent);
  }
  return true;
}

}  // namespace

/// One connection, on a thread of its own.
class Line::Carrier {
 public:
  Carrier(FileDescriptor client, FileDescriptor server, Disturbance disturbance,
          const test::Gate& end)
      : ways_{Way{&client_, &server_}, Way{&server_, &client_}},
        client_(std::move(client)),
        server_(std::move(server)),
        disturbance_(disturbance),
        end_(end) {
    setUp(client_);
    setUp(server_);
    Way& way = ways_[disturbance.isOfRequests ? 0 : 1];
    if (disturbance.kind != Kind::none) way.byteCountUntilDisturbance = disturbance.byteCount;
  }

  void run() {
    while (ways_[0].isOpen || ways_[1].isOpen) {
      std::array<pollfd, 3> events{};
      for (int i : {0, 1}) events[i] = {ways_[i].isOpen ? ways_[i].from->get() : -1, POLLIN, 0};
      events[2] = {end_.descriptor(), POLLIN, 0};
      ::poll(events.data(), events.size(), -1);
      if (events[2].revents != 0) return;
      for (int i : {0, 1}) {
        if (events[i].revents != 0 && !carry(ways_[i])) return;
      }
    }
  }

 private:
  struct Way {
    const FileDescriptor* from;
    const FileDescriptor* to;
    bool isOpen = true;
    std::uint64_t byteCountUntilDisturbance = std::numeric_limits<std::uint64_t>::max();
    int slowPieceCount = 0;
  };

  /// False once the connection has ended.
  bool carry(Way& way) {
    if (way.byteCountUntilDisturbance == 0 && !disturb(way)) return false;
    std::array<char, kPieceByteCount> piece;
    std::uint64_t most = std::min<std::uint64_t>(piece.size(), way.byteCountUntilDisturbance);
    if (way.slowPieceCount > 0) {
      --way.slowPieceCount;
      most = std::min<std::uint64_t>(most, kTrickleByteCount);
      if (hasEndedIn(kTricklePause)) return false;
    }
    const ssize_t received = ::recv(way.from->get(), piece.data(), most, 0);
    if (received < 0) return false;
    if (received == 0) {
      way.isOpen = false;
      return ::shutdown(way.to->get(), SHUT_WR) == 0;
    }
    way.byteCountUntilDisturbance -= static_cast<std::uint64_t>(received);
    return sendAll(*way.to, piece.data(), static_cast<std::size_t>(received));
  }

  bool disturb(Way& way) {
    if (hasEndedIn(disturbance_.silence)) return false;
    way.byteCountUntilDisturbance = std::numeric_limits<std::uint64_t>::max();
    way.slowPieceCount = disturbance_.kind == Kind::trickle ? kTricklePieceCount : 0;
    if (disturbance_.kind == Kind::cut) endInOrder();
    if (disturbance_.kind == Kind::reset) resetAtClose();
    return disturbance_.kind == Kind::trickle;
  }

  /// To close at once would reset the connection if there is something to read.
  void endInOrder() {
    for (const FileDescriptor* socket : {&client_, &server_}) ::shutdown(socket->get(), SHUT_WR);
    hasEndedIn(kCutPause);
  }

  void resetAtClose() {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    for (const FileDescriptor* socket : {&client_, &server_}) {
      ::setsockopt(socket->get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
  }

  bool hasEndedIn(std::chrono::milliseconds duration) const {
    pollfd event{end_.descriptor(), POLLIN, 0};
    return ::poll(&event, 1, static_cast<int>(duration.count())) != 0;
  }

  std::array<Way, 2> ways_;
  const FileDescriptor client_;
  const FileDescriptor server_;
  const Disturbance disturbance_;
  const test::Gate& end_;
};

Line::Line(int serverPort, Plan plan)
    : serverPort_(serverPort), plan_(std::move(plan)), listener_(makeSocket()) {
  sockaddr_in address = loopback(0);
  socklen_t byteCount = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_.get(), generic, byteCount) != 0 ||
      ::getsockname(listener_.get(), generic, &byteCount) != 0 ||
      ::listen(listener_.get(), SOMAXCONN) != 0) {
    throw std::runtime_error("cannot listen at 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::jthread([this] { acceptConnections(); });
}

Line::~Line() {
  end_.open();
  ::shutdown(listener_.get(), SHUT_RDWR);
  acceptor_.join();
}

void Line::acceptConnections() {
  for (std::size_t count = 0;; ++count) {
    FileDescriptor client(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (end_.isOpen()) return;
    FileDescriptor server = connectTo(serverPort_);
    if (!client.isOpen() || !server.isOpen()) continue;
    std::erase_if(carriers_, [](const std::future<void>& carrier) {
      return carrier.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    auto carrier =
        std::make_unique<Carrier>(std::move(client), std::move(server), plan_(count), end_);
    carriers_.push_back(std::async(
        std::launch::async, [](std::unique_ptr<Carrier> connection) { connection->run(); },
        std::move(carrier)));
  }
}

}  // namespace quillbay::torture
