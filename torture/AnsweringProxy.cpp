#include "AnsweringProxy.h"

#include <httplib.h>

#include <utility>

namespace quillbay::torture {
namespace {

using test::Connection;
using test::Reply;
using test::Request;
using Moment = Substitution::Moment;

constexpr std::uint64_t kBodyByteCountBefore = 3000;

/// As the sandbox answers it; a reply of no bytes if it does not.
Reply passOn(const Request& request, int port) {
  httplib::SSLClient sandbox("127.0.0.1", port);
  sandbox.enable_server_certificate_verification(false);
  sandbox.set_decompress(false);
  httplib::Request copy;
  copy.method = request.method();
  copy.path = request.target();
  copy.body = request.body;
  for (const std::string& line : request.fieldLines()) {
    const std::string name = line.substr(0, line.find(':'));
    if (name != "Expect" && name != "Content-Length")
      copy.headers.emplace(name, *request.field(name));
  }
  const httplib::Result result = sandbox.send(copy);
  if (!result) return Reply::none();
  Reply reply{.status = result->status, .body = result->body};
  for (const auto& [name, value] : result->headers) {
    if (name != "Content-Length" && name != "Connection")
      reply.headerFields.emplace_back(name, value);
  }
  return reply;
}

/// False if the client left.
bool readBody(Connection& connection, const Request& head) {
  if (head.field("Expect") && !connection.send("HTTP/1.1 100 Continue\r\n\r\n")) return false;
  return connection.readBody() == head.announcedByteCount();
}

}  // namespace

AnsweringProxy::AnsweringProxy(int sandboxPort, Plan plan)
    : sandboxPort_(sandboxPort), plan_(std::move(plan)) {
  server_.onConnection([this](Connection& connection) { serve(connection); });
}

void AnsweringProxy::serve(Connection& connection) const {
  while (const auto head = connection.readHead()) {
    const auto substitution = plan_(*head);
    // Then nothing of the body is read, and the connection ends with the reply.
    if (substitution && substitution->moment <= Moment::inBody) {
      if (substitution->moment == Moment::inBody) connection.readBody(kBodyByteCountBefore);
      connection.send(substitution->reply);
      return;
    }
    if (!readBody(connection, *head)) return;
    if (substitution && substitution->moment == Moment::afterBody) {
      if (!connection.send(substitution->reply)) return;
      continue;
    }
    const Reply reply = passOn(connection.request(), sandboxPort_);
    if (!connection.send(substitution ? substitution->reply : reply)) return;
  }
}

}  // namespace quillbay::torture
