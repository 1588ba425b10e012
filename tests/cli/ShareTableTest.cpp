#include "hosts/cli/ShareTable.h"

#include <QuillbayPlatform/JSONDecoder.h>
#include <gmock/gmock.h>

namespace quillbay::cli {
namespace {

using State = host::RememberedShare::State;

host::RememberedShare share(State state, const std::string& title, const std::string& expiration,
                            std::size_t arrivedFileCount) {
  const std::string text = R"({"id":"s1","token":"secret","url":"https://x/s","title":")" + title +
                           R"(","expiration":)" + expiration + R"(,"items":[]})";
  const platform::JSONDecoder decoder(platform::JSONDatePolicy::secondsSince1970);
  return {.identifier = 1,
          .created = platform::dateFromSecondsSince1970(0),
          .instanceIdentifier = "i",
          .session = decoder.decode<cloud::Session>(text).value(),
          .linkType = cloud::SessionLinkType::page,
          .state = state,
          .fileCount = 3,
          .arrivedFileCount = arrivedFileCount,
          .byteCount = 1200};
}

const platform::Date kNow = platform::dateFromSecondsSince1970(100);
const std::vector<host::RememberedShare> kShares = {
    share(State::uploading, "\\u65e5\\u672c\\u001b[2J", "null", 1),
    share(State::complete, "A title of some length", "60", 3), share(State::deleted, "", "60", 3)};

TEST(ShareTable, isAlignedAndCutsTitlesToTheTerminal) {
  ::setenv("TZ", "UTC", 1);
  EXPECT_EQ(
      shareTable(kShares, kNow, std::nullopt),
      "WHEN              STATE      FILES   SIZE    EXPIRES           TITLE                   "
      "LINK\n"
      "1970-01-01 00:00  uploading  1 of 3  1.2 kB  never             日本[2J                 "
      "https://x/s\n"
      "1970-01-01 00:00  expired    3       1.2 kB  1970-01-01 00:01  A title of some length  "
      "https://x/s\n"
      "1970-01-01 00:00  deleted    3       1.2 kB  1970-01-01 00:01                          "
      "https://x/s\n");
  EXPECT_THAT(shareTable(kShares, kNow, 90), testing::HasSubstr("  A title of ...  https"));
  EXPECT_THAT(shareTable(kShares, kNow, 20), testing::HasSubstr("  A tit...  https"));
}

TEST(ShareTable, anObjectTellsAllButTheToken) {
  EXPECT_EQ(shareObjects({kShares[1]}, kNow),
            R"({"created":"1970-01-01T00:00:00Z","state":"expired","files":3,"arrived":3,)"
            R"("bytes":1200,"expires":"1970-01-01T00:01:00Z","title":"A title of some length",)"
            R"("url":"https://x/s","id":"s1","instance":"i"})"
            "\n");
}

}  // namespace
}  // namespace quillbay::cli
