#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using testing::HasSubstr;

class Completion : public ProgramTest {
 protected:
  std::string complete(std::vector<std::string> words) {
    words.insert(words.begin(), {"complete", "--"});
    return run(0, {.arguments = words})->output();
  }
};

TEST_F(Completion, offersWhatCanStandThere) {
  run(0, {.arguments = {"share", file_}});
  const std::string link = std::string(FakeService::link) + "\t1 file\n";
  const struct {
    std::vector<std::string> words;
    std::string reply;
  } rows[] = {
      {{"f"}, "words\nforget\tremove shares from the history\n"},
      {{"help", "li"}, "words\nlist\tlist the shares\n"},
      {{"share", "a", ""}, "files\n"},
      {{"share", "--", "--zip"}, "files\n"},
      {{"share", "--zi"}, "words\n--zip\tpack each folder into a ZIP file and share that\n"},
      {{"share", "-ql", "d"}, "words\ndownload\ndirect\n"},
      {{"share", "--link=pa"}, "words\n--link=page\n"},
      {{"share", "--title", "--", "--password-file", "x"}, "files\n"},
      {{"share", "--title", ""}, "words\n"},
      {{"list", ""}, "words\n"},
      {{"delete", "h"}, "words\n" + link},
      {{"forget", ""}, "words\n" + link},
      {{"delete", "x"}, "words\n"},
      {{"resume", ""}, "words\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(complete(row.words), row.reply) << row.words.back();
  run(0, {.arguments = {"delete", "--last"}});
  EXPECT_EQ(complete({"delete", ""}), "words\n");
  EXPECT_EQ(complete({"forget", ""}), "words\n" + link);
}

TEST_F(Completion, worksInBash) {
  run(0, {.arguments = {"share", file_}});
  const std::string place = std::filesystem::path(QUILLBAY_PROGRAM).parent_path();
  const std::string startFile = folder_.write(
      "bashrc", "PATH=" + place + ":$PATH; PS1='> '; source '" QUILLBAY_BASH "'; cd '" +
                    folder_.path().string() + "'\n");
  const auto shell = start({.program = "/bin/bash",
                            .arguments = {"--noprofile", "--rcfile", startFile, "-i"},
                            .output = Stream::terminal,
                            .error = Stream::terminal,
                            .input = {}});
  const struct {
    const char* typed;
    std::string shown;
  } rows[] = {{"quillbay forg\t", "forget "},
              {"https:\t", "forget https://cloud.quillbay.example/s/session-1 "},
              {"quillbay share --link=do\t", "share --link=download "},
              {"--password-file=bas\t", " --password-file=bashrc "},
              {"bas\t", " bashrc "}};
  for (const auto& row : rows) {
    shell->type((std::string_view(row.typed).starts_with("quillbay") ? "\x15" : "") +
                std::string(row.typed));
    EXPECT_TRUE(shell->waitToShow(row.shown)) << shell->terminal();
  }
}

}  // namespace
}  // namespace quillbay::test
