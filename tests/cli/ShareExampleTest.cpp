#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using ShareExample = ProgramTest;

TEST_F(ShareExample, printsTheLinkAndEndsWhenTheFileHasArrived) {
  ChildProcess program(reaching({.program = QUILLBAY_EXAMPLE, .arguments = {file_}}));
  EXPECT_EQ(program.waitForExit(), 0) << program.error();
  EXPECT_EQ(program.output(), link_);
  EXPECT_TRUE(hasCalled("finalize item-1"));
}

}  // namespace
}  // namespace quillbay::test
