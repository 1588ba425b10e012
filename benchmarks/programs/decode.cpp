// bench-decode ROUNDS: one line a round, the seconds of reading and releasing one finalize reply
// of 10,000 items and of 1,000 items.

#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/model/Session.h>

#include <iostream>

#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/SessionText.h"
#include "benchmarks/support/Stopwatch.h"

namespace quillbay::bench {
namespace {

constexpr std::size_t kManyCount = 10'000;
constexpr std::size_t kFewCount = 1'000;
// As many items in either measurement, several replies in each.
constexpr std::size_t kItemsPerRound = 100'000;

double secondsPerReply(const std::string& text, std::size_t itemCount) {
  const std::size_t repetitions = kItemsPerRound / itemCount;
  const Stopwatch stopwatch;
  for (std::size_t i = 0; i < repetitions; ++i) {
    const auto session = platform::JSONDecoder().decode<cloud::Session>(text);
    if (!session || items(*session).size() != itemCount) fail("a reply does not read");
  }
  return stopwatch.seconds() / static_cast<double>(repetitions);
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1) fail("usage: bench-decode ROUNDS");
  const int roundCount = std::stoi(arguments[0]);
  const std::string many = sessionText(kManyCount);
  const std::string few = sessionText(kFewCount);
  for (int round = -1; round < roundCount; ++round) {
    const double ofMany = secondsPerReply(many, kManyCount);
    const double ofFew = secondsPerReply(few, kFewCount);
    if (round >= 0) std::cout << ofMany << ' ' << ofFew << '\n';
  }
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-decode", argumentCount, arguments,
                                     quillbay::bench::run);
}
