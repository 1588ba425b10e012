#include "hosts/common/FailureAdvice.h"

#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONError.h>
#include <QuillbayPlatform/StringTable.h>
#include <QuillbayPlatform/URLError.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

namespace quillbay::host {
namespace {

using Cause = FailureCause;
using Code = platform::URLError::Code;
using CloudError = cloud::QuillbayCloudError;
using Refusal = cloud::Webservice::Error;
using Step = RunJournal::Step;

CloudError transport(Code code) {
  return CloudError::underlying(std::make_shared<const platform::URLError>(code, "why"));
}

/// As the library reports a failure to get the address of an upload.
CloudError wrapped(const Refusal& error) {
  return CloudError::underlying(std::make_shared<const Refusal>(error));
}

CloudError store(const char* code) { return CloudError::aws({code, ""}); }

CloudError malformed() {
  return CloudError::underlying(
      std::make_shared<const platform::JSONError>(platform::JSONError::Kind::missingKey, "items"));
}

FailureContext at(Step step, FileChange change = FileChange::none) {
  return {.step = step, .subject = "'{code}'", .fileChange = change};
}

FailureContext with(NetworkOptions network) {
  return {.step = Step::creatingSession, .network = std::move(network)};
}

constexpr const char* kNoSession = "no session was created: ";
constexpr const char* kMaybeSession = "not known whether the service created a session: ";
constexpr const char* kMaybeDeleted = "not known whether session '{code}' was deleted: ";
constexpr const char* kUploadFailed = "the upload of '{code}' failed: ";

const struct {
  const char* name;
  CloudError error;
  FailureContext context;
  Cause cause;
  /// Part of what the terminal shows.
  const char* whatFailed = "";
} kRows[] = {
    {"grown, refused as too large", store("EntityTooLarge"), at(Step::sending, FileChange::grew),
     Cause::fileGrew, "the upload failed: '{code}' grew"},
    {"shrunk, upload broken off", CloudError::invalidResponse(),
     at(Step::sending, FileChange::shrank), Cause::fileShrank},
    {"overwritten, refused in the end", CloudError::webservice("", 409),
     at(Step::finalizing, FileChange::overwritten), Cause::fileOverwritten},
    {"vanished while hashed", CloudError::fingerprintFailure(),
     at(Step::fingerprinting, FileChange::vanished), Cause::fileVanished,
     "nothing was shared: '{code}' does not exist any more"},
    {"unreadable", CloudError::invalidFile(), at(Step::sending, FileChange::unreadable),
     Cause::fileUnreadable},
    {"folder", CloudError::fingerprintFailure(), at(Step::fingerprinting, FileChange::notRegular),
     Cause::fileNotRegular},
    {"name", CloudError::invalidFile(), at(Step::creatingSession, FileChange::nameNotText),
     Cause::fileNameNotText, kNoSession},
    {"no size", CloudError::webservice("", 409), at(Step::finalizing, FileChange::sizeUnknown),
     Cause::fileSizeUnknown},
    {"no file known", CloudError::fingerprintFailure(), at(Step::fingerprinting),
     Cause::filesUnreadable},
    {"grown, but the network is down", transport(Code::cannotFindHost),
     at(Step::finalizing, FileChange::grew), Cause::hostNotFound},
    {"grown, but the store is busy", store("SlowDown"), at(Step::sending, FileChange::grew),
     Cause::storeBusy},

    {"no such host", transport(Code::cannotFindHost), at(Step::creatingSession),
     Cause::hostNotFound, kNoSession},
    {"refused", transport(Code::cannotConnectToHost), at(Step::creatingSession),
     Cause::connectionRefused, kNoSession},
    {"refused by a route", transport(Code::cannotConnectToHost), with({.connectTo = {"a:1:b:2"}}),
     Cause::routeFailed},
    {"no such proxy", transport(Code::cannotFindHost), with({.usesProxy = true}),
     Cause::proxyFailed},
    {"dead proxy", transport(Code::cannotConnectToHost), with({.usesProxy = true}),
     Cause::proxyFailed},
    {"proxy refuses", transport(Code::networkConnectionLost), with({.usesProxy = true}),
     Cause::proxyConnectionLost},
    {"certificate", transport(Code::secureConnectionFailed), at(Step::creatingSession),
     Cause::tlsFailed, kNoSession},
    {"own authorities", transport(Code::secureConnectionFailed), with({.caBundlePath = "ca"}),
     Cause::ownAuthoritiesFailed},
    {"unanswered creation", transport(Code::timedOut), at(Step::creatingSession), Cause::timedOut,
     kMaybeSession},
    {"creation broken off", transport(Code::networkConnectionLost), at(Step::creatingSession),
     Cause::connectionLost, kMaybeSession},
    {"unanswered deletion", transport(Code::timedOut), at(Step::deletingSession), Cause::timedOut,
     kMaybeDeleted},
    {"unanswered address",
     wrapped(
         Refusal::underlying(std::make_shared<const platform::URLError>(Code::timedOut, "why"))),
     at(Step::requestingAddress), Cause::timedOut, "the upload of '{code}' could not begin: "},
    {"redirect", transport(Code::unsupportedURL), at(Step::creatingSession), Cause::addressRefused},
    {"unanswered upload",
     CloudError::invalidResponse(),
     {.step = Step::sending, .subject = "'{code}'", .isUploadUnanswered = true},
     Cause::storeUnanswered,
     kUploadFailed},
    {"upload broken off", transport(Code::networkConnectionLost), at(Step::sending),
     Cause::storeUnanswered},
    {"unknown", transport(Code::unknown), at(Step::creatingSession), Cause::unexpected,
     kMaybeSession},

    {"denied", CloudError::webservice("", 403), at(Step::creatingSession), Cause::serviceDenied,
     "no session was created: the service does not allow it (status 403)"},
    {"denied with a message", wrapped(Refusal::cloudError({"\x1b[31mNo {code}\n", 401})),
     at(Step::requestingAddress), Cause::serviceDenied,
     "could not begin: the service does not allow it: [31mNo {code} (status 401)"},
    {"gone", CloudError::webservice("", 410), at(Step::finalizing), Cause::sessionGone},
    {"conflict", CloudError::webservice("", 409), at(Step::finalizing), Cause::contentConflict},
    {"too large", CloudError::webservice("", 413), at(Step::creatingSession),
     Cause::serviceTooLarge},
    {"too often", CloudError::webservice("", 429), at(Step::deletingSession), Cause::serviceBusy},
    {"fault", CloudError::webservice("Full", 507), at(Step::creatingSession), Cause::serviceFault,
     "created a session: the service has a fault: Full (status 507)"},
    {"no such service", CloudError::webservice("", 404), at(Step::creatingSession),
     Cause::serviceRefused},
    {"no such session", CloudError::webservice("", 404), at(Step::deletingSession),
     Cause::deletionRefused, "session '{code}' was not deleted: "},

    {"store too large", store("EntityTooLarge"), at(Step::sending), Cause::storeTooLarge,
     kUploadFailed},
    {"store denies", store("AccessDenied"), at(Step::sending), Cause::storeDenied},
    {"signature", store("SignatureDoesNotMatch"), at(Step::sending), Cause::storeSignature},
    {"clock", store("RequestTimeTooSkewed"), at(Step::sending), Cause::storeClock},
    {"expired", store("ExpiredToken"), at(Step::sending), Cause::storePermissionExpired},
    {"store fault", store("InternalError"), at(Step::sending), Cause::storeFault},
    {"store code", CloudError::aws({"NoSuchBucket", "None"}), at(Step::sending),
     Cause::storeRefused, "failed: the store refused it: None (NoSuchBucket)"},

    {"creation misread", malformed(), at(Step::creatingSession), Cause::serviceReplyMalformed,
     kMaybeSession},
    {"address misread", wrapped(Refusal::parseError()), at(Step::requestingAddress),
     Cause::serviceReplyMalformed},
    {"end misread", CloudError::invalidResponse(), at(Step::finalizing),
     Cause::serviceReplyMalformed, "could not be completed: "},
    {"deletion misread", CloudError::invalidResponse(), at(Step::deletingSession),
     Cause::serviceReplyMalformed, kMaybeDeleted},
    {"store misread", CloudError::invalidResponse(), at(Step::sending), Cause::storeReplyMalformed},
    {"no items", CloudError::missingItems(), at(Step::requestingAddress), Cause::missingItems},
};

TEST(FailureAdvice, namesTheCauseOfEveryFailureInEveryLanguage) {
  platform::setPreferredLanguages({"de"});
  std::set<Cause> causes;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const auto advice = FailureAdvice::of(row.error, row.context, FailureAudience::terminal);
    EXPECT_EQ(advice.cause, row.cause);
    EXPECT_TRUE(advice.whatFailed.contains(row.whatFailed)) << advice.whatFailed;
    const auto german = FailureAdvice::of(row.error, row.context, FailureAudience::window);
    for (const std::string& text :
         {advice.whatFailed, advice.whatToDo, german.whatFailed, german.whatToDo}) {
      EXPECT_FALSE(text.contains(".what") || text.contains(".do") || text.contains("step."))
          << text;
    }
    EXPECT_NE(advice.whatFailed, german.whatFailed);
    EXPECT_NE(advice.whatToDo, german.whatToDo);
    causes.insert(advice.cause);
  }
  EXPECT_EQ(causes.size(), static_cast<std::size_t>(Cause::missingItems) + 1);
  platform::setPreferredLanguages({});
}

TEST(FailureAdvice, tellsOfOptionsOnTheCommandLineOnly) {
  const auto error = transport(Code::secureConnectionFailed);
  const auto context = with({.caBundlePath = "ca"});
  const auto advice = FailureAdvice::of(error, context, FailureAudience::terminal);
  EXPECT_TRUE(advice.whatToDo.contains("--cacert")) << advice.whatToDo;
  EXPECT_EQ(advice.detail, "why");
  const auto window = FailureAdvice::of(error, context, FailureAudience::window);
  EXPECT_FALSE(window.whatToDo.contains("--cacert")) << window.whatToDo;
}

}  // namespace
}  // namespace quillbay::host
