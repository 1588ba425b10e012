#include "benchmarks/runner/Comparison.h"

#include <algorithm>
#include <sstream>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

Usage runOnce(const Contender& contender, const std::filesystem::path& outputFile) {
  Usage total;
  for (const auto& command : contender.commands) {
    const Usage usage = runCommand(command, outputFile);
    total.wallSeconds += usage.wallSeconds;
    total.processorSeconds += usage.processorSeconds;
    total.peakKibibytes = std::max(total.peakKibibytes, usage.peakKibibytes);
  }
  contender.check(readText(outputFile));
  return total;
}

Pairs pairs(const Runs& ours, const Runs& theirs, double Usage::* seconds) {
  Pairs result;
  for (const Usage& run : ours) result.ours.push_back(run.*seconds);
  for (const Usage& run : theirs) result.theirs.push_back(run.*seconds);
  return result;
}

}  // namespace

std::vector<Runs> compare(const std::vector<Contender>& contenders, int roundCount,
                          const std::filesystem::path& outputFile) {
  std::vector<Runs> runs(contenders.size());
  for (const auto& contender : contenders) runOnce(contender, outputFile);
  for (int round = 0; round < roundCount; ++round) {
    for (std::size_t turn = 0; turn < contenders.size(); ++turn) {
      const std::size_t i = (static_cast<std::size_t>(round) + turn) % contenders.size();
      runs[i].push_back(runOnce(contenders[i], outputFile));
    }
  }
  return runs;
}

Pairs wallSeconds(const Runs& ours, const Runs& theirs) {
  return pairs(ours, theirs, &Usage::wallSeconds);
}

Pairs processorSeconds(const Runs& ours, const Runs& theirs) {
  return pairs(ours, theirs, &Usage::processorSeconds);
}

Pairs parsePairs(const std::string& text) {
  Pairs result;
  std::istringstream stream(text);
  double ours = 0;
  double theirs = 0;
  while (stream >> ours >> theirs) {
    result.ours.push_back(ours);
    result.theirs.push_back(theirs);
  }
  if (result.ours.empty()) fail("a program printed no measurements");
  return result;
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  const std::size_t half = values.size() / 2;
  return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Row ratioRow(std::string work, std::string against, double limit, const Pairs& pairs,
             std::string reasonIfMissed) {
  std::vector<double> ratios;
  std::ranges::transform(pairs.ours, pairs.theirs, std::back_inserter(ratios), std::divides<>());
  Row row;
  row.work = std::move(work);
  row.against = std::move(against);
  row.limit = limit;
  row.value = median(ratios);
  row.ratioOfMinima = std::ranges::min(pairs.ours) / std::ranges::min(pairs.theirs);
  row.figures = secondsText(median(pairs.ours)) + " / " + secondsText(median(pairs.theirs));
  row.reasonIfMissed = std::move(reasonIfMissed);
  return row;
}

std::string secondsText(double seconds) {
  struct Unit {
    double perSecond;
    const char* name;
  };
  Unit unit = {1, "s"};
  if (seconds < 1) unit = {1e3, "ms"};
  if (seconds < 1e-3) unit = {1e6, "us"};
  std::ostringstream text;
  text.precision(3);
  text << seconds * unit.perSecond << ' ' << unit.name;
  return text.str();
}

}  // namespace quillbay::bench
