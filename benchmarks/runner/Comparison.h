#pragma once

#include <functional>
#include <string>
#include <vector>

#include "benchmarks/runner/ChildProcess.h"
#include "benchmarks/runner/Row.h"

namespace quillbay::bench {

/// One side of a comparison: programs run one after the other, measured together.
struct Contender {
  std::string name;
  std::vector<Command> commands;
  /// Called after each run with the last program's output; fails if the run was no good.
  std::function<void(const std::string& output)> check = [](const std::string&) {};
};

/// What each run of one contender took, round by round.
using Runs = std::vector<Usage>;

/// Runs the contenders in turn, as often as told, each round beginning with another one; every
/// contender runs once before, unmeasured.
std::vector<Runs> compare(const std::vector<Contender>& contenders, int roundCount,
                          const std::filesystem::path& outputFile);

/// Pairs of seconds, ours and theirs, of the same round.
struct Pairs {
  std::vector<double> ours;
  std::vector<double> theirs;
};

Pairs wallSeconds(const Runs& ours, const Runs& theirs);
Pairs processorSeconds(const Runs& ours, const Runs& theirs);
/// From lines of two numbers.
Pairs parsePairs(const std::string& text);

double median(std::vector<double> values);

/// A row of a ratio of times.
Row ratioRow(std::string work, std::string against, double limit, const Pairs& pairs,
             std::string reasonIfMissed = {});

/// "0.123 s" or "12.3 ms" or "45.6 us".
std::string secondsText(double seconds);

}  // namespace quillbay::bench
