#include "ErrorReplies.h"

#include <utility>

namespace quillbay::torture {
namespace {

using test::Reply;

Reply storeError(int status, const std::string& code) {
  return {.status = status,
          .headerFields = {{"Content-Type", "application/xml"}},
          .body = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Error><Code>" + code +
                  "</Code><Message>Not this time.</Message><RequestId>4442587FB7D0A2F9</RequestId>"
                  "<HostId>aGVsbG8=</HostId></Error>"};
}

Reply serviceError(int status) {
  return Reply::json(R"({"message":"Not this time.","status":)" + std::to_string(status) + "}",
                     status);
}

Reply success(std::string body, std::vector<std::pair<std::string, std::string>> fields = {}) {
  return {.headerFields = std::move(fields), .body = std::move(body)};
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

std::vector<Reply> errorDocuments() {
  const std::string document = storeError(500, "InternalError").body;
  return {storeError(403, "AccessDenied"),
          storeError(403, "SignatureDoesNotMatch"),
          storeError(403, "RequestTimeTooSkewed"),
          storeError(400, "RequestTimeout"),
          storeError(400, "EntityTooLarge"),
          storeError(400, "ExpiredToken"),
          storeError(400, "BadDigest"),
          storeError(404, "NoSuchBucket"),
          storeError(500, "InternalError"),
          storeError(503, "SlowDown"),
          storeError(503, "ServiceUnavailable"),
          serviceError(400),
          serviceError(401),
          serviceError(404),
          serviceError(409),
          serviceError(410),
          serviceError(429),
          serviceError(503),
          {.status = 502, .body = "<html><body><h1>502 Bad Gateway</h1></body></html>"},
          Reply::empty(500),
          Reply::empty(403),
          Reply::empty(304),
          Reply::empty(417),
          {.status = 401, .headerFields = {{"WWW-Authenticate", "Basic realm=\"x\""}}},
          {.status = 403, .body = repeated(document, 10'000)}};
}

/// None is what was asked for.
std::vector<Reply> falseSuccesses() {
  const std::string document = storeError(500, "InternalError").body;
  return {success(""),
          success(document),
          success(document, {{"ETag", "\"0123456789abcdef0123456789abcdef\""}}),
          success("", {{"ETag", ""}}),
          success("{}"),
          success(repeated("[", 100'000)),
          success("\x1f\x8b broken", {{"Content-Encoding", "gzip"}})};
}

/// Each ends the connection.
std::vector<Reply> brokenReplies() {
  const std::string document = storeError(503, "SlowDown").body;
  const std::string bytes[] = {
      "\r\n",
      "SSH-2.0-OpenSSH_9.2\r\n",
      "HTTP/1.1 200 OK\r\nETag: \"0123",
      "HTTP/1.1 503 Slow\r\nContent-Length: 4000\r\n\r\n" + document,
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nff\r\n{\"id\"",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
      "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: 9\r\n\r\n{}",
      "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n{}",
      repeated("HTTP/1.1 100 Continue\r\n\r\n", 100),
      "HTTP/1.1 200 OK\r\n" + repeated("X-Filler: 0123456789\r\n", 50'000)};
  std::vector<Reply> replies;
  for (const std::string& each : bytes) replies.push_back({.raw = each});
  return replies;
}

std::vector<Reply> redirects(const std::string& target) {
  std::vector<Reply> replies;
  for (const int status : {301, 303, 307, 308}) {
    for (const std::string& location :
         {target, std::string("/nothing/here"), std::string("file:///etc/hostname"),
          std::string("https://127.0.0.1:1/")}) {
      replies.push_back(Reply::redirect(status, location));
    }
  }
  return replies;
}

}  // namespace

std::vector<Reply> allErrorReplies(const std::string& redirectTarget) {
  std::vector<Reply> all;
  for (const auto& replies :
       {errorDocuments(), falseSuccesses(), brokenReplies(), redirects(redirectTarget)}) {
    all.insert(all.end(), replies.begin(), replies.end());
  }
  return all;
}

}  // namespace quillbay::torture
