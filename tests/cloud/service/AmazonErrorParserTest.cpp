#include <QuillbayCloud/service/AmazonErrorParser.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::AmazonError;
using cloud::AmazonErrorParser;

const AmazonError kDenied("AccessDenied", "Access Denied");

struct Document {
  const char* name;
  const char* xml;
  std::optional<AmazonError> error;
};

const Document kDocuments[] = {
    {"BothAmongOtherElementsAndWhiteSpace",
     "<?xml version=\"1.0\"?>\n<Error>\n <Code>AccessDenied</Code>\n <Message>Access "
     "Denied</Message>\n <HostId>x</HostId> tail\n</Error>",
     kDenied},
    {"TextsAnywhereInTheDocument",
     "<a><b><Message>Access Denied</Message></b><Code>AccessDenied</Code></a>", kDenied},
    {"TheLastOfTwoCodes",
     "<E><Code>X</Code><Message>Access Denied</Message><Code>AccessDenied</Code></E>", kDenied},
    {"ResolvedEntitiesWhole", "<E><Code>C</Code><Message>a &amp; b &lt; c</Message></E>",
     AmazonError("C", "a & b < c")},
    {"WhatCameBeforeTheDocumentBroke",
     "<E><Code>AccessDenied</Code><Message>Access Denied</Message><oops", kDenied},
    {"NothingWithoutMessage", "<E><Code>C</Code></E>", {}},
    {"NothingForAnEmptyMessage", "<E><Code>C</Code><Message></Message></E>", {}},
    {"NothingForOtherNames", "<E xmlns:s=\"u\"><code>C</code><s:Message>m</s:Message></E>", {}},
    {"NothingForADocumentThatDefinesEntities",
     "<!DOCTYPE E [<!ENTITY a 'x'>]><E><Code>&a;</Code><Message>&a;</Message></E>",
     {}},
    {"NothingForNoXMLAtAll", "502 Bad Gateway", {}},
    {"NothingForAnEmptyBody", "", {}},
};

class AmazonErrorParsing : public testing::TestWithParam<Document> {};
INSTANTIATE_TEST_SUITE_P(Rows, AmazonErrorParsing, testing::ValuesIn(kDocuments), nameOfRow);

TEST_P(AmazonErrorParsing, Yields) {
  EXPECT_EQ(AmazonErrorParser::create(GetParam().xml)->parse(), GetParam().error);
}

TEST(AmazonError, DescribesItselfByItsMessageAndReadsFromJSON) {
  const auto error = decoded<AmazonError>(R"({"type":"AccessDenied","message":"Access Denied"})");
  ASSERT_TRUE(error);
  EXPECT_EQ(*error, kDenied);
  EXPECT_EQ(error->errorDescription(), "Access Denied");
  EXPECT_FALSE(decoded<AmazonError>(R"({"type":"AccessDenied"})"));
}

}  // namespace
}  // namespace quillbay::test
