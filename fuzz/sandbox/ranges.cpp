// Range headers.
#include <fuzz/support/Expect.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <regex>
#include <string>

#include "sandbox/http/ByteRange.h"

using namespace quillbay::sandbox;
using quillbay::fuzz::expect;

namespace {

struct Evaluation {
  RangeRequest request;
  ByteRange range;
};

Evaluation evaluated(const std::string& header, std::uint64_t contentByteCount) {
  Evaluation evaluation{};
  evaluation.request = evaluateRange(header, contentByteCount, evaluation.range);
  return evaluation;
}

void expectWithinContent(const Evaluation& evaluation, std::uint64_t contentByteCount) {
  if (evaluation.request != RangeRequest::part) return;
  const ByteRange& range = evaluation.range;
  expect(range.byteCount > 0, "a part has bytes");
  expect(range.offset < contentByteCount && range.byteCount <= contentByteCount - range.offset,
         "a part lies within the content");
}

/// RFC 9110, section 14.1.2. The header is "bytes=FIRST-LAST"; either may be absent.
void expectAsSpecified(const Evaluation& evaluation, const std::string& first,
                       const std::string& last, std::uint64_t contentByteCount) {
  const std::uint64_t end = contentByteCount - 1;
  if (first.empty()) {
    const std::uint64_t suffix = std::stoull(last);
    const bool isEmpty = suffix == 0 || contentByteCount == 0;
    expect(evaluation.request == (isEmpty ? RangeRequest::unsatisfiable : RangeRequest::part),
           "an empty suffix alone cannot be satisfied");
    if (isEmpty) return;
    expect(evaluation.range.byteCount == std::min(suffix, contentByteCount) &&
               evaluation.range.offset == contentByteCount - evaluation.range.byteCount,
           "a suffix is the end of the content");
    return;
  }
  const std::uint64_t start = std::stoull(first);
  if (!last.empty() && std::stoull(last) < start) {
    expect(evaluation.request == RangeRequest::whole, "an invalid range is ignored");
    return;
  }
  if (start >= contentByteCount) {
    expect(evaluation.request == RangeRequest::unsatisfiable, "a range behind the content fails");
    return;
  }
  const std::uint64_t lastByte =
      last.empty() ? end : std::min<std::uint64_t>(std::stoull(last), end);
  expect(evaluation.request == RangeRequest::part && evaluation.range.offset == start &&
             evaluation.range.byteCount == lastByte - start + 1,
         "a range is cut at the end of the content");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  FuzzedDataProvider input(bytes, byteCount);
  const auto contentByteCount = input.ConsumeIntegral<std::uint64_t>();
  const std::string header = input.ConsumeRemainingBytesAsString();
  const Evaluation evaluation = evaluated(header, contentByteCount);
  expectWithinContent(evaluation, contentByteCount);

  static const std::regex single("bytes=([0-9]*)-([0-9]*)");
  std::smatch numbers;
  if (header.size() > 64) return 0;
  if (!std::regex_match(header, numbers, single) || (!numbers.length(1) && !numbers.length(2))) {
    expect(evaluation.request == RangeRequest::whole, "what is no single range is ignored");
    return 0;
  }
  // So many digits fit into 64 bits.
  constexpr int surelyReadable = 19;
  if (numbers.length(1) <= surelyReadable && numbers.length(2) <= surelyReadable) {
    expectAsSpecified(evaluation, numbers.str(1), numbers.str(2), contentByteCount);
  }
  return 0;
}
