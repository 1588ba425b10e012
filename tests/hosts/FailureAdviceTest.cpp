#include "hosts/common/FailureAdvice.h"

#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONError.h>
#include <QuillbayPlatform/StringTable.h>
#include <QuillbayPlatform/URLError.h>
#include <gmock/gmock.h>

#include <set>

#include "Languages.h"

namespace quillbay::host {
namespace {

using Cause = FailureCause;
using Code = platform::URLError::Code;
using CloudError = cloud::QuillbayCloudError;
using Refusal = cloud::Webservice::Error;
using Step = ShareStep;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

platform::ErrorPtr failure(Code code) {
  return std::make_shared<const platform::URLError>(code, "why");
}
CloudError lost(Code code) { return CloudError::underlying(failure(code)); }
/// With a refusal it is how the library reports that there is no address for an upload.
template <class Error>
CloudError wrapped(const Error& error) {
  return CloudError::underlying(std::make_shared<const Error>(error));
}
CloudError malformed() {
  return wrapped(platform::JSONError(platform::JSONError::Kind::missingKey, "items"));
}
CloudError refusal(int status, const char* text = "") {
  return CloudError::webservice(text, status);
}
CloudError store(const char* code, const char* text = "") { return CloudError::aws({code, text}); }
CloudError unread() { return CloudError::invalidResponse(); }
CloudError unsent() { return CloudError::invalidFile(); }
CloudError unhashed() { return CloudError::fingerprintFailure(); }

FailureContext at(Step step, FileChange change = FileChange::none) {
  return {.step = step, .subject = "'{code}'", .fileChange = change};
}
FailureContext unanswered() {
  return {.step = Step::sending, .transportError = failure(Code::timedOut)};
}
FailureContext with(NetworkOptions network) {
  return {.step = Step::creatingSession, .network = std::move(network)};
}
const NetworkOptions kRoute{.connectTo = {"a:1:b:2"}};
const NetworkOptions kProxy{.usesProxy = true};
const NetworkOptions kAuthorities{.caBundlePath = "ca"};

using enum FailureCause;
using enum FileChange;
using enum ShareStep;

/// The last is part of what the terminal shows.
const std::tuple<CloudError, FailureContext, Cause, const char*> kRows[] = {
    {store("EntityTooLarge"), at(sending, grew), fileGrew, "upload failed: '{code}' grew"},
    {unread(), at(sending, shrank), fileShrank, "'{code}' became shorter"},
    {refusal(409), at(finalizing, overwritten), fileOverwritten, "overwritten"},
    {unhashed(), at(fingerprinting, vanished), fileVanished, "nothing was shared: '{code}'"},
    {unsent(), at(sending, unreadable), fileUnreadable, "upload failed: '{code}' cannot"},
    {unhashed(), at(fingerprinting, notRegular), fileNotRegular, "not a regular file"},
    {unsent(), at(creatingSession, nameNotText), fileNameNotText, "no session was created"},
    {refusal(409), at(finalizing, sizeUnknown), fileSizeUnknown, "states no size"},
    {unsent(), at(checkingFiles, contentChanged), fileChanged, "was not continued: '{code}' has"},
    {unhashed(), at(fingerprinting), filesUnreadable, "nothing was shared: a file"},
    {lost(Code::cannotFindHost), at(finalizing, grew), hostNotFound, "be completed: "},
    {store("SlowDown"), at(sending, grew), storeBusy, "the upload of '{code}' failed: "},

    {lost(Code::cannotFindHost), at(creatingSession), hostNotFound, "no session was created"},
    {lost(Code::cannotConnectToHost), at(creatingSession), connectionRefused, "no session was"},
    {lost(Code::cannotConnectToHost), with(kRoute), routeFailed, "no session was created"},
    {lost(Code::cannotFindHost), with(kProxy), proxyFailed, "no session was created"},
    {lost(Code::cannotConnectToHost), with(kProxy), proxyFailed, "no session was created"},
    {lost(Code::networkConnectionLost), with(kProxy), proxyConnectionLost, "not known"},
    {lost(Code::secureConnectionFailed), with(kAuthorities), tlsFailed, "no session was"},
    {lost(Code::serverCertificateUntrusted), at(creatingSession), tlsFailed, "no session was"},
    {lost(Code::serverCertificateUntrusted), with(kAuthorities), ownAuthoritiesFailed, "TLS"},
    {lost(Code::timedOut), at(creatingSession), timedOut, "not known whether the service"},
    {lost(Code::networkConnectionLost), at(creatingSession), connectionLost, "not known"},
    {lost(Code::timedOut), at(deletingSession), timedOut, "whether session '{code}' was"},
    {wrapped(Refusal::underlying(failure(Code::timedOut))), at(requestingAddress), timedOut,
     "not begin"},
    {lost(Code::unsupportedURL), at(creatingSession), addressRefused, "address"},
    {unread(), unanswered(), storeUnanswered, "connection to the store"},
    {lost(Code::networkConnectionLost), at(sending), storeUnanswered, "to the store"},
    {lost(Code::unknown), at(creatingSession), unexpected, "it is not known whether"},

    {refusal(403), at(creatingSession), serviceDenied, "does not allow it (status 403)"},
    {wrapped(Refusal::cloudError({"\x1b[31mNo {code}\n", 401})), at(requestingAddress),
     serviceDenied, "not begin: the service does not allow it: [31mNo {code} (status 401)"},
    {refusal(410), at(finalizing), sessionGone, "(status 410)"},
    {refusal(409), at(finalizing), contentConflict, "(status 409)"},
    {refusal(413), at(creatingSession), serviceTooLarge, "no session was created: "},
    {refusal(429), at(deletingSession), serviceBusy, "session '{code}' was not deleted: "},
    {refusal(507, "Full"), at(creatingSession), serviceFault, "fault: Full (status 507)"},
    {refusal(404), at(creatingSession), serviceRefused, "no session was created: "},
    {refusal(404), at(deletingSession), deletionRefused, "'{code}' was not deleted: "},

    {store("EntityTooLarge"), at(sending), storeTooLarge, "(EntityTooLarge)"},
    {store("AccessDenied", "No"), at(sending), storeDenied, "gave: No (AccessDenied)"},
    {store("SignatureDoesNotMatch"), at(sending), storeSignature, "(SignatureDoes"},
    {store("RequestTimeTooSkewed"), at(sending), storeClock, "(RequestTimeTooSkewed)"},
    {store("ExpiredToken"), at(sending), storePermissionExpired, "(ExpiredToken)"},
    {store("InternalError"), at(sending), storeFault, "(InternalError)"},
    {store("NoSuchBucket"), at(sending), storeRefused, "refused it (NoSuchBucket)"},

    {malformed(), at(creatingSession), serviceReplyMalformed, "it is not known whether"},
    {wrapped(Refusal::parseError()), at(requestingAddress), serviceReplyMalformed, "begin"},
    {unread(), at(finalizing), serviceReplyMalformed, "could not be completed: "},
    {unread(), at(deletingSession), serviceReplyMalformed, "it is not known whether"},
    {unread(), at(sending), storeReplyMalformed, "the reply of the store"},
    {CloudError::missingItems(), at(requestingAddress), missingItems, "expects no files"},
};

TEST(FailureAdvice, namesTheCauseOfEveryFailureInEveryLanguage) {
  std::set<Cause> causes;
  for (const auto& [error, context, cause, shown] : kRows) {
    const auto advice = FailureAdvice::of(error, context, FailureAudience::terminal);
    EXPECT_EQ(advice.cause, cause) << advice.whatFailed;
    EXPECT_THAT(advice.whatFailed, HasSubstr(shown));
    for (const std::string language : test::kLanguages) {
      platform::setPreferredLanguages({language});
      const auto window = FailureAdvice::of(error, context, FailureAudience::window);
      for (const auto& text :
           {advice.whatFailed, advice.whatToDo, window.whatFailed, window.whatToDo}) {
        EXPECT_THAT(text, Not(ContainsRegex("[.]what|[.]do|step[.]")));
      }
      if (language == "en") continue;
      EXPECT_NE(advice.whatFailed, window.whatFailed);
      EXPECT_NE(advice.whatToDo, window.whatToDo);
    }
    causes.insert(advice.cause);
  }
  EXPECT_EQ(nameOf(Cause::connectionLost), "connection-lost");
  EXPECT_EQ(causes.size(), static_cast<std::size_t>(Cause::missingItems) + 1);
  platform::setPreferredLanguages({});
}

TEST(FailureAdvice, followsTheRulesOfTheLanguageForColonsAndCapitals) {
  platform::setPreferredLanguages({"fr"});
  const auto error = refusal(507, "Full");
  const auto advice = FailureAdvice::of(error, at(creatingSession), FailureAudience::window);
  EXPECT_THAT(advice.whatFailed, HasSubstr("session\u00a0: le service est en panne\u00a0: Full"));
  platform::setPreferredLanguages({});
  EXPECT_EQ(sentence("\u017ale"), "\u0179le.");
  EXPECT_EQ(sentence("a \xff."), "A \xff.");
  EXPECT_EQ(sentence("\xff"), "\xff.");
}

TEST(FailureAdvice, tellsOfOptionsOnTheCommandLineOnly) {
  const auto error = lost(Code::serverCertificateUntrusted);
  const auto advice = FailureAdvice::of(error, with(kAuthorities), FailureAudience::terminal);
  EXPECT_THAT(advice.whatToDo, HasSubstr("--cacert"));
  EXPECT_EQ(advice.detail, "why");
  const auto window = FailureAdvice::of(error, with(kAuthorities), FailureAudience::window);
  EXPECT_THAT(window.whatToDo, Not(HasSubstr("--cacert")));
}

}  // namespace
}  // namespace quillbay::host
