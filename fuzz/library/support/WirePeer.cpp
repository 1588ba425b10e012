#include "WirePeer.h"

#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/NetworkSettings.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "Requests.h"
#include "fuzz/support/Expect.h"

namespace quillbay::fuzz {
namespace {

/// How long a script waits for a request on a connection that may not be used again.
constexpr int kMomentMilliseconds = 5;

constexpr std::string_view kHeadMark("\0h", 2);
constexpr std::string_view kBodyMark("\0b", 2);
constexpr std::string_view kAgainMark("\0k", 2);

/// Makes `descriptor` one end of a pair, and gives the other.
int connectedPeer(int descriptor) {
  int ends[2];
  expect(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "a pair of sockets");
  const int flags = fcntl(descriptor, F_GETFL);
  dup3(ends[0], descriptor, O_CLOEXEC);
  fcntl(descriptor, F_SETFL, flags);
  close(ends[0]);
  return ends[1];
}

bool isInternetStream(int descriptor, const sockaddr* address) {
  int type = 0;
  socklen_t length = sizeof type;
  getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length);
  const bool isInternet = address->sa_family == AF_INET || address->sa_family == AF_INET6;
  return isInternet && type == SOCK_STREAM;
}

/// A request, or bytes that will never become one.
bool hasRequest(const std::string& received, std::size_t answeredCount) {
  const bool isOther = !received.empty() && (received[0] < 'A' || received[0] > 'Z');
  return (isOther && answeredCount == 0) || requestsIn(received).size() > answeredCount;
}

}  // namespace
}  // namespace quillbay::fuzz

// In the place of the C library's, for libcurl.
extern "C" [[gnu::visibility("default")]] int connect(int descriptor, const sockaddr* address,
                                                      socklen_t length) {
  using namespace quillbay::fuzz;
  if (!isInternetStream(descriptor, address)) {
    return static_cast<int>(syscall(SYS_connect, descriptor, address, length));
  }
  WirePeer::shared().take(connectedPeer(descriptor));
  return 0;
}

namespace quillbay::fuzz {

WirePeer& WirePeer::shared() {
  static WirePeer peer;
  return peer;
}

WirePeer::WirePeer() : wakeup_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  // No name is looked up, and no proxy asked.
  for (const char* variable :
       {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
    unsetenv(variable);
  platform::NetworkSettings::set({.connectTo = {"::127.0.0.1:9"}, .caBundlePath = {}, .proxy = {}});
  platform::setMainQueuePoster([this](auto runOneItem) { post(std::move(runOneItem)); });
}

void WirePeer::post(std::function<void()> runOneItem) {
  const std::lock_guard lock(mutex_);
  posted_.push_back(std::move(runOneItem));
  eventfd_write(wakeup_, 1);
}

void WirePeer::take(int descriptor) {
  const std::lock_guard lock(mutex_);
  taken_.push_back(descriptor);
  eventfd_write(wakeup_, 1);
}

std::vector<std::string> WirePeer::play(std::string_view script,
                                        const std::function<bool()>& isFinished) {
  while (!isFinished()) {
    Step step = Step::played;
    while (step == Step::played) step = playOne(script);
    if (step == Step::over) closeSending();
    const bool waitsForAMoment = script.starts_with(kAgainMark) && current_;
    if (!awaitEvents(waitsForAMoment ? kMomentMilliseconds : -1)) script = {};
    acceptTaken();
    receiveAll();
    runPosted();
  }
  acceptTaken();
  receiveAll();
  std::vector<std::string> received;
  for (Connection& connection : connections_) {
    received.push_back(std::move(connection.received));
    close(connection.descriptor);
  }
  connections_.clear();
  current_ = nullptr;
  return received;
}

void WirePeer::runPosted() {
  std::deque<std::function<void()>> posted;
  {
    const std::lock_guard lock(mutex_);
    posted.swap(posted_);
  }
  for (const auto& runOneItem : posted) runOneItem();
}

void WirePeer::acceptTaken() {
  const std::lock_guard lock(mutex_);
  for (const int descriptor : taken_) connections_.push_back({.descriptor = descriptor});
  taken_.clear();
}

bool WirePeer::awaitEvents(int milliseconds) {
  std::vector<pollfd> polled = {{wakeup_, POLLIN, 0}};
  for (const Connection& connection : connections_) {
    if (!connection.isOver) polled.push_back({connection.descriptor, POLLIN, 0});
  }
  const int eventCount = poll(polled.data(), polled.size(), milliseconds);
  eventfd_t ignored = 0;
  eventfd_read(wakeup_, &ignored);
  return eventCount != 0;
}

void WirePeer::receiveAll() {
  char buffer[1 << 16];
  for (Connection& connection : connections_) {
    ssize_t count = 0;
    while ((count = recv(connection.descriptor, buffer, sizeof buffer, MSG_DONTWAIT)) > 0) {
      connection.received.append(buffer, static_cast<std::size_t>(count));
    }
    const bool isOpen = count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    connection.isOver = !isOpen;
  }
}

/// Takes off the script what was played.
WirePeer::Step WirePeer::playOne(std::string_view& script) {
  if (script.empty()) return Step::over;
  Step step = Step::played;
  std::size_t byteCount = kHeadMark.size();
  if (script.starts_with(kHeadMark)) {
    step = awaitHead(/*onSameConnection=*/false);
  } else if (script.starts_with(kAgainMark)) {
    step = awaitHead(/*onSameConnection=*/true);
  } else if (script.starts_with(kBodyMark)) {
    step = awaitBody();
  } else {
    byteCount = std::min(script.find('\0', 1), script.size());
    step = send(script.substr(0, byteCount));
  }
  if (step == Step::played) script.remove_prefix(byteCount);
  return step;
}

WirePeer::Step WirePeer::awaitHead(bool onSameConnection) {
  if (current_ && current_->isAnswering) {
    if (!onSameConnection) shutdown(current_->descriptor, SHUT_WR);
    ++current_->answeredRequestCount;
    current_->isAnswering = false;
    if (!onSameConnection) current_ = nullptr;
  }
  for (Connection& connection : connections_) {
    if (!hasRequest(connection.received, connection.answeredRequestCount)) continue;
    current_ = &connection;
    current_->saidContinue = false;
    return Step::played;
  }
  return Step::waiting;
}

WirePeer::Step WirePeer::awaitBody() {
  if (!current_ || current_->isAnswering || current_->isOver) return Step::played;
  const auto requests = requestsIn(current_->received);
  if (requests.size() <= current_->answeredRequestCount) return Step::played;
  const Request& request = requests[current_->answeredRequestCount];
  if (request.isWhole()) return Step::played;
  if (!request.values("expect").empty() && !std::exchange(current_->saidContinue, true)) {
    constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
    ::send(current_->descriptor, kContinue.data(), kContinue.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  return Step::waiting;
}

WirePeer::Step WirePeer::send(std::string_view bytes) {
  if (!current_ && connections_.empty()) return Step::waiting;
  if (!current_) current_ = &connections_.back();
  ::send(current_->descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  current_->isAnswering = true;
  return Step::played;
}

void WirePeer::closeSending() {
  for (const Connection& connection : connections_) shutdown(connection.descriptor, SHUT_WR);
}

}  // namespace quillbay::fuzz
