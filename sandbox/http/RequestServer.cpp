#include "sandbox/http/RequestServer.h"

#include "sandbox/http/RequestStream.h"

namespace quillbay::sandbox {

namespace {

constexpr std::size_t targetByteLimit = 4096;

}  // namespace

/// What is known of the request being served on a thread.
struct RequestServer::Exchange {
  FinishedRequest summary;
  std::uint64_t bodyStart = 0;
  std::uint64_t bodyByteCount = 0;
  /// The end of the request is not known, or its body will not be read: nothing can follow.
  bool isLast = true;

  /// The library's log hook tells the status but not the connection.
  static thread_local Exchange* current;
};

thread_local RequestServer::Exchange* RequestServer::Exchange::current = nullptr;

RequestServer::RequestServer(LogSink log) : log_(std::move(log)) {
  set_logger([](const httplib::Request&, const httplib::Response& response) {
    Exchange::current->summary.status = response.status;
  });
  set_expect_100_continue_handler(
      [this](const httplib::Request& request, httplib::Response& response) {
        return answerExpectation(request, response);
      });

  // The library would announce limits here that connections do not have.
  set_post_routing_handler([](const httplib::Request&, httplib::Response& response) {
    response.headers.erase("Keep-Alive");
    // RFC 9110, section 8.6: these have no content to tell the length of.
    if (response.status == 204 || response.status == 304) response.headers.erase("Content-Length");
    if (Exchange::current->isLast) response.set_header("Connection", "close");
  });

  const Handler plain = [this](const httplib::Request& request, httplib::Response& response) {
    answer(request, response, nullptr);
  };
  const HandlerWithContentReader withBody =
      [this](const httplib::Request& request, httplib::Response& response,
             const httplib::ContentReader& reader) { answer(request, response, &reader); };
  // `serve` makes every path this one.
  Get("/", plain);
  Options("/", plain);
  Post("/", withBody);
  Put("/", withBody);
  Patch("/", withBody);
  Delete("/", withBody);
  Delete("/", plain);
}

bool RequestServer::serve(Connection& connection) {
  Exchange exchange;
  Exchange::current = &exchange;
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t readBefore = connection.readByteCount();
  const std::uint64_t writtenBefore = connection.writtenByteCount();
  bool isClosing = false;
  RequestStream stream(connection);
  const bool isServed = process_request(stream, false, isClosing, [&](httplib::Request& request) {
    exchange.summary.method = request.method;
    exchange.summary.path = Target(request.target).path;
    exchange.bodyStart = connection.readByteCount();
    exchange.bodyByteCount = RequestBody(request, nullptr).announcedByteCount().value_or(0);
    exchange.isLast = request.has_header("Transfer-Encoding") || request.is_multipart_form_data();
    // Routes are ours: the library would match paths by regular expression.
    request.path = request.target.size() > targetByteLimit ? "" : "/";
  });
  const bool isSent = connection.flush();
  exchange.summary.receivedByteCount = connection.readByteCount() - readBefore;
  exchange.summary.sentByteCount = connection.writtenByteCount() - writtenBefore;
  exchange.summary.duration = std::chrono::steady_clock::now() - start;
  if (exchange.summary.status != 0) log_(logLine(exchange.summary));
  // What is left of a refused body would be taken for the next request.
  const bool isBodyConsumed =
      exchange.bodyByteCount == connection.readByteCount() - exchange.bodyStart;
  return isServed && isSent && !isClosing && !exchange.isLast && isBodyConsumed;
}

void RequestServer::answer(const httplib::Request& request, httplib::Response& response,
                           const httplib::ContentReader* reader) {
  const Target target(request.target);
  RequestBody body(request, reader);
  Call call{request, target, body};
  Reply reply = endpoint_->answer(call);
  body.discard();
  transfer(std::move(reply), request, response);
}

int RequestServer::answerExpectation(const httplib::Request& request, httplib::Response& response) {
  constexpr int letItCome = 100;
  const Target target(request.target);
  RequestBody body(request, nullptr);
  Call call{request, target, body};
  std::optional<Reply> refusal = endpoint_->refuseEarly(call);
  if (!refusal) return letItCome;
  transfer(std::move(*refusal), request, response);
  Exchange::current->isLast = true;
  // The library counts the body of routed replies only.
  response.set_header("Content-Length", std::to_string(response.content_length_));
  return response.status;
}

}  // namespace quillbay::sandbox
