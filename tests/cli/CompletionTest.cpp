#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class Completion : public ProgramTest {
 protected:
  std::string complete(const std::string& words) {
    return run(0, "quillbay complete -- " + words)->output();
  }
};

TEST_F(Completion, offersWhatCanStandThere) {
  run(0, "quillbay share file");
  const std::string link = link_ + "\t1 file\n";
  const std::pair<const char*, std::string> rows[] = {
      {"f", "words\nforget\tremove shares from the history\n"},
      {"help li", "words\nlist\tlist the shares\n"},
      {"share a ''", "files\n"},
      {"share -- --zip", "files\n"},
      {"share --zi", "words\n--zip\tpack each folder into a ZIP file and share that\n"},
      {"share -ql d", "words\ndownload\ndirect\n"},
      {"share --link=pa", "words\n--link=page\n"},
      {"share --title -- --password-file x", "files\n"},
      {"share --title ''", "words\n"},
      {"list ''", "words\n"},
      {"delete h", "words\n" + link},
      {"forget ''", "words\n" + link},
      {"delete x", "words\n"},
      {"resume ''", "words\n"},
  };
  for (const auto& [words, reply] : rows) EXPECT_EQ(complete(words), reply) << words;
  run(0, "quillbay delete --last");
  EXPECT_EQ(complete("delete ''"), "words\n");
  EXPECT_EQ(complete("forget ''"), "words\n" + link);
}

TEST_F(Completion, worksInBash) {
  run(0, "quillbay share file");
  folder_.write("bashrc", "PS1='> '; source '" QUILLBAY_BASH "'\n");
  const auto shell = start("bash --noprofile --rcfile bashrc -i </dev/tty >/dev/tty 2>/dev/tty");
  const std::pair<const char*, const char*> rows[] = {
      {"\x15quillbay forg\t", "forget "},
      {"https:\t", "forget https://cloud.quillbay.example/s/session-1 "},
      {"\x15quillbay share --link=do\t", "share --link=download "},
      {"--password-file=bas\t", " --password-file=bashrc "},
      {"bas\t", " bashrc "}};
  for (const auto& [typed, shown] : rows) {
    shell->type(typed);
    EXPECT_TRUE(shell->waitToShow(shown)) << shell->terminal();
  }
}

}  // namespace
}  // namespace quillbay::test
