#pragma once

#include <QuillbayPlatform/Error.h>
#include <QuillbayPlatform/Export.h>

#include <string>

namespace quillbay::platform {

/// Why a transfer ended without a usable reply.
class QUILLBAY_EXPORT URLError final : public Error {
 public:
  /// What kept the reply away.
  enum class Code {
    cancelled,                   ///< the process is ending
    timedOut,                    ///< nothing moved for the request's time-out
    cannotFindHost,              ///< the host's name has no address
    cannotConnectToHost,         ///< no connection to the host, or to the proxy
    networkConnectionLost,       ///< also a reply that came before the body was sent
    secureConnectionFailed,      ///< TLS hand-shake, also one that the network cut short
    serverCertificateUntrusted,  ///< not of this server, or of no trusted authority
    badServerResponse,           ///< the reply is not HTTP/1.x
    unsupportedURL,              ///< not https, or with a password in it
    tooManyRedirects,            ///< more than ten, one after the other
    dataLengthExceedsMaximum,    ///< the reply is longer than it may be
    cannotReadFile,              ///< the upload's file cannot be opened, shrank, or failed to read
    unknown,                     ///< anything else; `description` tells
  };

  /// `reason` is for developers and must hold no secret.
  URLError(Code code, std::string reason) : code_(code), reason_(std::move(reason)) {}

  /// What kept the reply away.
  Code code() const { return code_; }
  std::string description() const override;

 private:
  Code code_;
  std::string reason_;
};

}  // namespace quillbay::platform
