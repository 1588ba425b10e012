#include <QuillbayPlatform/JSONEncoder.h>
#include <gtest/gtest.h>

#include <limits>

namespace quillbay::platform {
namespace {

struct Entry {
  std::string name;
  std::optional<Date> date;

  void encode(JSONWriter& writer) const {
    writer.write("name", name);
    writer.write("date", date);
  }
};

struct Everything {
  std::optional<std::string> title;
  std::vector<Entry> entries;
  Entry entry;

  void encode(JSONWriter& writer) const {
    writer.write("z", "literal");
    writer.write("title", title);
    writer.write("flag", false);
    writer.write("count", std::int64_t{-5});
    writer.write("url", *URL::parse("https://a.example/b?c=d"));
    writer.write("entries", entries);
    writer.write("entry", entry);
  }
};

TEST(JSONEncoder, WritesCompactlyInTheOrderOfTheCallsAndLeavesAbsentKeysOut) {
  const auto at = [](double seconds) { return platform::dateFromSecondsSince1970(seconds); };
  // The last date is the next whole number after the last one that every reader of integers has.
  const Everything record{
      std::nullopt,
      {{"\"\\\n\x01\xC3\xA9/", {}}, {"e", at(1767225600)}, {"e", at(0x1p53 + 2)}},
      {"e", at(1767225600.1)}};
  EXPECT_EQ(JSONEncoder(JSONDatePolicy::secondsSince1970).encode(record).value(),
            R"({"z":"literal","flag":false,"count":-5,"url":"https://a.example/b?c=d",)"
            R"("entries":[{"name":"\"\\\n\u0001)"
            "\xC3\xA9/\"},"
            R"({"name":"e","date":1767225600},{"name":"e","date":9.007199254740994e+15}],)"
            R"("entry":{"name":"e","date":1767225600.1}})");
  EXPECT_EQ(JSONEncoder().encode(Entry{"", at(978307200)}).value(), R"({"name":"","date":0.0})");
}

TEST(JSONEncoder, NamesTheFirstValueThatJSONCannotHold) {
  const Date never = dateFromSecondsSince1970(std::numeric_limits<double>::infinity());
  const std::pair<Everything, const char*> cases[] = {
      {{"\xFF", {{"\xFF", {}}}, {}}, "title"},
      {{{}, {{"a", {}}, {"b\xC3", {}}}, {"\xFF", {}}}, "entries.1.name"},
      {{{}, {}, {"a", never}}, "entry.date"},
  };
  for (const auto& [record, keyPath] : cases) {
    const auto text = JSONEncoder().encode(record);
    ASSERT_FALSE(text) << *text;
    EXPECT_EQ(dynamic_cast<const JSONError&>(*text.error()).keyPath(), keyPath);
  }
}

}  // namespace
}  // namespace quillbay::platform
