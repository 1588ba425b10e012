#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/StringTable.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::Localized;

TEST(Localized, SpeaksThePersonsLanguageElseEnglishElseTheKey) {
  platform::setPreferredLanguages({"de_AT"});
  EXPECT_EQ(Localized("share-window.cancel-button.title"), "Abbrechen");
  platform::setPreferredLanguages({"xx"});
  EXPECT_EQ(Localized("share-window.cancel-button.title"), "Cancel");
  EXPECT_EQ(Localized("date.days"), "date.days");
  platform::setPreferredLanguages({});
}

TEST(Localized, EveryTextIsThereInEveryLanguage) {
  const std::set<std::string> keys = {"alert.invalid-password.message",
                                      "alert.invalid-password.title",
                                      "error.invalid-file",
                                      "error.invalid-response",
                                      "error.missing-items",
                                      "expiration-label.title",
                                      "expiration.never",
                                      "link-type-label.title",
                                      "link-type.direct",
                                      "link-type.direct-download",
                                      "link-type.page",
                                      "long-links.title",
                                      "password-label.title",
                                      "share-window.cancel-button.title",
                                      "share-window.description",
                                      "share-window.share-button.title",
                                      "title-label.title",
                                      "title-text-field.placeholder"};
  for (const std::string language : {"en", "de"}) {
    const std::string path = QUILLBAY_RESOURCES "/" + language + "/QuillbayCloud.json";
    const auto texts = nlohmann::json::parse(readFile(path));
    std::set<std::string> found;
    for (const auto& [key, text] : texts.items()) {
      if (text != "") found.insert(key);
    }
    EXPECT_EQ(found, keys) << language;
  }
}

}  // namespace
}  // namespace quillbay::test
