#include <QuillbayPlatform/network/AddressPolicy.h>
#include <QuillbayPlatform/network/Transfer.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>

namespace quillbay::platform {
namespace {

constexpr const char* kContentLength = "Content-Length";

constexpr std::size_t kMaximumReplyByteCount = std::size_t{64} << 20;
constexpr std::size_t kMaximumUploadReplyByteCount = std::size_t{1} << 20;
// Over TLS a buffer counts as sent only when the system has taken all of it: with a larger one a
// slow line looks dead between two buffers.
constexpr long kUploadBufferByteCount = 64L << 10;
constexpr long kReceiveBufferByteCount = 128L << 10;
// What the system may hold unsent: with megabytes of it, a slow line takes nothing from us for so
// long that it looks dead, and the progress runs ahead of the bytes.
constexpr int kUnsentByteCount = 128 << 10;

// Above this, a body waits for the server's word: a refusal that comes while the body is being
// sent is mostly lost with the connection.
constexpr std::uint64_t kExpectContinueByteCount = std::uint64_t{1} << 20;
// A server that ignores the question costs this once a file.
constexpr long kExpectContinueMilliseconds = 300;
constexpr int kExpectationFailedStatus = 417;

std::optional<std::uint64_t> announcedByteCount(const URLRequest& request) {
  const auto field = request.headerFields.find(kContentLength);
  if (field == request.headerFields.end()) return std::nullopt;
  const std::string& value = field->second;
  std::uint64_t byteCount = 0;
  const char* end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, byteCount);
  if (error != std::errc() || stop != end) return std::nullopt;
  return byteCount;
}

// A file name may hold line ends; on the wire they would begin further fields.
std::string headerLine(const std::string& name, std::string value) {
  std::ranges::replace_if(value, [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  const bool isBlank = value.find_first_not_of(" \t") == std::string::npos;
  // libcurl takes a line without a value for the wish to leave the field out.
  return isBlank ? name + ";" : name + ": " + value;
}

URLError::Code errorCode(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return URLError::Code::timedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return URLError::Code::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return URLError::Code::cannotConnectToHost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
      return URLError::Code::secureConnectionFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
      return URLError::Code::serverCertificateUntrusted;
    case CURLE_URL_MALFORMAT:
      return URLError::Code::unsupportedURL;
    // The address's protocol is known to be right: this is a reply without a status line.
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
      return URLError::Code::badServerResponse;
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
      return URLError::Code::networkConnectionLost;
    default:
      return URLError::Code::unknown;
  }
}

}  // namespace

Transfer::Transfer(URLRequest request, std::optional<URL> bodyFile,
                   std::shared_ptr<TaskProgress> progress, Finish finish)
    : request_(std::move(request)),
      bodyFile_(std::move(bodyFile)),
      progress_(std::move(progress)),
      finish_(std::move(finish)),
      redirectPolicy_(bodyFile_ ? RedirectPolicy::Kind::upload : RedirectPolicy::Kind::data),
      silence_(std::chrono::seconds(request_.timeoutSeconds)),
      reply_(bodyFile_ ? kMaximumUploadReplyByteCount : kMaximumReplyByteCount) {}

Transfer::State Transfer::begin(const NetworkSettings& settings) {
  settings_ = settings;
  if (!isAllowedAddress(request_.url)) {
    return fail(URLError::Code::unsupportedURL, "not an https address without a password");
  }
  if (isUpload() && openBody() == State::finished) return State::finished;
  return configure();
}

Transfer::State Transfer::openBody() {
  auto body = UploadBody::open(*bodyFile_, announcedByteCount(request_));
  if (!body) return fail(URLError::Code::cannotReadFile, body.error()->description());
  body_ = std::move(*body);
  return State::running;
}

Transfer::State Transfer::configure() {
  // A new handle for each request. In a handle that has had a reply, libcurl 7.88 adds to a field
  // of it, which is freed, when the next one begins with a line that goes on with the field before.
  easy_.reset(curl_easy_init());
  if (!easy_) return fail(URLError::Code::unknown, "out of memory");
  reply_.reset();
  silence_.restart();
  errorText_[0] = '\0';
  configureConnection();
  configureRoute();
  configureBody();
  configureHeaders();
  configureCallbacks();
  return State::running;
}

void Transfer::configureConnection() {
  CURL* easy = easy_.get();
  curl_easy_setopt(easy, CURLOPT_URL, request_.url.absoluteString().c_str());
  curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, static_cast<long>(request_.timeoutSeconds));
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // A slow resolver must not hold up the end of the process.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReceiveBufferByteCount);
  // When a kept connection dies unanswered, libcurl sends the request again. A POST must not be,
  // nor a file. Of a file, libcurl would have to rewind what it sent, for which it has no function
  // of ours; but an empty one is sent with the head.
  if (request_.method == "POST" || (isUpload() && bodyByteCount() == 0)) {
    curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L);
  }
}

void Transfer::configureRoute() {
  CURL* easy = easy_.get();
  routeList_.reset();
  for (const std::string& route : settings_.connectTo) append(routeList_, route.c_str());
  curl_easy_setopt(easy, CURLOPT_CONNECT_TO, routeList_.get());
  if (!settings_.caBundlePath.empty()) {
    curl_easy_setopt(easy, CURLOPT_CAINFO, settings_.caBundlePath.c_str());
  }
  // With a folder of certificates beside the bundle, the roots are parsed for every connection.
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  if (request_.url.scheme() == "http" || isLoopbackHost(request_.url.host())) {
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
  } else if (!settings_.proxy.empty()) {
    curl_easy_setopt(easy, CURLOPT_PROXY, settings_.proxy.c_str());
    // The environment's exceptions are from its own proxy.
    curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
  }
}

void Transfer::configureBody() {
  CURL* easy = easy_.get();
  if (isUpload()) {
    body_->rewind();
    curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(body_->byteCount()));
    curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, kUploadBufferByteCount);
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, readBody);
    curl_easy_setopt(easy, CURLOPT_READDATA, this);
  } else if (request_.body || request_.method == "POST" || request_.method == "PUT") {
    // These methods announce their length even when there is nothing to send.
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(bodyByteCount()));
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request_.body ? request_.body->data() : "");
  }
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request_.method.c_str());
  if (asksBeforeBody()) {
    curl_easy_setopt(easy, CURLOPT_EXPECT_100_TIMEOUT_MS, kExpectContinueMilliseconds);
  }
}

void Transfer::configureHeaders() {
  auto fields = request_.headerFields;
  // Announced from the body itself, once.
  fields.erase(kContentLength);
  headerList_.reset();
  for (const auto& [name, value] : fields) append(headerList_, headerLine(name, value).c_str());
  if (!asksBeforeBody()) append(headerList_, "Expect:");
  if (isUpload()) {
    // A presigned address may refuse fields that were not signed.
    append(headerList_, "Accept:");
  } else {
    if (!fields.contains("Content-Type")) append(headerList_, "Content-Type:");
    // As a field of ours, so that libcurl leaves the unpacking to us.
    append(headerList_, "Accept-Encoding: gzip");
  }
  curl_easy_setopt(easy_.get(), CURLOPT_HTTPHEADER, headerList_.get());
}

void Transfer::configureCallbacks() {
  CURL* easy = easy_.get();
  curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, receiveHeader);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, receiveBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openSocket);
  curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, connected);
  curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
  // A proxy's reply to CONNECT is not the server's.
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, reportProgress);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
}

std::uint64_t Transfer::bodyByteCount() const {
  if (body_) return body_->byteCount();
  return request_.body ? request_.body->size() : 0;
}

bool Transfer::hasSmallBody() const {
  return std::cmp_less_equal(bodyByteCount(), kUploadBufferByteCount);
}

/// Whether the head goes ahead of the body and asks if that is wanted (RFC 9110, section 10.1.1).
bool Transfer::asksBeforeBody() const {
  return mayAskBeforeBody_ && bodyByteCount() > kExpectContinueByteCount;
}

Transfer::State Transfer::performed(CURLcode code) {
  if (wasAskingRefused()) {
    mayAskBeforeBody_ = false;
    return configure();
  }
  if (successCameEarly()) {
    return fail(URLError::Code::networkConnectionLost,
                "the server answered before the whole body was sent");
  }
  // Whatever becomes of the rest of the reply.
  if (isUpload() && reply_.statusCode() / 100 == 2) progress_->complete();
  auto response = reply_.response(request_.url);
  if (code != CURLE_OK) return finish({std::nullopt, std::move(response), transportError(code)});
  if (!response) {
    return fail(URLError::Code::networkConnectionLost, "the server gave no complete reply");
  }
  return follow(*response);
}

Transfer::State Transfer::follow(const HTTPURLResponse& response) {
  auto decision = redirectPolicy_.decide(request_, response);
  if (auto* next = std::get_if<URLRequest>(&decision)) {
    request_ = std::move(*next);
    return configure();
  }
  if (auto* error = std::get_if<std::shared_ptr<const URLError>>(&decision)) {
    return finish({std::nullopt, std::nullopt, std::move(*error)});
  }
  return deliver(response);
}

Transfer::State Transfer::deliver(const HTTPURLResponse& response) {
  if (isUpload()) return finish({reply_.takeBody(), response, nullptr});
  auto body =
      reply_.takeUnpackedBody(response.valueForHTTPHeaderField("Content-Encoding").value_or(""));
  if (body) return finish({std::move(body), response, nullptr});
  return finish({std::nullopt, response, transportError(CURLE_OK)});
}

bool Transfer::wholeBodyWasSent() const {
  curl_off_t sentByteCount = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_SIZE_UPLOAD_T, &sentByteCount);
  return std::cmp_equal(sentByteCount, bodyByteCount());
}

/// A success that cannot be meant for the file, because it is not all there.
bool Transfer::successCameEarly() const {
  return isUpload() && reply_.statusCode() / 100 == 2 && !wholeBodyWasSent();
}

/// The server, or a proxy on the way, does not want to be asked: the request is to be sent without
/// the question. A server that got the whole body has refused for good.
bool Transfer::wasAskingRefused() const {
  return reply_.statusCode() == kExpectationFailedStatus && asksBeforeBody() && !wholeBodyWasSent();
}

ErrorPtr Transfer::transportError(CURLcode code) const {
  if (bodyError_) return makeError(URLError::Code::cannotReadFile, bodyError_->description());
  if (reply_.isOverLimit()) {
    return makeError(URLError::Code::dataLengthExceedsMaximum, "the reply is too large");
  }
  if (silence_.isOver()) {
    return makeError(URLError::Code::timedOut,
                     "nothing moved for " + std::to_string(request_.timeoutSeconds) + " seconds");
  }
  return makeError(errorCode(code), transportReason(code));
}

std::string Transfer::transportReason(CURLcode code) const {
  if (code == CURLE_SEND_FAIL_REWIND)
    return "the connection was lost while the file was being sent";
  if (code == CURLE_UNSUPPORTED_PROTOCOL) return "the reply is not HTTP";
  const std::string text = errorText_.data();
  // libcurl quotes a proxy setting that it cannot use, password included.
  if (text.starts_with("Unsupported proxy")) return "the address of the proxy is not valid";
  return text.empty() ? curl_easy_strerror(code) : text;
}

ErrorPtr Transfer::makeError(URLError::Code code, const std::string& reason) const {
  return std::make_shared<const URLError>(
      code, request_.method + " " + request_.url.redacted() + ": " + reason);
}

Transfer::State Transfer::fail(URLError::Code code, const std::string& reason) {
  return finish({std::nullopt, std::nullopt, makeError(code, reason)});
}

Transfer::State Transfer::finish(Outcome outcome) {
  finish_(std::move(outcome));
  return State::finished;
}

std::size_t Transfer::readBody(char* buffer, std::size_t size, std::size_t count,
                               void* transfer) noexcept {
  auto& self = *static_cast<Transfer*>(transfer);
  auto byteCount = self.body_->read(std::as_writable_bytes(std::span(buffer, size * count)));
  if (byteCount) return *byteCount;
  self.bodyError_ = std::move(byteCount.error());
  return CURL_READFUNC_ABORT;
}

std::size_t Transfer::receiveHeader(char* bytes, std::size_t size, std::size_t count,
                                    void* transfer) noexcept {
  auto& self = *static_cast<Transfer*>(transfer);
  const std::string_view line(bytes, size * count);
  if (!self.reply_.appendHeaderLine(line)) return 0;
  // Nothing that is sent from here on can have been meant by that reply.
  if (self.successCameEarly()) return 0;
  // libcurl would repeat the request by itself, on a connection whose server may still be reading
  // the body that it was promised.
  if (self.wasAskingRefused()) return 0;
  return line.size();
}

std::size_t Transfer::receiveBody(char* bytes, std::size_t size, std::size_t count,
                                  void* transfer) noexcept {
  auto& self = *static_cast<Transfer*>(transfer);
  const std::string_view piece(bytes, size * count);
  return self.reply_.appendBody(piece) ? piece.size() : 0;
}

int Transfer::connected(void* transfer, char*, char*, int, int) noexcept {
  static_cast<Transfer*>(transfer)->silence_.restart();
  return CURL_PREREQFUNC_OK;
}

int Transfer::reportProgress(void* transfer, curl_off_t, curl_off_t downloaded,
                             curl_off_t uploadTotal, curl_off_t uploaded) noexcept {
  auto& self = *static_cast<Transfer*>(transfer);
  if (self.isUpload()) self.progress_->update(uploaded, uploadTotal);
  long headByteCount = 0;
  curl_easy_getinfo(self.easy_.get(), CURLINFO_HEADER_SIZE, &headByteCount);
  self.silence_.observe(headByteCount + downloaded, uploaded);
  return self.silence_.isOver() ? 1 : 0;
}

curl_socket_t Transfer::openSocket(void*, curlsocktype, curl_sockaddr* address) noexcept {
  const int opened = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  setsockopt(opened, IPPROTO_TCP, TCP_NOTSENT_LOWAT, &kUnsentByteCount, sizeof kUnsentByteCount);
  return opened;
}

}  // namespace quillbay::platform
