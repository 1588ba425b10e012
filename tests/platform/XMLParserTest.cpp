#include <QuillbayPlatform/XMLParser.h>
#include <gtest/gtest.h>

#include <string>

namespace quillbay::platform {
namespace {

class Recorder final : public XMLParserDelegate {
 public:
  void didStartElement(std::string_view name) override { events_ += "<" + std::string(name) + ">"; }
  void didEndElement(std::string_view name) override { events_ += "</" + std::string(name) + ">"; }
  void foundCharacters(std::string_view text) override { events_ += "[" + std::string(text) + "]"; }
  const std::string& events() const { return events_; }

 private:
  std::string events_;
};

TEST(XMLParser, ReportsTheTextBetweenTwoTagsInOnePiece) {
  struct Case {
    const char* name;
    std::string document;
    bool isWellFormed;
    std::string events;
  };
  const Case cases[] = {
      {"entities", "<a>x &amp; y&#10;&lt;z&#x2014;</a>", true, "<a>[x & y\n<z\xE2\x80\x94]</a>"},
      {"line breaks", "<a>1\r\n2\n3</a>", true, "<a>[1\n2\n3]</a>"},
      {"comment, section, instruction", "<a>1<!-- c -->2<![CDATA[<3>]]><?p i?>4</a>", true,
       "<a>[12<3>4]</a>"},
      {"text around an element", "<a>1<b/>2</a>", true, "<a>[1]<b></b>[2]</a>"},
      {"prefix kept", "<n:a xmlns:n='u'><n:b/></n:a>", true, "<n:a><n:b></n:b></n:a>"},
      {"other encoding", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", true,
       "<a>[\xC3\xA9]</a>"},
      {"document type", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", false, ""},
      {"cut off", "<a><b>1</b><c>2", false, "<a><b>[1]</b><c>[2]"},
      {"unknown entity", "<a>1&e;2</a>", false, "<a>[1]"},
      {"wrong end tag", "<a><b>1</a></b>", false, "<a><b>[1]"},
      {"not UTF-8", "<a>\xFF</a>", false, "<a>"},
      {"empty", "", false, ""},
      {"no XML", "503 Slow Down", false, ""},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    Recorder recorder;
    EXPECT_EQ(XMLParser(row.document, recorder).parse(), row.isWellFormed);
    EXPECT_EQ(recorder.events(), row.events);
  }
}

TEST(XMLParser, SurvivesDeepNesting) {
  constexpr std::size_t kDepth = 100'000;
  std::string document;
  for (std::size_t i = 0; i < kDepth; ++i) document += "<a>";
  for (std::size_t i = 0; i < kDepth; ++i) document += "</a>";
  Recorder recorder;
  EXPECT_TRUE(XMLParser(document, recorder).parse());
  EXPECT_EQ(recorder.events(), document);
}

}  // namespace
}  // namespace quillbay::platform
