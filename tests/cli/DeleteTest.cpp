#include <gtest/gtest.h>

#include <string>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class Delete : public ProgramTest {};

TEST_F(Delete, theTokenComesFromStandardInput) {
  ChildProcess program(reaching({.arguments = {"delete", "session-1", "--token-file", "-"},
                                 .input = std::string(FakeService::token) + "\n"}));
  EXPECT_EQ(program.waitForExit(), 0) << program.error();
  EXPECT_TRUE(hasCalled("delete session-1"));
  EXPECT_EQ(program.output() + program.error(), "");
}

TEST_F(Delete, aRefusalIsAFailureInBothLanguages) {
  ChildProcess program(
      reaching({.arguments = {"delete", "--json", "session-1", "--token", "wrong"}}));
  EXPECT_EQ(program.waitForExit(), 1);
  EXPECT_EQ(events(program.output()).at(0), nlohmann::json({{"event", "error"},
                                                            {"case", "webservice"},
                                                            {"description", "wrong token"},
                                                            {"status", 403}}));
  EXPECT_NE(program.error().find("'session-1' was not deleted"), std::string::npos);
}

TEST_F(Delete, successIsAnEvent) {
  ChildProcess program(
      reaching({.arguments = {"delete", "--json", "session-1", "--token", FakeService::token}}));
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.output(), "{\"event\":\"deleted\"}\n");
}

}  // namespace
}  // namespace quillbay::test
