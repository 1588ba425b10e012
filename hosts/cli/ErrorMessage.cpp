#include "ErrorMessage.h"

#include <string_view>

#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using Case = FailureReport::Case;
using Step = host::RunJournal::Step;

std::string failedText(Step step, const std::string& fileName) {
  switch (step) {
    case Step::fingerprinting:
      return "nothing was shared";
    case Step::creatingSession:
      return "no session was created";
    case Step::requestingAddress:
      return "the upload of " + fileName + " could not begin";
    case Step::sending:
      return "the upload of " + fileName + " failed";
    case Step::finalizing:
      return "the upload of " + fileName + " could not be completed";
    case Step::deletingSession:
      return "the session was not deleted";
  }
  return "the run failed";
}

std::string withDetail(std::string text, const FailureReport& report, const std::string& detail) {
  const std::string message = host::plainLine(report.description.value_or(""));
  if (!message.empty()) text += ": " + message;
  return text + " (" + detail + ")";
}

std::string storeAdvice(const std::string& code) {
  if (code == "EntityTooLarge") return "the file is larger than the store accepts; split it";
  if (code == "AccessDenied" || code == "SignatureDoesNotMatch" || code == "RequestTimeTooSkewed" ||
      code == "ExpiredToken") {
    return "check the clock of this computer and try again";
  }
  return "try again; if it fails again, tell the service's operator this message";
}

std::string advice(const FailureReport& report) {
  switch (report.kind) {
    case Case::aws:
      return storeAdvice(report.code.value_or(""));
    case Case::webservice:
      return report.status.value_or(0) >= 500 ? "try again in a while" : "";
    case Case::underlying:
      return "check the network connection, --connect-to and --cacert, and try again";
    case Case::invalidResponse:
      return "check the network connection and try again in a while";
    case Case::missingItems:
      return "try again; if it fails again, tell the service's operator this message";
    case Case::invalidFile:
    case Case::fingerprintFailure:
      return "make sure that every file can be read and stays as it is, and try again";
  }
  return "";
}

std::vector<std::string> lines(std::string failure, std::string whatToDo) {
  std::vector<std::string> texts{std::move(failure)};
  if (!whatToDo.empty()) texts.push_back(std::move(whatToDo));
  return texts;
}

}  // namespace

std::string reasonText(const FailureReport& report) {
  switch (report.kind) {
    case Case::aws:
      return withDetail("the store refused it", report, host::plainLine(report.code.value_or("")));
    case Case::webservice:
      return withDetail("the service refused", report,
                        "status " + std::to_string(report.status.value_or(0)));
    case Case::underlying:
      return host::plainLine(report.description ? *report.description : report.cause);
    case Case::invalidFile:
      return "a file vanished, cannot be read, or has a name that cannot be sent";
    case Case::invalidResponse:
      return "the connection broke, or the answer could not be understood";
    case Case::missingItems:
      return "the service expects no files for it";
    case Case::fingerprintFailure:
      return "not every file could be read, or one stands twice in the list";
  }
  return "";
}

std::vector<std::string> shareFailureLines(const FailureReport& report, Step step,
                                           const std::string& fileName) {
  return lines(failedText(step, fileName) + ": " + reasonText(report), advice(report));
}

std::vector<std::string> deletionFailureLines(const FailureReport& report,
                                              const std::string& sessionIdentifier) {
  const bool isRefused = report.kind == Case::webservice && report.status.value_or(0) < 500;
  return lines(
      "session " + host::inQuotes(sessionIdentifier) + " was not deleted: " + reasonText(report),
      isRefused ? "check the identifier, the token and --instance; it may be deleted already"
                : advice(report));
}

}  // namespace quillbay::cli
