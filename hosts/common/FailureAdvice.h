#pragma once

#include <QuillbayCloud/model/QuillbayCloudError.h>

#include <string>
#include <string_view>

#include "FileState.h"
#include "NetworkOptions.h"
#include "ShareStep.h"

namespace quillbay::host {

/// Why a share or a deletion failed, as precisely as a host can tell.
enum class FailureCause {
  // A file is not what it was when the run began, or could not be shared from the beginning.
  fileGrew,
  fileShrank,
  fileOverwritten,
  fileVanished,
  fileUnreadable,
  fileNotRegular,
  fileNameNotText,
  fileSizeUnknown,
  fileChanged,      ///< since an earlier run announced it
  filesUnreadable,  ///< it is not known which file
  // No reply came.
  hostNotFound,
  connectionRefused,
  routeFailed,  ///< not found or refused, where a route replaces the service's address
  tlsFailed,
  ownAuthoritiesFailed,  ///< TLS failed, and a file of authorities replaces the system's
  proxyFailed,
  proxyConnectionLost,
  timedOut,
  connectionLost,
  storeUnanswered,
  addressRefused,  ///< a redirect to where the library does not go
  unexpected,
  // The service replied with an error.
  serviceDenied,
  sessionGone,
  contentConflict,
  serviceTooLarge,
  serviceBusy,
  serviceFault,
  serviceRefused,
  deletionRefused,
  // The object store replied with an error.
  storeTooLarge,
  storeDenied,
  storeSignature,
  storeClock,
  storePermissionExpired,
  storeBusy,
  storeFault,
  storeRefused,
  // A reply came that could not be understood.
  serviceReplyMalformed,
  storeReplyMalformed,
  missingItems,
};

/// What a host knows of the failure beside the error.
struct FailureContext {
  /// What was being done.
  ShareStep step = ShareStep::fingerprinting;
  /// The file in question, or the session to be deleted, as it is to be shown.
  std::string subject = {};
  /// What became of that file since the run began.
  FileChange fileChange = FileChange::none;
  /// As `SessionActivity::transportError`.
  platform::ErrorPtr transportError = {};
  NetworkOptions network = {};
};

/// Who reads the texts.
enum class FailureAudience {
  terminal,  ///< in English; may be told about options of the command line
  window,    ///< in the user's language
};

/// What people read about a failure. One line each of plain text, as clauses: without a capital
/// letter at the beginning and a full stop at the end. Texts of servers are made harmless.
struct FailureAdvice {
  FailureCause cause;
  /// What failed and why: "the upload of 'a' failed: the store refused it (SlowDown)".
  std::string whatFailed;
  /// What to do about it.
  std::string whatToDo;
  /// What developers want to know as well, in English; may be empty.
  std::string detail;
  /// What was asked for may have been carried out, and the answer lost.
  bool isUncertain = false;
  /// The cause may pass by itself, and trying again does no harm.
  bool isWorthRetrying = false;

  /// Any thread.
  static FailureAdvice of(const cloud::QuillbayCloudError& error, const FailureContext& context,
                          FailureAudience audience);
};

/// A short name of the cause for programs: "connection-lost".
std::string_view nameOf(FailureCause cause);

/// A clause as a sentence: with a capital letter and a full stop.
std::string sentence(std::string clause);

}  // namespace quillbay::host
