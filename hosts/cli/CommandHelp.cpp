#include "CommandHelp.h"

#include "hosts/common/NetworkOptions.h"

namespace quillbay::cli {
namespace {

constexpr std::string_view kProgramUsage =
    "Shares files through Quillbay Cloud: prints a link, then uploads the files.\n"
    "\n"
    "Usage: quillbay share [options] FILE...\n"
    "       quillbay list [options]\n"
    "       quillbay resume [options] SHARE | --last\n"
    "       quillbay delete [options] SHARE | --last\n"
    "       quillbay forget SHARE | --expired\n"
    "       quillbay help [COMMAND] | --help | --version\n"
    "\n"
    "SHARE is the link, or the session's identifier. 'quillbay help COMMAND' lists\n"
    "the options of a command.\n";

constexpr std::string_view kShareUsage =
    "Shares files: prints a link, then uploads them.\n"
    "\n"
    "Usage: quillbay share [options] FILE...\n"
    "\n"
    "Options:\n";

constexpr std::string_view kShareHelp =
    "\n"
    "WHEN is a time from now (30m, 12h, 7d, 2mo), never, or an instant such as\n"
    "2030-01-31T18:00:00Z.\n"
    "\n"
    "The link is alone on standard output as soon as the session exists; the\n"
    "command ends when everything is uploaded. To use the link before that, read it\n"
    "from a pipe: quillbay share FILE | while read -r link; do ...; done\n"
    "On a terminal, standard error shows how far the upload is.\n"
    "\n"
    "--zip makes its ZIP files in TMPDIR and removes them at the end; a share with them\n"
    "cannot be continued later. Links and devices in a folder are left out.\n"
    "\n"
    "When the network fails, the upload goes on under the same link: up to 5 tries\n"
    "in a row, after 1, 2, 4, 8 and 16 seconds.\n"
    "\n"
    "Ctrl-C cancels and deletes the session; a second one ends at once. A share that\n"
    "fails deletes its session too, unless standard error is a terminal: then it can\n"
    "be continued with 'quillbay resume'. --keep leaves it in all cases.\n"
    "\n"
    "'quillbay list' shows the shares, and 'quillbay delete' takes one back. To do\n"
    "that with --no-history, keep \"id\" and \"token\" of the first line of --json.\n";

constexpr std::string_view kResumeUsage =
    "Continues a share under its link: uploads the files that have not arrived.\n"
    "\n"
    "Usage: quillbay resume [options] SHARE | --last\n"
    "\n"
    "Options:\n";

constexpr std::string_view kResumeHelp =
    "\n"
    "SHARE is the link of an unfinished share, or its session. The files must be\n"
    "where they were, with the same content. Neither Ctrl-C nor a failure deletes\n"
    "the share.\n";

constexpr std::string_view kListUsage =
    "Lists the shares of this user, the newest first.\n"
    "\n"
    "Usage: quillbay list [options]\n"
    "\n"
    "Options:\n";

constexpr std::string_view kForgetUsage =
    "Removes shares from the history. Their links go on working, but can neither be\n"
    "continued nor deleted without their tokens.\n"
    "\n"
    "Usage: quillbay forget SHARE | --expired\n"
    "\n"
    "Options:\n";

constexpr std::string_view kDeleteUsage =
    "Deletes a share: its link stops working.\n"
    "\n"
    "Usage: quillbay delete [options] SHARE | --last\n"
    "       quillbay delete [options] SESSION --token TOKEN | --token-file FILE\n"
    "\n"
    "Options:\n";

constexpr std::string_view kDeleteHelp =
    "\n"
    "SHARE is the link of a share that 'quillbay list' shows, or its session. For\n"
    "any other, SESSION and TOKEN are \"id\" and \"token\" of the line\n"
    "{\"event\":\"session\",...} that 'quillbay share --json' prints. Other users of\n"
    "this computer can see a token on the command line; in a file they cannot.\n";

constexpr std::string_view kExitStatusHelp =
    "\n"
    "Exit status:\n"
    "  0    the command has done what was asked\n"
    "  1    the run failed\n"
    "  2    the command line cannot be carried out as written; nothing was sent\n"
    "  130  cancelled by Ctrl-C, SIGTERM or SIGHUP\n";

constexpr std::string_view kEnvironmentHelp =
    "\n"
    "Environment:\n"
    "  XDG_STATE_HOME       folder of the history (default ~/.local/state)\n"
    "  https_proxy, all_proxy, no_proxy\n"
    "                       the proxy to use, and hosts to reach without it\n"
    "  NO_COLOR             if not empty, no colours\n";

struct Texts {
  std::string_view command;
  std::string_view beforeOptions;
  std::string_view afterOptions;
};

constexpr Texts kTexts[] = {{"share", kShareUsage, kShareHelp},
                            {"list", kListUsage, ""},
                            {"resume", kResumeUsage, kResumeHelp},
                            {"delete", kDeleteUsage, kDeleteHelp},
                            {"forget", kForgetUsage, ""}};

}  // namespace

std::string programHelp() { return std::string(kProgramUsage) + std::string(kExitStatusHelp); }

std::string commandHelp(std::string_view command, std::string_view options) {
  std::string help;
  for (const Texts& texts : kTexts) {
    if (texts.command != command) continue;
    help.append(texts.beforeOptions).append(options).append(texts.afterOptions);
  }
  help.append(kExitStatusHelp).append(kEnvironmentHelp);
  return help.append(host::RawNetworkOptions::kEnvironmentHelp);
}

}  // namespace quillbay::cli
