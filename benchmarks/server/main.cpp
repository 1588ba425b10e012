// bench-server FOLDER: a sharing service and a discarding object store on loopback, over TLS. Keeps
// its certificates in the folder; clients trust `ca.pem` there. Prints `ports N M` when it listens:
// by way of the second port, it is a round trip away.
// The line `counts` on standard input prints what it saw since the last one, ended by a line `end`;
// the end of standard input ends it.

#include <csignal>
#include <cstdlib>
#include <iostream>

#include "benchmarks/server/CannedService.h"
#include "benchmarks/server/Connection.h"
#include "benchmarks/server/Counts.h"
#include "benchmarks/server/DelayingRelay.h"
#include "benchmarks/server/Listener.h"
#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"
#include "sandbox/tls/TlsIdentity.h"

namespace quillbay::bench {
namespace {

constexpr std::string_view kStored =
    "HTTP/1.1 200 OK\r\nETag: \"9bb58f26192e4ba00f01e2e7b136bbd8\"\r\nContent-Length: 0\r\n\r\n";

struct Server {
  sandbox::TlsContext context;
  CannedService service;
  Counts counts;
};

void answer(Server& server, Connection& connection, const std::string& host,
            const RequestHead& head) {
  const std::uint64_t bodyByteCount = head.contentLength();
  server.counts.addRequest(host, bodyByteCount);
  if (head.field("Expect") == "100-continue") connection.write("HTTP/1.1 100 Continue\r\n\r\n");
  if (host == kStoreHost) {
    connection.discardBody(bodyByteCount);
    connection.write(kStored);
    return;
  }
  connection.write(server.service.reply(head, connection.readBody(bodyByteCount)));
}

void serve(Server& server, int socket) {
  try {
    Connection connection(server.context.get(), socket);
    const std::string host = connection.serverName();
    server.counts.addConnection(host);
    std::string head;
    while (connection.readHead(head)) answer(server, connection, host, RequestHead(head));
  } catch (const std::exception& error) {
    std::cerr << "bench-server: " << error.what() << '\n';
  }
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1) fail("usage: bench-server FOLDER");
  std::signal(SIGPIPE, SIG_IGN);
  Server server{sandbox::TlsIdentity(arguments[0]).serverContext(), {}, {}};
  const Listener near;
  near.start([&server](int socket) { serve(server, socket); });
  const Listener far;
  far.start([port = near.port()](int socket) { relayWithDelay(socket, port); });
  std::cout << "ports " << near.port() << ' ' << far.port() << '\n' << std::flush;
  for (std::string line; std::getline(std::cin, line);) {
    if (line != "counts") continue;
    server.counts.writeAndReset(std::cout);
    std::cout << "end" << '\n' << std::flush;
  }
  // Connection threads are still waiting for requests; nothing of theirs needs to be kept.
  std::_Exit(0);
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-server", argumentCount, arguments,
                                     quillbay::bench::run);
}
