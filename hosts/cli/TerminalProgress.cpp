#include "TerminalProgress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Console.h"
#include "FileList.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using Step = host::RunJournal::Step;

constexpr std::size_t kLeastBarColumns = 10;
constexpr std::size_t kMostBarColumns = 40;
constexpr std::string_view kGreen = "\x1b[32m";
constexpr std::string_view kPlain = "\x1b[0m";

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string repeated(std::string_view piece, std::size_t count) {
  std::string text;
  for (std::size_t index = 0; index < count; ++index) text += piece;
  return text;
}

std::string bar(double fraction, std::size_t columnCount, const LineStyle& style) {
  const auto filled =
      std::min(columnCount, static_cast<std::size_t>(fraction * static_cast<double>(columnCount)));
  std::string text = style.unicode ? "" : "[";
  if (style.colours) text += kGreen;
  text += repeated(style.unicode ? "█" : "#", filled);
  if (style.colours) text += kPlain;
  text += repeated(style.unicode ? "░" : ".", columnCount - filled);
  return text + (style.unicode ? "" : "]");
}

}  // namespace

LineStyle LineStyle::ofEnvironment() {
  std::string locale;
  for (const char* name : {"LANG", "LC_CTYPE", "LC_ALL"}) {
    if (const std::string_view value = environment(name); !value.empty()) locale = value;
  }
  std::erase(locale, '-');
  std::ranges::transform(locale, locale.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
  });
  return {.colours = environment("NO_COLOR").empty(),
          .unicode = locale.find("utf8") != std::string::npos};
}

std::string UploadLine::text(const LineStyle& style) const {
  std::array<char, 16> percent{};
  std::snprintf(percent.data(), percent.size(), "%3d %%",
                static_cast<int>(std::floor(std::clamp(fraction, 0.0, 1.0) * 100)));

  std::string files = std::to_string(filesDone) + " of " + host::fileCountText(fileCount);
  std::string left = remaining ? host::durationText(*remaining) + " left" : "";
  std::string past = host::durationText(elapsed) + " elapsed";
  // From the least to the most wanted: the first ones give way on a narrow terminal.
  std::array<std::string*, 3> pieces = {&past, &left, &files};
  const std::size_t barFrame = style.unicode ? 0 : 2;
  const auto columnsWithoutBar = [&] {
    std::size_t columns = std::string_view(percent.data()).size() + 2 + barFrame;
    for (const std::string* piece : pieces) columns += piece->empty() ? 0 : piece->size() + 2;
    return columns;
  };
  for (std::string* piece : pieces) {
    if (columnsWithoutBar() + kLeastBarColumns > style.columnCount) piece->clear();
  }

  std::string line = percent.data();
  if (line.size() > style.columnCount) return {};
  const std::size_t used = columnsWithoutBar();
  if (used + kLeastBarColumns > style.columnCount) return line;
  line += "  " + bar(fraction, std::min(kMostBarColumns, style.columnCount - used), style);
  for (const std::string* piece : {&files, &past, &left}) {
    if (!piece->empty()) line += "  " + *piece;
  }
  return line;
}

TerminalProgress::TerminalProgress(Console& console, const FileList& files, Clock::time_point start)
    : console_(console),
      files_(files),
      start_(start),
      style_(LineStyle::ofEnvironment()),
      uploadStart_(start) {}

void TerminalProgress::show(const host::RunJournal& journal, double fraction,
                            Clock::time_point now) {
  if (!console_.showsStatus()) return;
  style_.columnCount = console_.columnCount();
  switch (journal.step()) {
    case Step::fingerprinting:
      return console_.setStatus(waitingText("Fingerprinting", now));
    case Step::creatingSession:
      return console_.setStatus(waitingText("Announcing", now));
    default:
      return console_.setStatus(uploadText(journal, fraction, now));
  }
}

std::chrono::seconds TerminalProgress::elapsed(Clock::time_point now) const {
  return std::chrono::floor<std::chrono::seconds>(now - start_);
}

std::string TerminalProgress::waitingText(const char* activity, Clock::time_point now) const {
  const std::string text = std::string(activity) + " " + host::fileCountText(files_.count()) +
                           " (" + host::byteCountText(files_.totalByteCount()) + ")  " +
                           host::durationText(elapsed(now));
  return text.substr(0, style_.columnCount);
}

std::string TerminalProgress::uploadText(const host::RunJournal& journal, double fraction,
                                         Clock::time_point now) {
  if (!estimate_) {
    estimate_.emplace(files_.byteCounts(), now);
    uploadStart_ = now;
  }
  estimate_->update(fraction, now);
  return UploadLine{.fraction = estimate_->fraction(),
                    .filesDone = std::min(journal.filesDone(), files_.count()),
                    .fileCount = files_.count(),
                    .elapsed = std::chrono::floor<std::chrono::seconds>(now - uploadStart_),
                    .remaining = estimate_->remaining()}
      .text(style_);
}

}  // namespace quillbay::cli
