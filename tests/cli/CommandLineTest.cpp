#include "hosts/cli/CommandLine.h"

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace quillbay::cli {
namespace {

using Arguments = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

const platform::Date kNow = platform::dateFromSecondsSince1970(1'700'000'000);

std::expected<Command, CommandLineEnd> parse(const Arguments& arguments,
                                             const Variables& variables = {}) {
  const auto environment = [&](const char* name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    if (found == variables.end()) return std::nullopt;
    return found->second;
  };
  return parseCommandLine(arguments, environment, kNow);
}

ShareOptions share(const Arguments& arguments, const Variables& variables = {}) {
  const auto command = parse(arguments, variables);
  EXPECT_TRUE(command) << command.error().text;
  if (!command || !std::holds_alternative<ShareOptions>(*command)) return {};
  return std::get<ShareOptions>(*command);
}

TEST(CommandLine, fileNamesAreTakenAsTheyAre) {
  EXPECT_EQ(share({"share", "a", "[b,c]", "delete", "share", "-", ""}).files,
            (Arguments{"a", "[b,c]", "delete", "share", "-", ""}));
  const ShareOptions options = share({"share", "a", "--keep", "--", "--keep", "--", "-x"});
  EXPECT_EQ(options.files, (Arguments{"a", "--keep", "--", "-x"}));
  EXPECT_TRUE(options.keep);
}

TEST(CommandLine, everyShareOptionReachesItsField) {
  const ShareOptions options =
      share({"share", "--title=", "--expires", "30m", "--link=download", "--long-link",
             "--password-file", "-", "--instance", "office", "--keep", "--json", "--connect-to",
             "a:1:b:2", "--connect-to=:1:[::1]:2", "--cacert", "ca.pem", "file"},
            {{"QUILLBAY_CONNECT_TO", "x:1:y:2"}, {"QUILLBAY_CACERT", "other.pem"}});
  EXPECT_EQ(options.title, "");
  EXPECT_EQ(options.expirationDate, kNow + std::chrono::minutes(30));
  EXPECT_EQ(options.linkType, cloud::SessionLinkType::directDownload);
  EXPECT_TRUE(options.longLink);
  EXPECT_EQ(options.passwordFile, "-");
  EXPECT_EQ(options.common.instanceIdentifier, "office");
  EXPECT_TRUE(options.keep);
  EXPECT_EQ(options.common.mode, OutputMode::json);
  EXPECT_EQ(options.common.network.connectTo, (Arguments{"a:1:b:2", ":1:[::1]:2"}));
  EXPECT_EQ(options.common.network.caBundlePath, "ca.pem");
}

TEST(CommandLine, withoutOptionsTheDefaultsAndTheEnvironmentHold) {
  const ShareOptions options =
      share({"share", "file"},
            {{"QUILLBAY_CONNECT_TO", " a:1:b:2, :3:c:4\n"}, {"QUILLBAY_CACERT", "ca.pem"}});
  EXPECT_EQ(options.title, std::nullopt);
  EXPECT_EQ(options.expirationDate, std::nullopt);
  EXPECT_EQ(options.linkType, cloud::SessionLinkType::page);
  EXPECT_EQ(options.common.instanceIdentifier, "quillbay-cli");
  EXPECT_EQ(options.common.mode, OutputMode::plain);
  EXPECT_EQ(options.common.network.connectTo, (Arguments{"a:1:b:2", ":3:c:4"}));
  EXPECT_EQ(options.common.network.caBundlePath, "ca.pem");
}

TEST(CommandLine, deleteTakesOneSessionAndItsToken) {
  const auto command = parse({"delete", "--token", "", "s 1"});
  ASSERT_TRUE(command) << command.error().text;
  const auto& options = std::get<DeleteOptions>(*command);
  EXPECT_EQ(options.sessionIdentifier, "s 1");
  EXPECT_EQ(options.token, "");
}

struct Refusal {
  const char* name;
  Arguments arguments;
  /// Part of what the person reads.
  const char* message;
  Variables variables = {};

  friend void PrintTo(const Refusal& row, std::ostream* out) { *out << row.name; }
};

class RefusedCommandLine : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedCommandLine, isAUsageErrorThatNamesWhatIsWrong) {
  const auto command = parse(GetParam().arguments, GetParam().variables);
  ASSERT_FALSE(command);
  EXPECT_EQ(command.error().status, ExitStatus::usage);
  EXPECT_NE(command.error().text.find(GetParam().message), std::string::npos)
      << command.error().text;
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, RefusedCommandLine,
    testing::Values(
        Refusal{"nothing", {}, "which command"}, Refusal{"noCommand", {"send"}, "'send'"},
        Refusal{"noFile", {"share"}, "which files"},
        Refusal{"unknownOption", {"share", "--titel", "x", "f"}, "'--titel'"},
        Refusal{"shortOption", {"share", "-k", "f"}, "'-k'"},
        Refusal{"controlCharacters", {"share", "--\x1b[2J", "f"}, "'--\\x1b[2J'"},
        Refusal{"missingValue", {"share", "f", "--title"}, "--title needs a value: TEXT"},
        Refusal{"valueOfFlag", {"share", "--keep=no", "f"}, "--keep takes no value"},
        Refusal{"twice", {"share", "--title", "a", "--title", "b", "f"}, "--title is given twice"},
        Refusal{"twoOutputs", {"share", "--json", "--quiet", "f"}, "exclude each other"},
        Refusal{
            "twoPasswords", {"share", "--ask-password", "--password-file", "p", "f"}, "exclude"},
        Refusal{"link", {"share", "--link", "Page", "f"}, "'Page'"},
        Refusal{"expires", {"share", "--expires", "0m", "f"}, "--expires: '0m'"},
        Refusal{"passwordOfDirectLink",
                {"share", "--link", "direct", "--ask-password", "f"},
                "direct link"},
        Refusal{"titleNotUTF8", {"share", "--title", "\xff", "f"}, "--title is not UTF-8"},
        Refusal{"emptyInstance", {"share", "--instance=", "f"}, "--instance is empty"},
        Refusal{"route", {"share", "--connect-to", "a:1", "f"}, "--connect-to: 'a:1'"},
        Refusal{"environmentRoute",
                {"share", "f"},
                "QUILLBAY_CONNECT_TO: 'a'",
                {{"QUILLBAY_CONNECT_TO", "a b:1:c:2"}}},
        Refusal{"noSession", {"delete", "--token", "t"}, "which session"},
        Refusal{"twoSessions", {"delete", "a", "b", "--token", "t"}, "'b'"},
        Refusal{"noToken", {"delete", "s"}, "--token or --token-file"},
        Refusal{"twoTokens", {"delete", "s", "--token", "t", "--token-file", "f"}, "exclude"},
        Refusal{"linkAsSession", {"delete", "https://x/s/1", "--token", "t"}, "is a link"},
        Refusal{"passwordOnCommandLine", {"share", "--password", "x", "f"}, "'--password'"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CommandLine, helpOfEachCommandTellsTheExitStatusesAndWinsOverErrorsBehindIt) {
  for (const Arguments& arguments :
       std::vector<Arguments>{{"--help"}, {"share", "--help", "--bogus"}, {"delete", "--help"}}) {
    const auto command = parse(arguments);
    ASSERT_FALSE(command);
    EXPECT_EQ(command.error().status, ExitStatus::success);
    for (const char* status : {"  0 ", "  1 ", "  2 ", "  130 "}) {
      EXPECT_NE(command.error().text.find(status), std::string::npos) << command.error().text;
    }
  }
}

TEST(CommandLine, helpFitsEightyColumns) {
  for (const char* name : {"share", "delete"}) {
    const std::string text = parse({name, "--help"}).error().text;
    std::size_t columns = 0;
    for (const char character : text) {
      columns = character == '\n' ? 0 : columns + 1;
      ASSERT_LE(columns, 80U) << text;
    }
  }
}

}  // namespace
}  // namespace quillbay::cli
