#include <QuillbayPlatform/JSONDecoder.h>
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

namespace quillbay::platform {
namespace {

struct Nothing {
  static std::expected<Nothing, ErrorPtr> decode(JSONReader& reader) {
    return reader.finish([] { return Nothing(); });
  }
};

/// Reads one member, "v", of any type by any rule.
template <class T, auto kRead>
struct One {
  std::optional<T> value;

  static std::expected<One, ErrorPtr> decode(JSONReader& reader) {
    auto value = (reader.*kRead)("v");
    return reader.finish([&] { return One{std::move(value)}; });
  }
};
template <class T>
using Required = One<T, &JSONReader::required<T>>;
template <class T>
using Optional = One<T, &JSONReader::optional<T>>;
template <class T>
using Tolerant = One<T, &JSONReader::tolerant<T>>;

struct Tree {
  using Leaf = Required<std::string>;

  static std::expected<Tree, ErrorPtr> decode(JSONReader& reader) {
    auto identifier = reader.required<std::string>("id");
    auto leaves = reader.required<std::vector<Leaf>>("leaves");
    auto crown = reader.optional<Leaf>("crown");
    return reader.finish(
        [&] { return Tree{std::move(*identifier), std::move(*leaves), std::move(crown)}; });
  }

  std::string identifier;
  std::vector<Leaf> leaves;
  std::optional<Leaf> crown;
};

/// The outcome as one text: "ok", or kind and key path of the failure.
template <class T>
std::string outcome(const std::string& text) {
  const auto record = JSONDecoder().decode<T>(text);
  if (record) return "ok";
  const auto& error = dynamic_cast<const JSONError&>(*record.error());
  constexpr const char* kNames[] = {"missingKey",   "nullValue",     "wrongType",
                                    "corruptValue", "invalidSyntax", "unwritable"};
  return std::string(kNames[static_cast<int>(error.kind())]) + " at " + error.keyPath();
}

std::string member(const std::string& json) { return R"({"v":)" + json + "}"; }

TEST(JSONDecoder, EachRuleTreatsEachFlawAsItPromises) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {R"({"v":"https://a.example/"})", "ok", "ok"},
      {R"({})", "missingKey at v", "ok"},
      {R"({"v":null})", "nullValue at v", "ok"},
      {R"({"v":["https://a.example/"]})", "wrongType at v", "wrongType at v"},
      {R"({"v":"a b"})", "corruptValue at v", "corruptValue at v"},
  };
  for (const auto& [text, required, optional] : rows) {
    EXPECT_EQ(outcome<Required<URL>>(text), required);
    EXPECT_EQ(outcome<Optional<URL>>(text), optional);
    EXPECT_EQ(outcome<Tolerant<URL>>(text), "ok");
  }
}

TEST(JSONDecoder, TakesNoTypeForAnother) {
  EXPECT_EQ(outcome<Required<bool>>(member("1")), "wrongType at v");
  EXPECT_EQ(outcome<Required<std::string>>(member("true")), "wrongType at v");
  EXPECT_EQ(outcome<Required<Date>>(member(R"("5")")), "wrongType at v");
  EXPECT_EQ(outcome<Required<Date>>(member("1e400")), "corruptValue at v");
  EXPECT_EQ(outcome<Required<std::vector<Nothing>>>(member("{}")), "wrongType at v");
  for (const char* noInteger : {R"("5")", "9223372036854775808", "1.0", "1e3"}) {
    EXPECT_EQ(outcome<Required<std::int64_t>>(member(noInteger)), "wrongType at v") << noInteger;
  }
  const auto least = JSONDecoder().decode<Required<std::int64_t>>(member("-9223372036854775808"));
  EXPECT_EQ(least->value, std::numeric_limits<std::int64_t>::min());
}

TEST(JSONDecoder, ReadsTextWithEveryEscapeAndRefusesHalfCharacters) {
  const auto text = JSONDecoder().decode<Required<std::string>>(
      member(R"("\"\\\/\b\t\u00e9\u0000\ud83d\ude00")"));
  EXPECT_EQ(text->value, std::string("\"\\/\b\t\xC3\xA9\0\xF0\x9F\x98\x80", 12));
  for (const char* half : {R"("\ud83d")", R"("\ude00")"}) {
    EXPECT_EQ(outcome<Required<std::string>>(member(half)), "corruptValue at v") << half;
    EXPECT_EQ(outcome<Tolerant<std::string>>(member(half)), "ok") << half;
  }
}

// Judged by another reader of JSON, each text also as a value that no record reads.
TEST(JSONDecoder, RefusesWhatIsNoJSONAnywhereAndNothingElse) {
  const char* const texts[] = {
      "{}", "[]", "-0.5E+3", "1e9", "0", R"("\u00e9\/")", R"(["\u0041",{"":[{}]},null,true,false])",
      "", "nonsense", "truee", "nul", "01", "-", "1.", ".5", "1e", "+1", "0x1", "NaN", "'a'", "1 2",
      "{}{}", "[1 2]", "[1,]", "[,1]", "[}", "[1", "[1:2]", R"(["a":1])", R"({"a":1,})", "{a:1}",
      R"({"a"})", R"({"a":})", R"({"a" 1})", R"({"a",1})", R"({"a":1 "b":2})", R"({"a":1)", "{]",
      R"({"a")", R"("a)", R"("\x")", R"("\u12g4")", R"("\")", R"("a":1)", "\"\t\"", "\"\xFF\"",
      "/**/1", "[1]//",
      // A colon after a string that is no key, and brackets that make up for it.
      R"(["a":1}])", R"([["a":"b"}]])", R"({"a":"b":{"c":1}})", R"({"a":{"b":"c":["d"]}},"x":1})",
      R"(["a":["b",{"c":"d"}]}])", R"([{"a":1},"b":2},{}])"};
  for (const std::string text : texts) {
    for (const std::string& document : {text, "[" + text + "]", R"({"y":)" + text + R"(,"z":0})"}) {
      EXPECT_EQ(outcome<Nothing>(document) != "invalidSyntax at ", nlohmann::json::accept(document))
          << document;
    }
  }
}

TEST(JSONDecoder, RefusesWhatIsNestedTooDeeplyOrGoesOnAfterItsEnd) {
  const std::string deepest = std::string(63, '[') + std::string(63, ']');
  EXPECT_EQ(outcome<Nothing>(R"({"y":)" + deepest + "}"), "ok");
  // One level deeper than allowed, and a depth that would take the stack.
  for (const std::string& text :
       {R"({"y":[)" + deepest + "]}", std::string(1'000'000, '['), std::string("{}\0", 3)}) {
    EXPECT_EQ(outcome<Nothing>(text), "invalidSyntax at ") << text.substr(0, 80);
  }
}

TEST(JSONDecoder, NamesTheWholePathToTheFirstFailure) {
  const std::pair<const char*, const char*> cases[] = {
      {R"([{"id":"1"}])", "wrongType at "},
      {R"({"id":"1","leaves":[{"v":"a"},{"v":3}]})", "wrongType at leaves.1.v"},
      {R"({"id":"1","leaves":[{"v":"a"},5,{}]})", "wrongType at leaves.1"},
      {R"({"id":"1","leaves":[],"crown":{}})", "missingKey at crown.v"},
      {R"({"crown":5,"leaves":5,"id":5})", "wrongType at id"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(outcome<Tree>(text), expected) << text;
}

TEST(JSONDecoder, ReadsMembersInAnyOrderPastValuesOfAnyShape) {
  const auto tree = JSONDecoder().decode<Tree>(
      "\xEF\xBB\xBF"  // a byte order mark
      R"( {"crown":{"x":[{"v":1}],"v":"c"}, "title":{"leaves":[{}]}, "a\"b":[[],{}],
           "i":"x", "identifier":"y",
           "leaves" : [ {"x":{"v":2}, "v":"l0"} , {"v":"l1","v":"again"} ],
           "big":9223372036854775808, "id":"first", "id":"second"} )");
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->identifier, "first");
  ASSERT_EQ(tree->leaves.size(), 2U);
  EXPECT_EQ(*tree->leaves[0].value + *tree->leaves[1].value, "l0l1");
  EXPECT_EQ(tree->crown->value, "c");
}

}  // namespace
}  // namespace quillbay::platform
