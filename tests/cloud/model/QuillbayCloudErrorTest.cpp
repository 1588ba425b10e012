#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayCloud/ui/Localized.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::Localized;
using cloud::QuillbayCloudError;
using cloud::Webservice;
using platform::ErrorPtr;

struct SomeError final : platform::Error {
  std::string description() const override { return "some error"; }
  std::optional<std::string> errorDescription() const override { return "Too bad."; }
};

TEST(QuillbayCloudError, FromUnwrapsTheServiceClientsErrorsOnceAndKeepsItsOwn) {
  const auto inner = std::make_shared<const SomeError>();
  const auto refusal = QuillbayCloudError::from(Webservice::Error::cloudError({"Gone", 410}));
  EXPECT_EQ(refusal, QuillbayCloudError::webservice("Gone", 410));
  EXPECT_EQ(QuillbayCloudError::from(refusal), refusal);
  EXPECT_EQ(QuillbayCloudError::from(Webservice::Error::underlying(inner)),
            QuillbayCloudError::underlying(inner));
  EXPECT_EQ(QuillbayCloudError::from(Webservice::Error::parseError()),
            QuillbayCloudError::invalidResponse());
  EXPECT_EQ(QuillbayCloudError::from(inner), QuillbayCloudError::underlying(inner));

  const ErrorPtr unreadable = std::make_shared<Webservice::Error>(Webservice::Error::parseError());
  EXPECT_EQ(QuillbayCloudError::from(Webservice::Error::underlying(unreadable)),
            QuillbayCloudError::underlying(unreadable));
}

TEST(QuillbayCloudError, TellsThePersonWhatTheServerSaidAndMakesNothingUp) {
  const auto unreadable = std::make_shared<Webservice::Error>(Webservice::Error::parseError());
  const std::pair<QuillbayCloudError, std::optional<std::string>> rows[] = {
      {QuillbayCloudError::aws({"AccessDenied", "Access Denied"}), "Access Denied"},
      {QuillbayCloudError::webservice("", 410), ""},
      {QuillbayCloudError::underlying(unreadable), std::nullopt},
      {QuillbayCloudError::underlying(std::make_shared<const SomeError>()), "Too bad."},
      {QuillbayCloudError::invalidFile(), Localized("error.invalid-file")},
      {QuillbayCloudError::invalidResponse(), Localized("error.invalid-response")},
      {QuillbayCloudError::missingItems(), Localized("error.missing-items")},
      {QuillbayCloudError::fingerprintFailure(), Localized("error.invalid-file")},
  };
  for (const auto& [error, text] : rows) {
    EXPECT_EQ(error.errorDescription(), text) << error.description();
    EXPECT_FALSE(text.value_or("").starts_with("error.")) << "a key without text";
  }
}

TEST(QuillbayCloudError, AServersTextStaysOnItsLineOfTheLog) {
  EXPECT_EQ(QuillbayCloudError::aws({"A", "b\nerror \x1b[2J"}).description(),
            "aws: A: b error  [2J");
  EXPECT_EQ(QuillbayCloudError::webservice("b\r\nc", 1).description(),
            "webservice: status 1: b  c");
}

}  // namespace
}  // namespace quillbay::test
