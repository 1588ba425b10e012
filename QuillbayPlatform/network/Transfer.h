#pragma once

#include <QuillbayPlatform/HTTPURLResponse.h>
#include <QuillbayPlatform/NetworkSettings.h>
#include <QuillbayPlatform/URLError.h>
#include <QuillbayPlatform/URLRequest.h>
#include <QuillbayPlatform/network/CurlHandles.h>
#include <QuillbayPlatform/network/RedirectPolicy.h>
#include <QuillbayPlatform/network/ReplyCollector.h>
#include <QuillbayPlatform/network/SilenceWatch.h>
#include <QuillbayPlatform/network/TaskProgress.h>
#include <QuillbayPlatform/network/UploadBody.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillbay::platform {

/// One task's transfer: a request, the redirects that follow from it, and one outcome.
///
/// Made on any thread; from then on the engine thread's alone, which also destroys it.
class Transfer {
 public:
  struct Outcome {
    std::optional<std::string> data;
    std::optional<HTTPURLResponse> response;
    ErrorPtr error;
  };
  /// Called exactly once, on the engine thread (on the starting thread if the engine has none).
  using Finish = std::move_only_function<void(Outcome)>;

  Transfer(URLRequest request, std::optional<URL> bodyFile, std::shared_ptr<TaskProgress> progress,
           Finish finish);
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  enum class State {
    running,   ///< easy() is configured and is to be performed
    finished,  ///< the outcome has been delivered
  };

  /// Prepares the first request.
  State begin(const NetworkSettings& settings);

  /// Takes the end of a performed request; `running` if a redirect is to be performed now.
  State performed(CURLcode code);

  /// Ends the transfer with an error and without a response. `reason` is for developers.
  State fail(URLError::Code code, const std::string& reason);

  /// Whether the whole body goes out at once: its reply may come within a moment.
  bool hasSmallBody() const;

  CURL* easy() const { return easy_.get(); }

 private:
  bool isUpload() const { return bodyFile_.has_value(); }
  State openBody();
  State configure();
  void configureConnection();
  void configureRoute();
  void configureBody();
  void configureHeaders();
  void configureCallbacks();
  std::uint64_t bodyByteCount() const;
  bool asksBeforeBody() const;

  State follow(const HTTPURLResponse& response);
  State deliver(const HTTPURLResponse& response);
  bool wholeBodyWasSent() const;
  bool successCameEarly() const;
  bool wasAskingRefused() const;
  ErrorPtr transportError(CURLcode code) const;
  std::string transportReason(CURLcode code) const;
  State finish(Outcome outcome);
  ErrorPtr makeError(URLError::Code code, const std::string& reason) const;

  static std::size_t readBody(char* buffer, std::size_t size, std::size_t count,
                              void* transfer) noexcept;
  static std::size_t receiveHeader(char* bytes, std::size_t size, std::size_t count,
                                   void* transfer) noexcept;
  static std::size_t receiveBody(char* bytes, std::size_t size, std::size_t count,
                                 void* transfer) noexcept;
  static int connected(void* transfer, char*, char*, int, int) noexcept;
  static int reportProgress(void* transfer, curl_off_t, curl_off_t downloaded,
                            curl_off_t uploadTotal, curl_off_t uploaded) noexcept;
  static curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address) noexcept;

  URLRequest request_;
  const std::optional<URL> bodyFile_;
  const std::shared_ptr<TaskProgress> progress_;
  Finish finish_;
  NetworkSettings settings_;
  RedirectPolicy redirectPolicy_;

  std::optional<UploadBody> body_;
  ErrorPtr bodyError_;
  SilenceWatch silence_;
  ReplyCollector reply_;
  bool mayAskBeforeBody_ = true;

  EasyHandle easy_;
  StringList headerList_;
  StringList routeList_;
  std::array<char, CURL_ERROR_SIZE> errorText_ = {};
};

}  // namespace quillbay::platform
