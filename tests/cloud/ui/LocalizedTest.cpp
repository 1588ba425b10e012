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

}  // namespace
}  // namespace quillbay::test
