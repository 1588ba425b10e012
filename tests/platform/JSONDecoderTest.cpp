#include <QuillbayPlatform/JSONDecoder.h>
#include <gtest/gtest.h>

#include <limits>

namespace quillbay::platform {
namespace {

using Kind = JSONError::Kind;

class Color {
 public:
  static std::optional<Color> fromRawValue(std::string_view text) {
    if (text != "red") return std::nullopt;
    return Color();
  }
  std::string_view rawValue() const { return "red"; }
};

struct Leaf {
  std::string name;

  static std::expected<Leaf, ErrorPtr> decode(JSONReader& reader) {
    auto name = reader.required<std::string>("name");
    return reader.finish([&] { return Leaf{std::move(*name)}; });
  }
};

/// Reads one member, "v", of any type by any rule.
template <class T, char kRule>
struct One {
  std::optional<T> value;

  static std::expected<One, ErrorPtr> decode(JSONReader& reader) {
    std::optional<T> value;
    if constexpr (kRule == 'r') value = reader.required<T>("v");
    if constexpr (kRule == 'o') value = reader.optional<T>("v");
    if constexpr (kRule == 't') value = reader.tolerant<T>("v");
    return reader.finish([&] { return One{std::move(value)}; });
  }
};

template <class T>
using Required = One<T, 'r'>;
template <class T>
using Optional = One<T, 'o'>;
template <class T>
using Tolerant = One<T, 't'>;

struct Tree {
  std::string identifier;
  std::vector<Leaf> leaves;
  std::optional<Leaf> crown;
  std::optional<std::string> title;

  static std::expected<Tree, ErrorPtr> decode(JSONReader& reader) {
    auto identifier = reader.required<std::string>("id");
    auto leaves = reader.required<std::vector<Leaf>>("leaves");
    auto crown = reader.optional<Leaf>("crown");
    auto title = reader.tolerant<std::string>("title");
    return reader.finish([&] {
      return Tree{std::move(*identifier), std::move(*leaves), std::move(crown), std::move(title)};
    });
  }
};

/// The outcome as one text: "ok", or kind and key path of the failure.
template <class T>
std::string outcome(std::string_view text, JSONDecoder decoder = JSONDecoder()) {
  const auto record = decoder.decode<T>(text);
  if (record) return "ok";
  const auto error = std::dynamic_pointer_cast<const JSONError>(record.error());
  if (!error) return "strange error";
  constexpr const char* kNames[] = {"missingKey",   "nullValue",     "wrongType",
                                    "corruptValue", "invalidSyntax", "unwritable"};
  return std::string(kNames[static_cast<int>(error->kind())]) + " at " + error->keyPath();
}

template <class T>
std::optional<T> requiredValue(const std::string& json) {
  const auto record = JSONDecoder().decode<Required<T>>(R"({"v":)" + json + "}");
  return record ? record->value : std::nullopt;
}

TEST(JSONDecoder, EachRuleTreatsEachFlawAsItPromises) {
  struct Case {
    const char* text;
    const char* required;
    const char* optional;
  };
  const Case cases[] = {
      {R"({"v":"https://a.example/"})", "ok", "ok"},
      {R"({})", "missingKey at v", "ok"},
      {R"({"v":null})", "nullValue at v", "ok"},
      {R"({"v":1})", "wrongType at v", "wrongType at v"},
      {R"({"v":{"name":"x"}})", "wrongType at v", "wrongType at v"},
      {R"({"v":["https://a.example/"]})", "wrongType at v", "wrongType at v"},
      {R"({"v":""})", "corruptValue at v", "corruptValue at v"},
      {R"({"v":"a b"})", "corruptValue at v", "corruptValue at v"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(outcome<Required<URL>>(row.text), row.required);
    EXPECT_EQ(outcome<Optional<URL>>(row.text), row.optional);
    EXPECT_EQ(outcome<Tolerant<URL>>(row.text), "ok");
  }
}

TEST(JSONDecoder, TakesNoTypeForAnother) {
  EXPECT_EQ(outcome<Required<bool>>(R"({"v":1})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<bool>>(R"({"v":"true"})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<std::string>>(R"({"v":true})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<std::int64_t>>(R"({"v":"5"})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<Date>>(R"({"v":"5"})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<Leaf>>(R"({"v":"x"})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<std::vector<Leaf>>>(R"({"v":{"name":"x"}})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<Color>>(R"({"v":0})"), "wrongType at v");
  EXPECT_EQ(outcome<Required<Color>>(R"({"v":"Red"})"), "corruptValue at v");
  EXPECT_EQ(outcome<Required<Color>>(R"({"v":"red"})"), "ok");
}

TEST(JSONDecoder, IntegersHaveNoFractionNoExponentAndFit) {
  EXPECT_EQ(requiredValue<std::int64_t>("0"), 0);
  EXPECT_EQ(requiredValue<std::int64_t>("-9223372036854775808"),
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(requiredValue<std::int64_t>("9223372036854775807"),
            std::numeric_limits<std::int64_t>::max());
  for (const char* number :
       {"9223372036854775808", "1000000000000000000000000", "1.5", "1.0", "1e3", "-1E2", "1e400"}) {
    SCOPED_TRACE(number);
    const std::string text = R"({"v":)" + std::string(number) + "}";
    EXPECT_EQ(outcome<Required<std::int64_t>>(text), "wrongType at v");
    EXPECT_EQ(outcome<Tolerant<std::int64_t>>(text), "ok");
    EXPECT_EQ(outcome<Tolerant<std::string>>(text), "ok");
    EXPECT_EQ(outcome<Leaf>(R"({"ignored":)" + std::string(number) + R"(,"name":"x"})"), "ok");
  }
}

TEST(JSONDecoder, DatesCountFromTheYearThatThePolicyNames) {
  const char* text = R"({"v":60.5})";
  const JSONDecoder from1970(JSONDatePolicy::secondsSince1970);
  EXPECT_EQ(secondsSince1970(*from1970.decode<Required<Date>>(text)->value), 60.5);
  EXPECT_EQ(secondsSince2001(*JSONDecoder().decode<Required<Date>>(text)->value), 60.5);
  EXPECT_EQ(secondsSince2001(*requiredValue<Date>("-1e3")), -1000);
  EXPECT_EQ(outcome<Required<Date>>(R"({"v":1e400})"), "corruptValue at v");
  EXPECT_EQ(outcome<Tolerant<Date>>(R"({"v":1e400})"), "ok");
}

TEST(JSONDecoder, ReadsTextWithEveryEscapeAndRefusesHalfCharacters) {
  EXPECT_EQ(requiredValue<std::string>(R"("\"\\\/\b\f\n\r\té")"), "\"\\/\b\f\n\r\t\xC3\xA9");
  EXPECT_EQ(requiredValue<std::string>(R"("a\u0000b")"), std::string("a\0b", 3));
  EXPECT_EQ(requiredValue<std::string>(R"("\ud83d\ude00 )"
                                       "\xF0\x9F\x98\x80\""),
            "\xF0\x9F\x98\x80 \xF0\x9F\x98\x80");
  EXPECT_EQ(requiredValue<std::string>('"' + std::string(100'000, 'x') + R"(\n")"),
            std::string(100'000, 'x') + '\n');
  for (const char* text : {R"({"v":"\ud83d"})", R"({"v":"\ude00"})", R"({"v":"\ud83dx"})",
                           R"({"v":"\ud83d\u0041"})"}) {
    EXPECT_EQ(outcome<Required<std::string>>(text), "corruptValue at v") << text;
    EXPECT_EQ(outcome<Tolerant<std::string>>(text), "ok") << text;
  }
}

TEST(JSONDecoder, RefusesATextWithAnyFlawEvenWhereNothingIsRead) {
  const std::string deepest = std::string(63, '[') + std::string(63, ']');
  ASSERT_EQ(outcome<Leaf>(R"({"name":"x","y":)" + deepest + "}"), "ok");
  const std::string texts[] = {
      "", " ", "nonsense", "{", R"({"name")", R"({"name":)", R"({"name":"x")", R"({"name":"x"]})",
      R"({"name":"x",})", R"({"name":"x"} x)", R"({"name":"x"}})", R"({"name":"x"}{})",
      R"({"name":"x" "y":1})", R"({"name":"x",,"y":1})", R"({"name":"x",y:1})",
      R"({"name":"x","y"})", R"({"name":"x","y":})", R"({"name":"x","y":[1,]})",
      R"({"name":"x","y":[1 2]})", R"({"name":"x","y":[})", R"({"name":"x","y":{]})",
      R"({"name":"x","y":[{}})", R"({"name":"x","y":{})", R"({"name":"x","y":nul})",
      R"({"name":"x","y":truee})", R"({"name":"x","y":01})", R"({"name":"x","y":1.})",
      R"({"name":"x","y":.5})", R"({"name":"x","y":-})", R"({"name":"x","y":1e})",
      R"({"name":"x","y":+1})", R"({"name":"x","y":NaN})", R"({"name":"x","y":"\x"})",
      R"({"name":"x","y":"\u12g4"})", R"({"name":"x","\q":1})", R"({"name":"x","y":'z'})",
      R"({"name":"x","y":"a"b})", R"({"name":"x","y":"open)", "{\"name\":\"x\",\"y\":\"\n\"}",
      "{\"name\":\"x\",\"y\":\"\xFF\"}", "{\"name\":\"x\xC3\"}",
      // A surrogate as three bytes is no UTF-8.
      "{\"name\":\"\xED\xA0\x80\"}",
      // One level deeper than allowed.
      R"({"name":"x","y":[)" + deepest + "]}",
      R"({"name":"x","y":)" + std::string(1'000'000, '[') + std::string(1'000'000, ']') + "}",
      std::string(100'000, '{'), std::string(R"({"name":"x"})") + '\0'};
  for (const std::string& text : texts) {
    EXPECT_EQ(outcome<Leaf>(text), "invalidSyntax at ") << text.substr(0, 80);
    EXPECT_EQ(outcome<Tolerant<std::string>>(text), "invalidSyntax at ") << text.substr(0, 80);
  }
}

TEST(JSONDecoder, RootMustBeAnObject) {
  for (const char* text : {"[]", R"([{"name":"x"}])", R"("x")", "5", "true", "null"}) {
    EXPECT_EQ(outcome<Leaf>(text), "wrongType at ") << text;
  }
  EXPECT_EQ(outcome<Leaf>("5 5"), "invalidSyntax at ");
  EXPECT_EQ(outcome<Leaf>("[] []"), "invalidSyntax at ");
  EXPECT_EQ(outcome<Leaf>("\xEF\xBB\xBF {\"name\" : \"x\"}\r\n"), "ok");
}

TEST(JSONDecoder, NamesTheWholePathToTheFirstFailure) {
  struct Case {
    const char* text;
    const char* outcome;
  };
  const Case cases[] = {
      {R"({"id":"1","leaves":[{"name":"a"},{"name":"b"},{"name":3}]})",
       "wrongType at leaves.2.name"},
      {R"({"id":"1","leaves":[{"name":"a"},{}]})", "missingKey at leaves.1.name"},
      {R"({"id":"1","leaves":[{"name":"a"},5,{}]})", "wrongType at leaves.1"},
      {R"({"id":"1","leaves":[null]})", "nullValue at leaves.0"},
      {R"({"id":"1","leaves":[[]]})", "wrongType at leaves.0"},
      {R"({"id":"1","leaves":[],"crown":{"name":null}})", "nullValue at crown.name"},
      {R"({"crown":5,"leaves":5,"id":5})", "wrongType at id"},
  };
  for (const Case& row : cases) EXPECT_EQ(outcome<Tree>(row.text), row.outcome) << row.text;
}

TEST(JSONDecoder, ReadsMembersInAnyOrderPastValuesOfAnyShape) {
  const auto tree = JSONDecoder().decode<Tree>(
      R"( {"crown":{"x":[{"name":1}],"name":"c"}, "title":{"leaves":[{}]}, "a\"b":[[],{}],
           "leaves" : [ {"x":{"name":2}, "name":"l0"} , {"name":"l1","name":"again"} ],
           "id":"first", "id":"second", "ids":"x", "i":"x"} )");
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->identifier, "first");
  ASSERT_EQ(tree->leaves.size(), 2U);
  EXPECT_EQ(tree->leaves[0].name, "l0");
  EXPECT_EQ(tree->leaves[1].name, "l1");
  EXPECT_EQ(tree->crown->name, "c");
  EXPECT_FALSE(tree->title);
}

TEST(JSONDecoder, ToleratesARecordThatFails) {
  EXPECT_EQ(outcome<Tolerant<Leaf>>(R"({"v":{"name":5}})"), "ok");
  EXPECT_EQ(outcome<Tolerant<std::vector<Leaf>>>(R"({"v":[{"name":"x"},{}]})"), "ok");
}

struct AfterFailure {
  static std::expected<AfterFailure, ErrorPtr> decode(JSONReader& reader) {
    EXPECT_TRUE(reader.required<std::string>("a"));
    EXPECT_FALSE(reader.required<std::string>("missing"));
    EXPECT_FALSE(reader.required<std::string>("a"));
    EXPECT_FALSE(reader.tolerant<std::string>("a"));
    bool isMade = false;
    auto result = reader.finish([&] {
      isMade = true;
      return AfterFailure();
    });
    EXPECT_FALSE(isMade);
    return result;
  }
};

TEST(JSONDecoder, YieldsNothingMoreAfterAFailure) {
  EXPECT_EQ(outcome<AfterFailure>(R"({"a":"x"})"), "missingKey at missing");
}

struct Outer {
  static std::expected<Outer, ErrorPtr> decode(JSONReader& reader) {
    auto inner = reader.required<std::string>("text");
    EXPECT_EQ(outcome<Leaf>(*inner), "ok");
    auto name = reader.required<std::string>("name");
    return reader.finish([&] { return Outer(); });
  }
};

TEST(JSONDecoder, MayBeUsedWhileARecordIsBeingRead) {
  EXPECT_EQ(outcome<Outer>(R"({"text":"{\"name\":\"inner\"}","name":"outer"})"), "ok");
}

}  // namespace
}  // namespace quillbay::platform
