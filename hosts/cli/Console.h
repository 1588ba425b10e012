#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace quillbay::cli {

/// Standard error: lines for people, and on a terminal one status line below them that is
/// rewritten in place. All of it goes through here, so that the two never mix. Any thread.
class Console {
 public:
  /// `showsStatus`: whether there may be a status line and notes; false without a terminal, on one
  /// that cannot rewrite a line, and with --quiet.
  Console(int descriptor, bool showsStatus) : descriptor_(descriptor), showsStatus_(showsStatus) {}
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  ~Console() { clearStatus(); }

  /// Whether `descriptor` is a terminal that can rewrite a line.
  static bool canShowStatus(int descriptor);

  bool showsStatus() const { return showsStatus_; }
  /// Columns that a status line may fill, read anew each time: people resize their windows.
  std::size_t columnCount() const;

  /// "quillbay: " and the text: something went wrong, or is about to.
  void printError(std::string_view text);
  /// A line that is of use on a terminal only.
  void printNote(std::string_view text);
  /// A line as it is.
  void printLine(std::string_view text);

  /// A control sequence that shows nothing and leaves the cursor where it is.
  void sendSequence(std::string_view sequence);

  /// Shows `text` (one line, which may hold colours) in place of the status before it. Left out
  /// while the terminal is stopped, so that the upload goes on.
  void setStatus(std::string text);
  /// Takes the status line away. Before anything else writes to the same terminal, too.
  void clearStatus();
  /// Leaves the status line standing and begins a new one. For a program that ends this instant.
  void abandonStatus();

 private:
  void write(std::string_view bytes) const;

  const int descriptor_;
  const bool showsStatus_;
  std::mutex mutex_;
  std::string status_;
};

}  // namespace quillbay::cli
