#include "ErrorMessage.h"

#include <string_view>

#include "CommandLine.h"
#include "Console.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

/// As one word of a POSIX shell. The service chooses these texts: they must not drive the terminal.
std::string shellWord(std::string_view text) {
  const std::string quoted = host::inQuotes(text);
  std::string word = "'";
  for (const char character : std::string_view(quoted).substr(1, quoted.size() - 2)) {
    word += character == '\'' ? "'\\''" : std::string(1, character);
  }
  return word + "'";
}

}  // namespace

void printFailure(Console& console, const cloud::QuillbayCloudError& error,
                  const host::FailureContext& context) {
  const auto advice = host::FailureAdvice::of(error, context, host::FailureAudience::terminal);
  const std::string detail = advice.detail.empty() ? "" : " (" + advice.detail + ")";
  console.printError(advice.whatFailed + detail);
  console.printError(advice.whatToDo);
}

std::string deletionCommand(const cloud::Session& session, const std::string& instanceIdentifier) {
  const std::string token = session.token().value_or("");
  std::string command = "quillbay delete ";
  if (instanceIdentifier != kDefaultInstance) {
    command += "--instance " + shellWord(instanceIdentifier) + " ";
  }
  command +=
      (token.empty() ? "--token '' -- " : "--token-file - -- ") + shellWord(session.identifier());
  return token.empty() ? command : "printf '%s\\n' " + shellWord(token) + " | " + command;
}

}  // namespace quillbay::cli
