#include <QuillbayCloud/ui/Localized.h>
#include <QuillbayPlatform/StringTable.h>

#include <set>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::Localized;

constexpr const char* kKeys[] = {"share-window.description",
                                 "share-window.share-button.title",
                                 "share-window.cancel-button.title",
                                 "alert.invalid-password.title",
                                 "alert.invalid-password.message",
                                 "title-label.title",
                                 "password-label.title",
                                 "expiration-label.title",
                                 "link-type-label.title",
                                 "title-text-field.placeholder",
                                 "long-links.title",
                                 "link-type.page",
                                 "link-type.direct-download",
                                 "link-type.direct",
                                 "expiration.never",
                                 "error.invalid-file",
                                 "error.invalid-response",
                                 "error.missing-items"};

TEST(Localized, EveryKeyHasATextInEveryLanguage) {
  for (const char* language : {"en", "de"}) {
    platform::setPreferredLanguages({language});
    for (const char* key : kKeys) {
      EXPECT_NE(Localized(key), key) << language;
      EXPECT_NE(Localized(key), "") << language;
    }
  }
  platform::setPreferredLanguages({"de_AT"});
  EXPECT_EQ(Localized("share-window.cancel-button.title"), "Abbrechen");
  platform::setPreferredLanguages({"xx"});
  EXPECT_EQ(Localized("share-window.cancel-button.title"), "Cancel");
  platform::setPreferredLanguages({});
}

TEST(Localized, AnUnknownKeyIsItsOwnText) {
  EXPECT_EQ(Localized("date.days"), "date.days");
  EXPECT_EQ(Localized(""), "");
}

}  // namespace
}  // namespace quillbay::test
