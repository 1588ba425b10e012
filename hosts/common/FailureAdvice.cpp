#include "FailureAdvice.h"

#include <QuillbayPlatform/JSONError.h>
#include <QuillbayPlatform/StringTable.h>
#include <QuillbayPlatform/URLError.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "PlainText.h"
#include "QuillbayHostsStrings.h"

namespace quillbay::host {
namespace {

using cloud::QuillbayCloudError;
using platform::URLError;
using Step = ShareStep;

/// What may be true of a cause. Without any: what was asked for did certainly not happen, and no
/// file can be the reason.
enum Trait : unsigned {
  kNone = 0,
  /// The request may have reached the service and been carried out.
  kUncertain = 1,
  /// A file that changed during the run explains it.
  kMayBeTheFile = 2,
  /// It is about one file, which the reason names.
  kNamesFile = 4,
  /// It may pass by itself.
  kPasses = 8,
};

struct CauseRow {
  FailureCause cause;
  /// Of the texts: "<key>.what" and "<key>.do", and in place of the latter for terminals
  /// "<key>.do.terminal" if there is one.
  std::string_view key;
  unsigned traits = kNone;
};

constexpr std::array kCauses = {
    CauseRow{FailureCause::fileGrew, "file-grew", kNamesFile},
    CauseRow{FailureCause::fileShrank, "file-shrank", kNamesFile},
    CauseRow{FailureCause::fileOverwritten, "file-overwritten", kNamesFile},
    CauseRow{FailureCause::fileVanished, "file-vanished", kNamesFile},
    CauseRow{FailureCause::fileUnreadable, "file-unreadable", kNamesFile},
    CauseRow{FailureCause::fileNotRegular, "file-not-regular", kNamesFile},
    CauseRow{FailureCause::fileNameNotText, "file-name-not-text", kNamesFile},
    CauseRow{FailureCause::fileSizeUnknown, "file-size-unknown", kNamesFile},
    CauseRow{FailureCause::fileChanged, "file-changed", kNamesFile},
    CauseRow{FailureCause::filesUnreadable, "files-unreadable", kMayBeTheFile},
    CauseRow{FailureCause::hostNotFound, "host-not-found", kPasses},
    CauseRow{FailureCause::connectionRefused, "connection-refused", kPasses},
    CauseRow{FailureCause::routeFailed, "route-failed", kPasses},
    CauseRow{FailureCause::tlsFailed, "tls-failed", kPasses},
    CauseRow{FailureCause::ownAuthoritiesFailed, "own-authorities-failed"},
    CauseRow{FailureCause::proxyFailed, "proxy-failed", kPasses},
    CauseRow{FailureCause::proxyConnectionLost, "proxy-connection-lost", kUncertain | kPasses},
    CauseRow{FailureCause::timedOut, "timed-out", kUncertain | kPasses},
    CauseRow{FailureCause::connectionLost, "connection-lost", kUncertain | kPasses},
    CauseRow{FailureCause::storeUnanswered, "store-unanswered", kMayBeTheFile | kPasses},
    CauseRow{FailureCause::addressRefused, "address-refused", kUncertain},
    CauseRow{FailureCause::unexpected, "unexpected", kUncertain},
    CauseRow{FailureCause::serviceDenied, "service-denied"},
    CauseRow{FailureCause::sessionGone, "session-gone"},
    CauseRow{FailureCause::contentConflict, "content-conflict", kMayBeTheFile},
    CauseRow{FailureCause::serviceTooLarge, "service-too-large"},
    CauseRow{FailureCause::serviceBusy, "service-busy", kPasses},
    CauseRow{FailureCause::serviceFault, "service-fault", kUncertain | kPasses},
    CauseRow{FailureCause::serviceRefused, "service-refused", kMayBeTheFile},
    CauseRow{FailureCause::deletionRefused, "deletion-refused"},
    CauseRow{FailureCause::storeTooLarge, "store-too-large", kMayBeTheFile},
    CauseRow{FailureCause::storeDenied, "store-denied", kMayBeTheFile},
    CauseRow{FailureCause::storeSignature, "store-signature", kMayBeTheFile},
    CauseRow{FailureCause::storeClock, "store-clock"},
    CauseRow{FailureCause::storePermissionExpired, "store-permission-expired", kPasses},
    CauseRow{FailureCause::storeBusy, "store-busy", kPasses},
    CauseRow{FailureCause::storeFault, "store-fault", kPasses},
    CauseRow{FailureCause::storeRefused, "store-refused", kMayBeTheFile},
    CauseRow{FailureCause::serviceReplyMalformed, "service-reply-malformed", kUncertain},
    CauseRow{FailureCause::storeReplyMalformed, "store-reply-malformed", kMayBeTheFile | kPasses},
    CauseRow{FailureCause::missingItems, "missing-items"},
};

const CauseRow& rowOf(FailureCause cause) {
  return *std::ranges::find(kCauses, cause, &CauseRow::cause);
}

bool isUpload(Step step) {
  return step == Step::requestingAddress || step == Step::sending || step == Step::finalizing;
}

FailureCause causeOfStatus(std::int64_t status, Step step) {
  if (status == 413) return FailureCause::serviceTooLarge;
  if (status == 429) return FailureCause::serviceBusy;
  if (status == 408 || status >= 500) return FailureCause::serviceFault;
  if (step == Step::deletingSession) return FailureCause::deletionRefused;
  if (status == 401 || status == 403) return FailureCause::serviceDenied;
  if (isUpload(step) && (status == 404 || status == 410)) return FailureCause::sessionGone;
  if (isUpload(step) && status == 409) return FailureCause::contentConflict;
  return FailureCause::serviceRefused;
}

FailureCause causeOfStoreCode(std::string_view code) {
  static constexpr std::array<std::pair<std::string_view, FailureCause>, 9> kCodes = {{
      {"EntityTooLarge", FailureCause::storeTooLarge},
      {"AccessDenied", FailureCause::storeDenied},
      {"SignatureDoesNotMatch", FailureCause::storeSignature},
      {"RequestTimeTooSkewed", FailureCause::storeClock},
      {"ExpiredToken", FailureCause::storePermissionExpired},
      {"SlowDown", FailureCause::storeBusy},
      {"ServiceUnavailable", FailureCause::storeBusy},
      {"InternalError", FailureCause::storeFault},
      {"RequestTimeout", FailureCause::storeFault},
  }};
  const auto* row = std::ranges::find(kCodes, code, &decltype(kCodes)::value_type::first);
  return row == kCodes.end() ? FailureCause::storeRefused : row->second;
}

/// Of the request to the object store, whose address is none of the host's choice.
FailureCause causeOfUpload(URLError::Code code) {
  if (code == URLError::Code::cannotReadFile) return FailureCause::filesUnreadable;
  if (code == URLError::Code::badServerResponse ||
      code == URLError::Code::dataLengthExceedsMaximum) {
    return FailureCause::storeReplyMalformed;
  }
  return FailureCause::storeUnanswered;
}

FailureCause causeOfTransfer(URLError::Code code, const NetworkOptions& network) {
  using Code = URLError::Code;
  switch (code) {
    case Code::cannotFindHost:
      if (network.usesProxy) return FailureCause::proxyFailed;
      return network.connectTo.empty() ? FailureCause::hostNotFound : FailureCause::routeFailed;
    case Code::cannotConnectToHost:
      if (network.usesProxy) return FailureCause::proxyFailed;
      return network.connectTo.empty() ? FailureCause::connectionRefused
                                       : FailureCause::routeFailed;
    case Code::secureConnectionFailed:
      return FailureCause::tlsFailed;
    case Code::serverCertificateUntrusted:
      return network.caBundlePath.empty() ? FailureCause::tlsFailed
                                          : FailureCause::ownAuthoritiesFailed;
    case Code::networkConnectionLost:
      return network.usesProxy ? FailureCause::proxyConnectionLost : FailureCause::connectionLost;
    case Code::timedOut:
      return FailureCause::timedOut;
    case Code::unsupportedURL:
    case Code::tooManyRedirects:
      return FailureCause::addressRefused;
    case Code::badServerResponse:
    case Code::dataLengthExceedsMaximum:
      return FailureCause::serviceReplyMalformed;
    case Code::cannotReadFile:
      return FailureCause::filesUnreadable;
    case Code::cancelled:
    case Code::unknown:
      return FailureCause::unexpected;
  }
  return FailureCause::unexpected;
}

struct CauseReader {
  const FailureContext& context;

  FailureCause operator()(const QuillbayCloudError::Aws& aws) const {
    return causeOfStoreCode(aws.error.type());
  }
  FailureCause operator()(const QuillbayCloudError::Webservice& refusal) const {
    return causeOfStatus(refusal.status, context.step);
  }
  FailureCause operator()(const QuillbayCloudError::Underlying& inner) const {
    if (const auto* transfer = dynamic_cast<const URLError*>(inner.error.get())) {
      return context.step == Step::sending ? causeOfUpload(transfer->code())
                                           : causeOfTransfer(transfer->code(), context.network);
    }
    const bool isUnread = dynamic_cast<const platform::JSONError*>(inner.error.get()) != nullptr;
    return isUnread ? FailureCause::serviceReplyMalformed : FailureCause::unexpected;
  }
  FailureCause operator()(const QuillbayCloudError::InvalidFile& /*error*/) const {
    return FailureCause::filesUnreadable;
  }
  FailureCause operator()(const QuillbayCloudError::InvalidResponse& /*error*/) const {
    if (context.step != Step::sending) return FailureCause::serviceReplyMalformed;
    const auto* transfer = dynamic_cast<const URLError*>(context.transportError.get());
    return transfer ? causeOfUpload(transfer->code()) : FailureCause::storeReplyMalformed;
  }
  FailureCause operator()(const QuillbayCloudError::MissingItems& /*error*/) const {
    return FailureCause::missingItems;
  }
  FailureCause operator()(const QuillbayCloudError::FingerprintFailure& /*error*/) const {
    return FailureCause::filesUnreadable;
  }
};

FailureCause causeOf(FileChange change, FailureCause otherwise) {
  switch (change) {
    case FileChange::none:
      return otherwise;
    case FileChange::grew:
      return FailureCause::fileGrew;
    case FileChange::shrank:
      return FailureCause::fileShrank;
    case FileChange::overwritten:
      return FailureCause::fileOverwritten;
    case FileChange::vanished:
      return FailureCause::fileVanished;
    case FileChange::unreadable:
      return FailureCause::fileUnreadable;
    case FileChange::notRegular:
      return FailureCause::fileNotRegular;
    case FileChange::nameNotText:
      return FailureCause::fileNameNotText;
    case FileChange::contentChanged:
      return FailureCause::fileChanged;
    case FileChange::sizeUnknown:
      return FailureCause::fileSizeUnknown;
  }
  return otherwise;
}

/// A session may have been created without a reply: a second one must not be.
bool mayPass(const CauseRow& row, Step step) {
  const bool mayBeDone = step == Step::creatingSession && (row.traits & kUncertain) != 0;
  return (row.traits & kPasses) != 0 && !mayBeDone;
}

FailureCause causeOf(const QuillbayCloudError& error, const FailureContext& context) {
  const FailureCause cause = std::visit(CauseReader{context}, error.value());
  const bool mayBeTheFile = (rowOf(cause).traits & kMayBeTheFile) != 0;
  return mayBeTheFile ? causeOf(context.fileChange, cause) : cause;
}

std::string_view headlineKey(const CauseRow& row, Step step) {
  const bool isUncertain = (row.traits & kUncertain) != 0;
  const bool namesFile = (row.traits & kNamesFile) != 0;
  switch (step) {
    case Step::fingerprinting:
      return "step.fingerprinting";
    case Step::checkingFiles:
      return "step.checking-files";
    case Step::creatingSession:
      return isUncertain ? "step.creating.uncertain" : "step.creating";
    case Step::requestingAddress:
      return namesFile ? "step.uploading" : "step.requesting-address";
    case Step::sending:
      return namesFile ? "step.uploading" : "step.sending";
    case Step::finalizing:
      return namesFile ? "step.uploading" : "step.finalizing";
    case Step::deletingSession:
      return isUncertain ? "step.deleting.uncertain" : "step.deleting";
  }
  return "step.fingerprinting";
}

/// The values that replace the {names} in the texts.
struct Values {
  std::string subject;
  /// A colon and the server's text, or nothing.
  std::string message;
  /// Status or store code.
  std::string code;
};

Values valuesOf(const QuillbayCloudError& error, const std::string& subject,
                const std::string& colon) {
  Values values{.subject = subject, .message = {}, .code = {}};
  if (const auto* aws = error.as<QuillbayCloudError::Aws>()) {
    values.message = plainLine(aws->error.message());
    values.code = plainLine(aws->error.type());
  } else if (const auto* refusal = error.as<QuillbayCloudError::Webservice>()) {
    values.message = plainLine(refusal->localizedMessage);
    values.code = std::to_string(refusal->status);
  }
  if (!values.message.empty()) values.message.insert(0, colon);
  return values;
}

/// In one pass: a file name or message that holds "{code}" stays as it is.
std::string filled(std::string_view text, const Values& values) {
  const std::array<std::pair<std::string_view, const std::string*>, 3> kNames = {
      {{"{subject}", &values.subject}, {"{message}", &values.message}, {"{code}", &values.code}}};
  std::string result;
  while (!text.empty()) {
    const auto* name = std::ranges::find_if(
        kNames, [&](const auto& candidate) { return text.starts_with(candidate.first); });
    result += name == kNames.end() ? std::string(text.substr(0, 1)) : *name->second;
    text.remove_prefix(name == kNames.end() ? 1 : name->first.size());
  }
  return result;
}

const platform::StringTable& tableFor(FailureAudience audience) {
  static const platform::StringTable all(strings::QuillbayHosts());
  static const platform::StringTable english({{"en", strings::QuillbayHosts().at("en")}});
  return audience == FailureAudience::terminal ? english : all;
}

std::string adviceText(const CauseRow& row, FailureAudience audience) {
  const platform::StringTable& table = tableFor(audience);
  const std::string key = std::string(row.key) + ".do";
  if (audience == FailureAudience::terminal) {
    const std::string terminalKey = key + ".terminal";
    if (std::string text = table.localized(terminalKey); text != terminalKey) return text;
  }
  return table.localized(key);
}

}  // namespace

FailureAdvice FailureAdvice::of(const QuillbayCloudError& error, const FailureContext& context,
                                FailureAudience audience) {
  // Where an upload's address cannot be obtained, the service's error is wrapped as it is.
  const auto* wrapped = error.as<QuillbayCloudError::Underlying>();
  const QuillbayCloudError inner = wrapped ? QuillbayCloudError::from(wrapped->error) : error;

  const CauseRow& row = rowOf(causeOf(inner, context));
  const platform::StringTable& table = tableFor(audience);
  const std::string colon = table.localized("clause.colon");
  const Values values = valuesOf(inner, context.subject, colon);
  const auto* underlying = inner.as<QuillbayCloudError::Underlying>();
  const platform::ErrorPtr reason = underlying ? underlying->error : context.transportError;
  return {.cause = row.cause,
          .whatFailed = filled(table.localized(headlineKey(row, context.step)), values) + colon +
                        filled(table.localized(std::string(row.key) + ".what"), values),
          .whatToDo = filled(adviceText(row, audience), values),
          .detail = reason ? plainLine(reason->description()) : "",
          .isUncertain = (row.traits & kUncertain) != 0,
          .isWorthRetrying = mayPass(row, context.step)};
}

std::string_view nameOf(FailureCause cause) { return rowOf(cause).key; }

std::string sentence(std::string clause) {
  if (clause.empty()) return clause;
  clause = capitalized(clause);
  if (!clause.ends_with('.')) clause += '.';
  return clause;
}

}  // namespace quillbay::host
