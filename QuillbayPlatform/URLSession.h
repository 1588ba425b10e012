#pragma once

#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/HTTPURLResponse.h>
#include <QuillbayPlatform/Progress.h>
#include <QuillbayPlatform/URLRequest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillbay::platform {

class SerialQueue;

/// One HTTP transfer. Made by a `URLSession`, runs to its end once resumed, and need not be
/// held meanwhile.
class URLSessionTask {
 public:
  virtual ~URLSessionTask() = default;

  /// Starts the transfer; later calls do nothing. Any thread.
  virtual void resume() = 0;

  /// Of an upload: bytes sent (completed) of bytes expected (total). Starts at 0 of 100 and takes
  /// on the byte counts with its first update; updated on the main queue only, at most every 100 ms
  /// and once at the end. Read it there. That of a data task does not move: its body goes in one
  /// piece.
  virtual const std::shared_ptr<Progress>& progress() const = 0;
};

/// Runs HTTP transfers and calls back, one at a time, on a serial background queue of its own. A
/// small reply is handed over on the network thread itself, when no earlier call is in progress: a
/// completion handler must not wait for another transfer.
///
/// Sessions are thin: the network thread, the connections and the TLS roots behind them are shared
/// by the whole process, so a connection survives from one session to the next. HTTP/1.1; https
/// only, plain http only to a loopback address; at most 10 redirects. A session may be released
/// while its tasks run.
///
/// Nothing is retried after a reply or a time-out. What may be sent again without the caller's
/// knowledge is a request that got no byte of reply on a connection kept from an earlier one, which
/// the server may have closed just then (RFC 9112, section 9.3.1): a request of a data task unless
/// it is a POST, and an upload of which no byte of the file has been sent. A body of over 1 MiB is
/// announced with "Expect: 100-continue"; to status 417 before the whole body was sent, the request
/// is sent once more, on a new connection and without that field (RFC 9110, section 10.1.1).
class URLSession {
 public:
  /// Called exactly once a task, on the session's queue; then moved to the main queue to be
  /// destroyed there. Once the process exits, no call begins any more. A complete reply gives
  /// `data` (empty if it has no body) and `response`, and no `error`. A transport failure gives an
  /// `error` (a `URLError`) and no `data`; `response` is then present if its head had arrived. No
  /// cookies are kept and nothing is cached.
  using CompletionHandler = std::move_only_function<void(
      std::optional<std::string> data, std::optional<HTTPURLResponse> response, ErrorPtr error)>;

  /// The session of all plain requests.
  static URLSession& shared();
  static std::shared_ptr<URLSession> create();

  /// A task that sends the request with its own body. Replies of over 64 MiB (after
  /// decompression) end as an error. Redirects are followed as browsers do; a field
  /// "X-QUILLBAY-SESSION-TOKEN" is dropped when one leads to another origin. A gzip body is
  /// unpacked (RFC 1952); one that is damaged or in another coding is given as it came.
  std::shared_ptr<URLSessionTask> dataTask(URLRequest request, CompletionHandler completionHandler);

  /// A task that sends the regular file at `fileURL` as the body: exactly as many bytes as the
  /// request's "Content-Length" announces (the file's size if there is none). A file that ends
  /// early ends the task with an error. No header fields beyond the request's and what HTTP needs.
  /// Only 307 and 308 are followed. A success status that came before the last byte was sent is
  /// an error. Replies of over 1 MiB end as an error.
  std::shared_ptr<URLSessionTask> uploadTask(URLRequest request, URL fileURL,
                                             CompletionHandler completionHandler);

 private:
  URLSession();

  std::shared_ptr<SerialQueue> callbackQueue_;
};

}  // namespace quillbay::platform
