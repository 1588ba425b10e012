#include "LinkDisplay.h"

#include <unistd.h>

#include "ClipboardSequence.h"
#include "Console.h"
#include "MatrixCodeText.h"
#include "StandardStreams.h"
#include "TerminalProgress.h"
#include "hosts/common/MatrixCode.h"

namespace quillbay::cli {

void LinkDisplay::show(const std::string& link) const {
  if (options_.copy) copy(link);
  if (options_.qrCode) draw(link);
}

void LinkDisplay::copy(const std::string& link) const {
  const auto sequence = clipboardSequence(link, environment_);
  if (!sequence) return console_.printError("the link was not copied: it is too long");
  if (Console::canShowStatus(STDERR_FILENO)) {
    console_.sendSequence(*sequence);
  } else if (Console::canShowStatus(STDOUT_FILENO)) {
    static_cast<void>(writeAll(STDOUT_FILENO, *sequence));
  } else {
    return console_.printError(
        "the link was not copied: neither standard error nor standard output is a terminal that "
        "could do it");
  }
  // Terminals do not answer.
  console_.printNote("The link was sent to the clipboard, if this terminal allows that.");
}

void LinkDisplay::draw(const std::string& link) const {
  const auto fail = [this](const std::string& reason) {
    console_.printError("there is no QR code: " + reason);
  };
  if (!Console::canShowStatus(STDERR_FILENO)) {
    return fail("standard error is not a terminal that could show it");
  }
  if (!LineStyle::ofEnvironment().unicode) return fail("the locale's encoding is not UTF-8");
  const auto code = host::MatrixCode::of(link);
  if (!code) return fail("the link is too long");
  if (code->size() > console_.columnCount()) {
    return fail("it needs a terminal of " + std::to_string(code->size() + 1) + " columns");
  }
  console_.printLine(textOf(*code));
}

}  // namespace quillbay::cli
