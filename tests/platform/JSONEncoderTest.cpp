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

std::string failurePath(const Everything& record) {
  const auto text = JSONEncoder().encode(record);
  if (text) return "written: " + *text;
  const auto error = std::dynamic_pointer_cast<const JSONError>(text.error());
  if (!error || error->kind() != JSONError::Kind::unwritable) return "strange error";
  return error->keyPath();
}

TEST(JSONEncoder, WritesCompactlyInTheOrderOfTheCallsAndLeavesAbsentKeysOut) {
  const Everything record{std::nullopt, {{"e0", {}}, {"\"\\\n\x01\xC3\xA9/", {}}}, {"e", {}}};
  EXPECT_EQ(JSONEncoder().encode(record).value(),
            R"({"z":"literal","flag":false,"count":-5,"url":"https://a.example/b?c=d",)"
            R"("entries":[{"name":"e0"},{"name":"\"\\\n\u0001)"
            "\xC3\xA9/\"}],"
            R"("entry":{"name":"e"}})");
}

TEST(JSONEncoder, WritesDatesAsShortestNumbersAndWholeSecondsSince1970AsIntegers) {
  const std::pair<double, const char*> cases[] = {
      {0, "0"}, {-1.5, "-1.5"}, {1767225600, "1767225600"}, {1767225600.1, "1767225600.1"}};
  const JSONEncoder from1970(JSONDatePolicy::secondsSince1970);
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(from1970.encode(Entry{"", dateFromSecondsSince1970(seconds)}).value(),
              R"({"name":"","date":)" + std::string(text) + "}");
  }
  EXPECT_EQ(JSONEncoder().encode(Entry{"", dateFromSecondsSince1970(978307200)}).value(),
            R"({"name":"","date":0.0})");
}

TEST(JSONEncoder, NamesTheFirstValueThatJSONCannotHold) {
  const Date never = dateFromSecondsSince1970(std::numeric_limits<double>::infinity());
  EXPECT_EQ(failurePath({"\xFF", {{"\xFF", {}}}, {}}), "title");
  EXPECT_EQ(failurePath({{}, {{"a", {}}, {"b\xC3", {}}}, {"\xFF", {}}}), "entries.1.name");
  EXPECT_EQ(failurePath({{}, {}, {"a", never}}), "entry.date");
}

}  // namespace
}  // namespace quillbay::platform
