#include <QuillbayPlatform/JSONEncoder.h>
#include <gtest/gtest.h>

#include <cmath>
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
  static std::expected<Entry, ErrorPtr> decode(JSONReader& reader) {
    auto name = reader.required<std::string>("name");
    auto date = reader.optional<Date>("date");
    return reader.finish([&] { return Entry{std::move(*name), date}; });
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
    writer.write("a", std::string_view("last"));
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
            R"("entry":{"name":"e"},"a":"last"})");
  EXPECT_NE(JSONEncoder().encode(Everything{}).value().find(R"("entries":[])"), std::string::npos);
}

TEST(JSONEncoder, WritesDatesAsShortestNumbersWithAFraction) {
  struct Case {
    double seconds;
    const char* text;
  };
  const Case cases[] = {{0, "0.0"},
                        {-1.5, "-1.5"},
                        {1767225600, "1767225600.0"},
                        {1767225600.1, "1767225600.1"},
                        {0.1 + 0.2, "0.30000000000000004"}};
  const JSONEncoder from1970(JSONDatePolicy::secondsSince1970);
  for (const Case& row : cases) {
    EXPECT_EQ(from1970.encode(Entry{"", dateFromSecondsSince1970(row.seconds)}).value(),
              R"({"name":"","date":)" + std::string(row.text) + "}");
  }
  EXPECT_EQ(JSONEncoder().encode(Entry{"", dateFromSecondsSince1970(978307200)}).value(),
            R"({"name":"","date":0.0})");
}

TEST(JSONEncoder, WhatItWritesReadsBackUnderTheSamePolicy) {
  for (const auto policy : {JSONDatePolicy::secondsSince1970, JSONDatePolicy::secondsSince2001}) {
    const Entry entry{"\xF0\x9F\x98\x80\"\\", dateFromSecondsSince1970(1767225600.123)};
    const auto text = JSONEncoder(policy).encode(entry);
    ASSERT_TRUE(text);
    const auto read = JSONDecoder(policy).decode<Entry>(*text);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->name, entry.name);
    EXPECT_NEAR(secondsSince1970(*read->date), 1767225600.123, 1e-6);
  }
}

TEST(JSONEncoder, NamesTheFirstValueThatJSONCannotHold) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const Date never = dateFromSecondsSince1970(kInfinity);
  EXPECT_EQ(failurePath({"\xFF", {{"\xFF", {}}}, {}}), "title");
  EXPECT_EQ(failurePath({{}, {{"a", {}}, {"b\xC3", {}}}, {"\xFF", {}}}), "entries.1.name");
  EXPECT_EQ(failurePath({{}, {}, {"a", never}}), "entry.date");
  EXPECT_EQ(failurePath({{}, {{"a", dateFromSecondsSince1970(std::nan(""))}}, {}}),
            "entries.0.date");
}

}  // namespace
}  // namespace quillbay::platform
