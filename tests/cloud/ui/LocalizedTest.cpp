#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/StringTable.h>

#include <nlohmann/json.hpp>
#include <set>

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
  const auto keys = [](const std::string& language) {
    std::set<std::string> found;
    const std::string path = QUILLBAY_RESOURCES "/" + language + "/QuillbayCloud.json";
    const auto texts = nlohmann::json::parse(readFile(path));
    for (const auto& [key, text] : texts.items()) {
      EXPECT_NE(text, "") << key;
      found.insert(key);
    }
    return found;
  };
  EXPECT_EQ(keys("de"), keys("en"));
}

}  // namespace
}  // namespace quillbay::test
