#include "hosts/cli/CommandLine.h"

#include <gtest/gtest.h>

#include <map>

namespace quillbay::cli {
namespace {

using Arguments = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

const platform::Date kNow = platform::dateFromSecondsSince1970(1'700'000'000);

std::expected<Command, CommandLineEnd> parse(const Arguments& arguments,
                                             const Variables& variables = {}) {
  const auto environment = [&](const char* name) -> std::optional<std::string> {
    return variables.contains(name) ? std::optional(variables.at(name)) : std::nullopt;
  };
  return parseCommandLine(arguments, environment, kNow);
}

ShareOptions share(const Arguments& arguments, const Variables& variables = {}) {
  const auto command = parse(arguments, variables);
  EXPECT_TRUE(command) << command.error().text;
  return command ? std::get<ShareOptions>(*command) : ShareOptions();
}

TEST(CommandLine, fileNamesAreTakenAsTheyAre) {
  EXPECT_EQ(share({"share", "a", "[b,c]", "delete", "share", "-", ""}).files,
            (Arguments{"a", "[b,c]", "delete", "share", "-", ""}));
  const ShareOptions options = share({"share", "a", "--keep", "--", "--keep", "--", "-x"});
  EXPECT_EQ(options.files, (Arguments{"a", "--keep", "--", "-x"}));
  EXPECT_TRUE(options.keep);
}

TEST(CommandLine, lettersCanBeBundledAndHoldTheirValue) {
  const ShareOptions options =
      share({"share", "-qt", "T", "f", "-e30m", "-0ldirect", "--files-from", "-", "--", "-q"});
  EXPECT_EQ(options.common.verbosity, Verbosity::quiet);
  EXPECT_EQ(options.title, "T");
  EXPECT_EQ(options.expirationDate, kNow + std::chrono::minutes(30));
  EXPECT_EQ(options.separator, PathSeparator::null);
  EXPECT_EQ(options.linkType, cloud::SessionLinkType::directLink);
  EXPECT_EQ(options.files, (Arguments{"f", "-q"}));
}

TEST(CommandLine, optionsWinOverTheEnvironmentAndTheEnvironmentOverTheDefaults) {
  const Variables variables{{"QUILLBAY_CONNECT_TO", " a:1:b:2, :3:c:4\n"},
                            {"QUILLBAY_CACERT", "ca.pem"},
                            {"ALL_PROXY", "http://proxy"}};
  const ShareOptions silent = share({"share", "file"}, variables);
  EXPECT_FALSE(silent.title || silent.expirationDate || silent.common.instanceIdentifier);
  EXPECT_EQ(silent.linkType, cloud::SessionLinkType::page);
  EXPECT_EQ(silent.retryCount, 5);
  EXPECT_EQ(silent.common.network.connectTo, (Arguments{"a:1:b:2", ":3:c:4"}));
  EXPECT_EQ(silent.common.network.caBundlePath, "ca.pem");
  EXPECT_TRUE(silent.common.network.usesProxy);

  const ShareOptions outspoken =
      share({"share", "--title=", "--expires", "30m", "--connect-to", "x:1:y:2",
             "--connect-to=:1:[::1]:2", "--cacert", "other.pem", "--retry", "0", "file"},
            variables);
  EXPECT_EQ(outspoken.title, "");
  EXPECT_EQ(outspoken.retryCount, 0);
  EXPECT_EQ(outspoken.expirationDate, kNow + std::chrono::minutes(30));
  EXPECT_EQ(outspoken.common.network.connectTo, (Arguments{"x:1:y:2", ":1:[::1]:2"}));
  EXPECT_EQ(outspoken.common.network.caBundlePath, "other.pem");
}

TEST(CommandLine, whatCannotBeCarriedOutIsAUsageErrorThatNamesIt) {
  const struct {
    const char* name;
    Arguments arguments;
    /// Part of what the person reads.
    const char* message;
    Variables variables = {};
  } rows[] = {
      {"nothing", {}, "which command"},
      {"helpForWhat", {"help", "send"}, "'send'"},
      {"command", {"send"}, "'send'"},
      {"noFile", {"share"}, "which files"},
      {"option", {"share", "--titel", "x", "f"}, "'--titel'"},
      {"visiblePassword", {"share", "--password", "x", "f"}, "'--password'"},
      {"controlCharacters", {"share", "--\x1b[2J", "f"}, "'--\\x1b[2J'"},
      {"missingValue", {"share", "f", "--title"}, "--title needs a value: TEXT"},
      {"valueOfFlag", {"share", "--keep=no", "f"}, "--keep takes no value"},
      {"twice", {"share", "--title", "a", "--title", "b", "f"}, "--title is given twice"},
      {"fileWithDash", {"share", "-dash.txt"}, "'./-dash.txt'"},
      {"letterInBundle", {"share", "-qx", "f"}, "unknown option '-x'"},
      {"missingValueOfLetter", {"share", "f", "-qt"}, "-t needs a value: TEXT"},
      {"letterAndName", {"share", "-tx", "--title", "x", "f"}, "--title is given twice"},
      {"nullWithoutList", {"share", "-0", "f"}, "--null needs --files-from"},
      {"twoReaders", {"share", "--files-from=-", "--password-file=-"}, "cannot both read"},
      {"twoVerbosities", {"share", "--verbose", "--quiet", "f"}, "exclude each other"},
      {"twoPasswords", {"share", "--ask-password", "--password-file", "p", "f"}, "exclude"},
      {"link", {"share", "--link", "Page", "f"}, "'Page'"},
      {"expires", {"share", "--expires", "0m", "f"}, "--expires: '0m'"},
      {"unprotected", {"share", "--link", "direct", "--ask-password", "f"}, "direct link"},
      {"titleNotUTF8", {"share", "--title", "\xff", "f"}, "--title is not UTF-8"},
      {"emptyInstance", {"share", "--instance=", "f"}, "--instance is empty"},
      {"route", {"share", "--connect-to", "a:1", "f"}, "--connect-to: 'a:1'"},
      {"environment", {"share", "f"}, "_TO: 'a'", {{"QUILLBAY_CONNECT_TO", "a b:1:c:2"}}},
      {"retry", {"share", "--retry", "100", "f"}, "'100'"},
      {"retryText", {"share", "--retry", "-1", "f"}, "'-1'"},
      {"noShare", {"delete", "--token", "t"}, "which share"},
      {"twoShares", {"delete", "a", "b", "--token", "t"}, "'b'"},
      {"lastAndToken", {"delete", "--last", "--token", "t"}, "exclude"},
      {"lastAndLink", {"resume", "--last", "s"}, "'s' and --last exclude"},
      {"resumeWhat", {"resume"}, "which share"},
      {"forgetWhat", {"forget"}, "or --expired"},
      {"listOperand", {"list", "x"}, "no names"},
      {"twoTokens", {"delete", "s", "--token", "t", "--token-file", "f"}, "exclude"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto command = parse(row.arguments, row.variables);
    ASSERT_FALSE(command);
    EXPECT_EQ(command.error().status, ExitStatus::usage);
    EXPECT_TRUE(command.error().text.contains(row.message)) << command.error().text;
  }
}

TEST(CommandLine, helpTellsTheExitStatusesAndWinsOverErrorsBehindIt) {
  const Arguments rows[] = {{"--help"},          {"-h"},           {"help"},
                            {"help", "delete"},  {"share", "-h"},  {"share", "--help", "--bogus"},
                            {"resume", "-h"},    {"help", "list"}, {"help", "forget"},
                            {"delete", "--help"}};
  for (const Arguments& arguments : rows) {
    const auto command = parse(arguments);
    ASSERT_FALSE(command);
    EXPECT_EQ(command.error().status, ExitStatus::success);
    EXPECT_TRUE(command.error().text.contains("  130 ")) << command.error().text;
  }
}

}  // namespace
}  // namespace quillbay::cli
