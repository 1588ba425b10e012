#include <QuillbayPlatform/XMLParser.h>
#include <gtest/gtest.h>

#include <string>

namespace quillbay::platform {
namespace {

class Recorder final : public XMLParserDelegate {
 public:
  void didStartElement(std::string_view name) override { add("<", name, ">"); }
  void didEndElement(std::string_view name) override { add("</", name, ">"); }
  void foundCharacters(std::string_view text) override { add("[", text, "]"); }
  const std::string& events() const { return events_; }

 private:
  void add(const char* before, std::string_view text, const char* after) {
    events_.append(before).append(text).append(after);
  }

  std::string events_;
};

TEST(XMLParser, ReportsTheTextBetweenTwoTagsInOnePieceAndStopsAtAFlaw) {
  struct Case {
    const char* name;
    std::string document;
    bool isWellFormed;
    std::string events;
  };
  const Case cases[] = {
      {"entities", "<a>x &amp; y&#10;&lt;z&#x2014;</a>", true, "<a>[x & y\n<z\xE2\x80\x94]</a>"},
      {"comment and section", "<a>1<!-- c -->2<![CDATA[<3>]]>4</a>", true, "<a>[12<3>4]</a>"},
      {"text around an element", "<a>1<b/>2</a>", true, "<a>[1]<b></b>[2]</a>"},
      {"document type", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", false, ""},
      {"cut off", "<a><b>1</b><c>2", false, "<a><b>[1]</b><c>[2]"},
      {"wrong end tag", "<a><b>1</a></b>", false, "<a><b>[1]"},
      {"no XML", "503 Slow Down", false, ""},
      {"empty", "", false, ""},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    Recorder recorder;
    EXPECT_EQ(XMLParser(row.document, recorder).parse(), row.isWellFormed);
    EXPECT_EQ(recorder.events(), row.events);
  }
}

}  // namespace
}  // namespace quillbay::platform
