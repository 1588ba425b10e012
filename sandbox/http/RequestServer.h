#pragma once

#include <httplib.h>

#include "sandbox/http/Connection.h"
#include "sandbox/http/Endpoint.h"
#include "sandbox/http/RequestLog.h"

namespace quillbay::sandbox {

/// Reads the requests of connections through the HTTP library and hands them to an endpoint. Where
/// connections come from is for a derived class to say.
class RequestServer : protected httplib::Server {
 protected:
  explicit RequestServer(LogSink log);

  /// Borrowed; before the first request.
  void setEndpoint(Endpoint& endpoint) { endpoint_ = &endpoint; }
  /// Serves one request; false when the connection cannot carry another.
  bool serve(Connection& connection);
  void log(const std::string& line) const { log_(line); }

 private:
  struct Exchange;

  void answer(const httplib::Request& request, httplib::Response& response,
              const httplib::ContentReader* reader);
  int answerExpectation(const httplib::Request& request, httplib::Response& response);

  LogSink log_;
  Endpoint* endpoint_ = nullptr;
};

}  // namespace quillbay::sandbox
