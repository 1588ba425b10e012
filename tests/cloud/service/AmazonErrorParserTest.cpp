#include <QuillbayCloud/service/AmazonErrorParser.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::AmazonError;
using cloud::AmazonErrorParser;

TEST(AmazonErrorParser, FindsCodeAndMessageWhereverTheyStandAndNothingWithoutBoth) {
  const AmazonError refusal("C", "a b");
  const std::tuple<const char*, const char*, std::optional<AmazonError>> rows[] = {
      {"among other elements and white space",
       "<?xml version=\"1.0\"?>\n<E>\n <Code>C</Code>\n <Message>a b</Message>\n <Id>x</Id> "
       "t\n</E>",
       refusal},
      {"in any depth and order", "<a><b><Message>a b</Message></b><Code>C</Code></a>", refusal},
      {"the last of two",
       "<E><Code>X</Code><Message>Y</Message><Code>C</Code><Message>a b</Message></E>", refusal},
      {"a text cut off", "<E><Code>C</Code><Message>a b", refusal},
      {"entities", "<E><Code>C</Code><Message>a &amp; b &lt; c</Message></E>",
       AmazonError("C", "a & b < c")},
      {"before the document broke", "<E><Code>C</Code><Message>a b</Message><oops", refusal},
      {"no message", "<E><Code>C</Code></E>", {}},
      {"empty message", "<E><Code>C</Code><Message></Message></E>", {}},
      {"other names", "<E xmlns:s=\"u\"><code>C</code><s:Message>m</s:Message></E>", {}},
      {"defined entities",
       "<!DOCTYPE E [<!ENTITY a 'x'>]><E><Code>&a;</Code><Message>&a;</Message></E>",
       {}},
      {"no XML", "502 Bad Gateway", {}},
      {"empty", "", {}},
  };
  for (const auto& [name, xml, error] : rows) {
    EXPECT_EQ(AmazonErrorParser::create(xml)->parse(), error) << name;
  }
}

TEST(AmazonError, IsAlsoReadFromJSON) {
  EXPECT_EQ(decoded<AmazonError>(R"({"type":"AccessDenied","message":"Access Denied"})"),
            AmazonError("AccessDenied", "Access Denied"));
  EXPECT_FALSE(decoded<AmazonError>(R"({"type":"AccessDenied"})"));
}

}  // namespace
}  // namespace quillbay::test
