#include "ErrorMessage.h"

#include <cstring>
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

std::string failureText(const host::FailureAdvice& advice) {
  return advice.whatFailed + (advice.detail.empty() ? "" : " (" + advice.detail + ")");
}

void printFailure(Console& console, const host::FailureAdvice& advice) {
  console.printError(failureText(advice));
  console.printError(advice.whatToDo);
}

void printOutputError(Console& console, int errorNumber) {
  console.printError(std::string("cannot write to standard output: ") + std::strerror(errorNumber));
}

std::string historyCommand(std::string_view verb, const cloud::Session& session) {
  return "quillbay " + std::string(verb) + " " + shellWord(session.url().absoluteString());
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
