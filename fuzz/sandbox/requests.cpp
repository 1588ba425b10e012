// Whole connections to the sandbox: bytes of requests in, bytes of replies out. What a client would
// have been given replaces "$T" and the like; the first byte tells in what pieces bytes arrive.
#include <expat.h>
#include <fuzz/support/Expect.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fuzz/sandbox/HttpMessages.h"
#include "fuzz/sandbox/MemoryConnection.h"
#include "fuzz/sandbox/SandboxInMemory.h"
#include "fuzz/sandbox/Utf8.h"
#include "sandbox/http/RequestServer.h"

using namespace quillbay;
using fuzz::expect;
using fuzz::HttpReply;
using fuzz::SandboxInMemory;

namespace {

void expectOneLine(const std::string& line) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; };
  expect(std::ranges::none_of(line, isControl), "the log has one plain line a request");
}

class MemoryServer : private sandbox::RequestServer {
 public:
  MemoryServer() : RequestServer(expectOneLine) {
    // The library sends no content unless it listens.
    svr_sock_ = 0;
  }

  bool serve(sandbox::Connection& connection, sandbox::Endpoint& endpoint) {
    setEndpoint(endpoint);
    return RequestServer::serve(connection);
  }
};

/// With the placeholders replaced.
std::string expanded(std::string_view text, const std::map<char, std::string>& placeholders) {
  std::string whole;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto found =
        text[i] == '$' && i + 1 < text.size() ? placeholders.find(text[i + 1]) : placeholders.end();
    whole += found == placeholders.end() ? std::string(1, text[i]) : found->second;
    if (found != placeholders.end()) ++i;
  }
  return whole;
}

bool isXml(const std::string& text) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
      XML_ParserCreate(nullptr), XML_ParserFree);
  return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
}

void expectReadable(const HttpReply& reply) {
  if (reply.body.empty() || reply.headers.contains("content-encoding")) return;
  const std::string type = reply.header("content-type");
  expect(type != "application/json" || nlohmann::json::accept(reply.body), "JSON is JSON");
  expect(type != "application/xml" || isXml(reply.body), "XML is XML");
  if (type == "text/html; charset=utf-8") {
    expect(fuzz::isUtf8(reply.body) && !reply.body.contains('\0'), "a page is text in UTF-8");
  }
}

/// The whole of a stored file, or the part that the reply names.
void expectBytesOfTheFile(const HttpReply& reply) {
  const auto file = SandboxInMemory::filesByTag().find(reply.header("etag"));
  if (file == SandboxInMemory::filesByTag().end()) return;
  const std::string& bytes = file->second;
  if (reply.status == 200) expect(reply.body == bytes, "a file comes whole and unchanged");
  if (reply.status != 206) return;
  std::size_t first = 0;
  std::size_t last = 0;
  std::size_t whole = 0;
  const std::string range = reply.header("content-range");
  expect(std::sscanf(range.c_str(), "bytes %zu-%zu/%zu", &first, &last, &whole) == 3 &&
             first <= last && last < whole && whole == bytes.size(),
         "a range lies within the file");
  expect(reply.body == bytes.substr(first, last - first + 1), "a part has the bytes of its range");
}

struct Connection {
  Connection(std::string_view bytes, std::size_t pieceByteCount) : stream(bytes, pieceByteCount) {}

  fuzz::MemoryConnection stream;
  /// Something in the sandbox may have changed.
  bool hasWritten = false;
  std::vector<std::string> createdSessions;
};

void note(const std::string& method, const HttpReply& reply, Connection& connection) {
  const bool isReading = method == "GET" || method == "HEAD";
  // A wrong password counts.
  const bool isRefused = reply.status >= 400 && reply.status != 403 && reply.status != 429;
  connection.hasWritten = connection.hasWritten || (!isReading && !isRefused);
  if (isReading) expectBytesOfTheFile(method == "HEAD" ? HttpReply{} : reply);
  const auto body = nlohmann::json::parse(reply.body, nullptr, false);
  if (reply.status == 201 && body.is_object()) connection.createdSessions.push_back(body["id"]);
}

/// Serves one request; whether another can follow.
bool serve(Connection& connection, MemoryServer& server, sandbox::Endpoint& endpoint) {
  const std::string_view request = connection.stream.rest();
  const std::size_t sentBefore = connection.stream.sent().size();
  const bool staysOpen = server.serve(connection.stream, endpoint);
  const std::size_t byteCount = request.size() - connection.stream.rest().size();
  expect(!staysOpen || fuzz::requestByteCount(request) == byteCount,
         "the next request begins where this one ends");

  std::string_view sent = std::string_view(connection.stream.sent()).substr(sentBefore);
  if (sent.empty()) {
    expect(!staysOpen, "each request has a reply");
    return false;
  }
  const std::string method(request.substr(0, request.find(' ')));
  const auto reply = fuzz::takeReply(sent, method);
  expect(reply && sent.empty(), "a request has one whole reply");
  expect(reply->status != 500, "no request makes the server fail");
  expectReadable(*reply);
  note(method, *reply, connection);
  return staysOpen;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  static MemoryServer server;
  static auto sandbox = std::make_unique<SandboxInMemory>();
  if (byteCount == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(bytes) + 1, byteCount - 1);
  const std::string requests = expanded(text, sandbox->placeholders());
  Connection connection(requests, std::size_t{1} + *bytes);
  while (connection.stream.hasMore() && serve(connection, server, sandbox->endpoint())) {
  }
  const auto holds = [&](char name) { return requests.contains(sandbox->placeholders().at(name)); };
  expect(holds('W') || holds('C') || requests.contains(SandboxInMemory::protectedText) ||
             !connection.stream.sent().contains(SandboxInMemory::protectedText),
         "a protected file is for holders of its password");
  if (!connection.hasWritten) return 0;
  auto identifiers = SandboxInMemory::identifiers();
  identifiers.insert(identifiers.end(), connection.createdSessions.begin(),
                     connection.createdSessions.end());
  sandbox->expectKept(identifiers);
  sandbox = std::make_unique<SandboxInMemory>();
  return 0;
}
