#include "TerminalProgress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Console.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using Activity = cloud::SessionActivity;

constexpr std::size_t kLeastBarColumns = 10;
constexpr std::size_t kMostBarColumns = 40;
constexpr std::size_t kMostNameColumns = 20;
constexpr std::size_t kPercentColumns = 5;
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

std::string percentText(double fraction) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%d %%",
                static_cast<int>(std::floor(std::clamp(fraction, 0.0, 1.0) * 100)));
  return text.data();
}

std::string fileNameOf(const host::ShareRun& run) {
  const auto& file = run.activity().file;
  return file ? run.files().displayName(file->index, host::FailureAudience::window) : "";
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
  std::string line = percentText(fraction);
  line.insert(0, kPercentColumns - std::min(kPercentColumns, line.size()), ' ');
  if (line.size() > style.columnCount) return {};

  std::string files = std::to_string(filesDone) + " of " + host::fileCountText(fileCount);
  std::string name = fileCount > 1 ? host::shortened(file, kMostNameColumns) : "";
  std::string bytes = host::byteCountText(byteCount) + " of " + host::byteCountText(totalByteCount);
  std::string pace =
      speed >= 1 ? host::byteCountText(static_cast<std::uint64_t>(speed)) + "/s" : "";
  std::string past = host::durationText(elapsed) + " elapsed";
  std::string left = remaining ? host::durationText(*remaining) + " left" : "";
  // From the least to the most wanted: the first ones give way on a narrow terminal.
  const std::array<std::string*, 6> pieces = {&past, &bytes, &pace, &name, &left, &files};
  const std::size_t barFrame = style.unicode ? 0 : 2;
  const auto columnsWithoutBar = [&] {
    std::size_t columns = line.size() + 2 + barFrame;
    for (const std::string* piece : pieces) {
      columns += piece->empty() ? 0 : host::columnCount(*piece) + 2;
    }
    return columns;
  };
  for (std::string* piece : pieces) {
    if (columnsWithoutBar() + kLeastBarColumns > style.columnCount) piece->clear();
  }

  const std::size_t used = columnsWithoutBar();
  if (used + kLeastBarColumns > style.columnCount) return line;
  line += "  " + bar(fraction, std::min(kMostBarColumns, style.columnCount - used), style);
  for (const std::string* piece : {&files, &name, &bytes, &pace, &past, &left}) {
    if (!piece->empty()) line += "  " + *piece;
  }
  return line;
}

TerminalProgress::TerminalProgress(Console& console) : console_(console) {}

void TerminalProgress::show(const host::ShareRun& run, Clock::time_point now) {
  if (!console_.showsStatus()) return;
  style_.columnCount = console_.columnCount();
  console_.setStatus(text(run, now));
}

std::chrono::seconds TerminalProgress::elapsed(Clock::time_point now) const {
  return std::chrono::floor<std::chrono::seconds>(now - start_);
}

std::string TerminalProgress::text(const host::ShareRun& run, Clock::time_point now) {
  if (run.phase() == host::ShareRun::Phase::waiting) {
    std::string cause(host::nameOf(run.failure()->advice.cause));
    std::ranges::replace(cause, '-', ' ');
    return host::shortened(cause + "; " + nextTryText(run) + "; Ctrl-C cancels",
                           style_.columnCount);
  }
  switch (run.activity().step) {
    case Activity::Step::idle:
    case Activity::Step::fingerprinting:
      return fingerprintText(run, now);
    case Activity::Step::creatingSession:
      return host::shortened(waitingText("Announcing", run, now), style_.columnCount);
    default:
      return uploadText(run, now);
  }
}

std::string TerminalProgress::waitingText(const char* activity, const host::ShareRun& run,
                                          Clock::time_point now) const {
  const std::size_t fileCount = run.files().count() - run.arrivedFileCount();
  const std::uint64_t byteCount = run.files().totalByteCount() - run.sentByteCount();
  return std::string(activity) + " " + host::fileCountText(fileCount) + " (" +
         host::byteCountText(byteCount) + ")  " + host::durationText(elapsed(now));
}

std::string TerminalProgress::fingerprintText(const host::ShareRun& run,
                                              Clock::time_point now) const {
  const Activity& activity = run.activity();
  // Of an existing session only the files that are left are read.
  std::string text = waitingText(run.session() ? "Checking" : "Fingerprinting", run, now);
  if (activity.totalByteCount > 0) {
    text += "  " + percentText(static_cast<double>(activity.fingerprintedByteCount) /
                               static_cast<double>(activity.totalByteCount));
  }
  if (run.files().count() > 1) text += "  " + fileNameOf(run);
  return host::shortened(text, style_.columnCount);
}

std::string TerminalProgress::uploadText(const host::ShareRun& run, Clock::time_point now) {
  if (!uploadStart_) uploadStart_ = now;
  return UploadLine{.fraction = run.estimate().fraction(),
                    .filesDone = run.arrivedFileCount(),
                    .fileCount = run.files().count(),
                    .file = fileNameOf(run),
                    .byteCount = run.sentByteCount(),
                    .totalByteCount = run.files().totalByteCount(),
                    .speed = run.estimate().speed(),
                    .elapsed = std::chrono::floor<std::chrono::seconds>(now - *uploadStart_),
                    .remaining = run.estimate().remaining()}
      .text(style_);
}

std::string nextTryText(const host::ShareRun& run) {
  return "next try in " + std::to_string(run.untilNextTry().count()) + " s (" +
         std::to_string(run.attempt()) + " of " + std::to_string(run.retryCount()) + ")";
}

}  // namespace quillbay::cli
