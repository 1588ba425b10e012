#pragma once

#include <QuillbayPlatform/Date.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/common/History.h"
#include "hosts/common/OptionTable.h"

namespace quillbay::cli {

/// What a shell can offer for the word that is being typed.
struct Completion {
  struct Candidate {
    std::string text;
    /// One line; may be empty.
    std::string description;
  };

  /// Which shares of the history can stand here, by their links.
  enum class Shares { none, unfinished, undeleted, all };

  /// Names of files and folders, which the shell knows best.
  bool takesFiles = false;
  Shares shares = Shares::none;
  std::vector<Candidate> candidates = {};

  /// Adds `candidate` if it begins with what has been typed.
  void offer(Candidate candidate, std::string_view typed);

  /// Adds the links of `shares`, the newest first.
  void offerShares(std::span<const host::RememberedShare> remembered, platform::Date now,
                   std::string_view typed);

  /// For the completion script of a shell: a line "files" or "words", then a line a candidate, its
  /// description behind a tab.
  std::string text() const;
};

/// The options of `table`, or the values of one of them, that can be the last of `words`, the
/// arguments of a command. Nothing if that is an operand.
std::optional<Completion> completeOption(const host::OptionTable& table,
                                         std::span<const std::string> words);

}  // namespace quillbay::cli
