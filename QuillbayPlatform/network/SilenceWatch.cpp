#include <QuillbayPlatform/network/SilenceWatch.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <utility>

namespace quillbay::platform {
namespace {

int unacknowledgedByteCount(CURL* easy) {
  curl_socket_t socket = CURL_SOCKET_BAD;
  int byteCount = 0;
  if (curl_easy_getinfo(easy, CURLINFO_ACTIVESOCKET, &socket) != CURLE_OK) return 0;
  if (socket == CURL_SOCKET_BAD || ioctl(socket, SIOCOUTQ, &byteCount) != 0) return 0;
  return byteCount;
}

}  // namespace

void SilenceWatch::restart() {
  lastMovement_ = std::chrono::steady_clock::now();
  isOver_ = false;
}

void SilenceWatch::observe(std::int64_t receivedByteCount, std::int64_t sentByteCount, CURL* easy) {
  const auto now = std::chrono::steady_clock::now();
  const bool received = std::exchange(receivedByteCount_, receivedByteCount) != receivedByteCount;
  const bool sent = std::exchange(sentByteCount_, sentByteCount) != sentByteCount;
  if (received || sent) {
    lastMovement_ = now;
    return;
  }
  const int unacknowledged = unacknowledgedByteCount(easy);
  if (std::exchange(unacknowledgedByteCount_, unacknowledged) != unacknowledged) {
    lastMovement_ = now;
    return;
  }
  isOver_ = now - lastMovement_ >= timeout_;
}

}  // namespace quillbay::platform
