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
  const ErrorPtr unreadable = std::make_shared<Webservice::Error>(Webservice::Error::parseError());
  const auto from = [](const auto& error) { return QuillbayCloudError::from(error); };
  const auto refusal = from(Webservice::Error::cloudError({"Gone", 410}));
  EXPECT_EQ(refusal, QuillbayCloudError::webservice("Gone", 410));
  EXPECT_EQ(from(refusal), refusal);
  EXPECT_EQ(from(Webservice::Error::parseError()), QuillbayCloudError::invalidResponse());
  EXPECT_EQ(from(inner), QuillbayCloudError::underlying(inner));
  for (const ErrorPtr& error : {ErrorPtr(inner), unreadable}) {
    EXPECT_EQ(from(Webservice::Error::underlying(error)), QuillbayCloudError::underlying(error));
  }
}

TEST(QuillbayCloudError, TellsThePersonWhatTheServerSaidAndTheLogOneLineOfIt) {
  const auto unreadable = std::make_shared<Webservice::Error>(Webservice::Error::parseError());
  const std::tuple<QuillbayCloudError, std::optional<std::string>, const char*> rows[] = {
      {QuillbayCloudError::aws({"A", "b\n\x1b[2J"}), "b\n\x1b[2J", "aws: A: b  [2J"},
      {QuillbayCloudError::webservice("", 410), "", "webservice: status 410: "},
      {QuillbayCloudError::webservice("b\r\nc", 1), "b\r\nc", "webservice: status 1: b  c"},
      {QuillbayCloudError::underlying(unreadable), std::nullopt,
       "underlying: the service's reply could not be understood"},
      {QuillbayCloudError::underlying(std::make_shared<const SomeError>()), "Too bad.",
       "underlying: some error"},
      {QuillbayCloudError::invalidFile(), Localized("error.invalid-file"), "invalidFile"},
      {QuillbayCloudError::invalidResponse(), Localized("error.invalid-response"),
       "invalidResponse"},
      {QuillbayCloudError::missingItems(), Localized("error.missing-items"), "missingItems"},
      {QuillbayCloudError::fingerprintFailure(), Localized("error.invalid-file"),
       "fingerprintFailure"},
  };
  for (const auto& [error, text, description] : rows) {
    EXPECT_EQ(error.errorDescription(), text) << description;
    EXPECT_EQ(error.description(), description);
  }
}

}  // namespace
}  // namespace quillbay::test
