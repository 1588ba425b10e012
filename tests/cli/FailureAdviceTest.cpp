#include "hosts/common/FailureAdvice.h"

#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONError.h>
#include <QuillbayPlatform/StringTable.h>
#include <QuillbayPlatform/URLError.h>
#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <string>

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
CloudError malformed() {
  return CloudError::underlying(
      std::make_shared<const platform::JSONError>(platform::JSONError::Kind::missingKey, "items"));
}
/// As the library reports that there is no address for an upload.
CloudError wrapped(const Refusal& error) {
  return CloudError::underlying(std::make_shared<const Refusal>(error));
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

using enum ShareStep;
using enum FileChange;

const struct {
  CloudError error;
  FailureContext context;
  Cause cause;
  /// Part of what the terminal shows.
  const char* shown;
} kRows[] = {
    {store("EntityTooLarge"), at(sending, grew), Cause::fileGrew, "upload failed: '{code}' grew"},
    {unread(), at(sending, shrank), Cause::fileShrank, "'{code}' became shorter"},
    {refusal(409), at(finalizing, overwritten), Cause::fileOverwritten, "overwritten"},
    {unhashed(), at(fingerprinting, vanished), Cause::fileVanished, "nothing was shared: '{code}'"},
    {unsent(), at(sending, unreadable), Cause::fileUnreadable,
     "the upload failed: '{code}' cannot"},
    {unhashed(), at(fingerprinting, notRegular), Cause::fileNotRegular, "not a regular file"},
    {unsent(), at(creatingSession, nameNotText), Cause::fileNameNotText, "no session was created"},
    {refusal(409), at(finalizing, sizeUnknown), Cause::fileSizeUnknown, "states no size"},
    {unsent(), at(checkingFiles, contentChanged), Cause::fileChanged,
     "the share was not continued: '{code}' has changed since"},
    {unhashed(), at(fingerprinting), Cause::filesUnreadable, "nothing was shared: a file"},
    {lost(Code::cannotFindHost), at(finalizing, grew), Cause::hostNotFound, "be completed: "},
    {store("SlowDown"), at(sending, grew), Cause::storeBusy, "the upload of '{code}' failed: "},

    {lost(Code::cannotFindHost), at(creatingSession), Cause::hostNotFound,
     "no session was created"},
    {lost(Code::cannotConnectToHost), at(creatingSession), Cause::connectionRefused,
     "no session was"},
    {lost(Code::cannotConnectToHost), with(kRoute), Cause::routeFailed, "no session was created"},
    {lost(Code::cannotFindHost), with(kProxy), Cause::proxyFailed, "no session was created"},
    {lost(Code::cannotConnectToHost), with(kProxy), Cause::proxyFailed, "no session was created"},
    {lost(Code::networkConnectionLost), with(kProxy), Cause::proxyConnectionLost, "not known"},
    {lost(Code::secureConnectionFailed), at(creatingSession), Cause::tlsFailed, "no session was"},
    {lost(Code::secureConnectionFailed), with(kAuthorities), Cause::ownAuthoritiesFailed, "TLS"},
    {lost(Code::timedOut), at(creatingSession), Cause::timedOut, "not known whether the service"},
    {lost(Code::networkConnectionLost), at(creatingSession), Cause::connectionLost, "not known"},
    {lost(Code::timedOut), at(deletingSession), Cause::timedOut, "whether session '{code}' was"},
    {wrapped(Refusal::underlying(failure(Code::timedOut))), at(requestingAddress), Cause::timedOut,
     "not begin"},
    {lost(Code::unsupportedURL), at(creatingSession), Cause::addressRefused, "address"},
    {unread(), unanswered(), Cause::storeUnanswered, "connection to the store"},
    {lost(Code::networkConnectionLost), at(sending), Cause::storeUnanswered, "to the store"},
    {lost(Code::unknown), at(creatingSession), Cause::unexpected, "it is not known whether"},

    {refusal(403), at(creatingSession), Cause::serviceDenied, "does not allow it (status 403)"},
    {wrapped(Refusal::cloudError({"\x1b[31mNo {code}\n", 401})), at(requestingAddress),
     Cause::serviceDenied, "not begin: the service does not allow it: [31mNo {code} (status 401)"},
    {refusal(410), at(finalizing), Cause::sessionGone, "(status 410)"},
    {refusal(409), at(finalizing), Cause::contentConflict, "(status 409)"},
    {refusal(413), at(creatingSession), Cause::serviceTooLarge, "no session was created: "},
    {refusal(429), at(deletingSession), Cause::serviceBusy, "session '{code}' was not deleted: "},
    {refusal(507, "Full"), at(creatingSession), Cause::serviceFault, "fault: Full (status 507)"},
    {refusal(404), at(creatingSession), Cause::serviceRefused, "no session was created: "},
    {refusal(404), at(deletingSession), Cause::deletionRefused, "'{code}' was not deleted: "},

    {store("EntityTooLarge"), at(sending), Cause::storeTooLarge, "(EntityTooLarge)"},
    {store("AccessDenied", "No"), at(sending), Cause::storeDenied, "gave: No (AccessDenied)"},
    {store("SignatureDoesNotMatch"), at(sending), Cause::storeSignature, "(SignatureDoes"},
    {store("RequestTimeTooSkewed"), at(sending), Cause::storeClock, "(RequestTimeTooSkewed)"},
    {store("ExpiredToken"), at(sending), Cause::storePermissionExpired, "(ExpiredToken)"},
    {store("InternalError"), at(sending), Cause::storeFault, "(InternalError)"},
    {store("NoSuchBucket"), at(sending), Cause::storeRefused, "refused it (NoSuchBucket)"},

    {malformed(), at(creatingSession), Cause::serviceReplyMalformed, "it is not known whether"},
    {wrapped(Refusal::parseError()), at(requestingAddress), Cause::serviceReplyMalformed, "begin"},
    {unread(), at(finalizing), Cause::serviceReplyMalformed, "could not be completed: "},
    {unread(), at(deletingSession), Cause::serviceReplyMalformed, "it is not known whether"},
    {unread(), at(sending), Cause::storeReplyMalformed, "the reply of the store"},
    {CloudError::missingItems(), at(requestingAddress), Cause::missingItems, "expects no files"},
};

TEST(FailureAdvice, namesTheCauseOfEveryFailureInEveryLanguage) {
  std::set<Cause> causes;
  for (const auto& row : kRows) {
    const auto advice = FailureAdvice::of(row.error, row.context, FailureAudience::terminal);
    EXPECT_EQ(advice.cause, row.cause) << advice.whatFailed;
    EXPECT_THAT(advice.whatFailed, HasSubstr(row.shown));
    for (const char* const language : test::kLanguages) {
      platform::setPreferredLanguages({language});
      const auto shown = FailureAdvice::of(row.error, row.context, FailureAudience::window);
      for (const auto& text :
           {advice.whatFailed, advice.whatToDo, shown.whatFailed, shown.whatToDo}) {
        EXPECT_THAT(text, Not(ContainsRegex("[.]what|[.]do|step[.]")));
      }
      if (language == std::string("en")) continue;
      EXPECT_NE(advice.whatFailed, shown.whatFailed);
      EXPECT_NE(advice.whatToDo, shown.whatToDo);
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
  const auto error = lost(Code::secureConnectionFailed);
  const auto advice = FailureAdvice::of(error, with(kAuthorities), FailureAudience::terminal);
  EXPECT_THAT(advice.whatToDo, HasSubstr("--cacert"));
  EXPECT_EQ(advice.detail, "why");
  const auto window = FailureAdvice::of(error, with(kAuthorities), FailureAudience::window);
  EXPECT_THAT(window.whatToDo, Not(HasSubstr("--cacert")));
}

}  // namespace
}  // namespace quillbay::host
