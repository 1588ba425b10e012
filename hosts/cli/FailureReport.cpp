#include "FailureReport.h"

#include <array>

#include "ErrorMessage.h"

namespace quillbay::cli {
namespace {

using cloud::QuillbayCloudError;
using Case = FailureReport::Case;

struct CaseReader {
  FailureReport operator()(const QuillbayCloudError::Aws& aws) const {
    return {.kind = Case::aws, .code = aws.error.type()};
  }
  FailureReport operator()(const QuillbayCloudError::Webservice& refusal) const {
    return {.kind = Case::webservice, .status = refusal.status};
  }
  FailureReport operator()(const QuillbayCloudError::Underlying& /*error*/) const {
    return {.kind = Case::underlying};
  }
  FailureReport operator()(const QuillbayCloudError::InvalidFile& /*error*/) const {
    return {.kind = Case::invalidFile};
  }
  FailureReport operator()(const QuillbayCloudError::InvalidResponse& /*error*/) const {
    return {.kind = Case::invalidResponse};
  }
  FailureReport operator()(const QuillbayCloudError::MissingItems& /*error*/) const {
    return {.kind = Case::missingItems};
  }
  FailureReport operator()(const QuillbayCloudError::FingerprintFailure& /*error*/) const {
    return {.kind = Case::fingerprintFailure};
  }
};

}  // namespace

FailureReport FailureReport::of(const QuillbayCloudError& error,
                                const host::FailureAdvice& advice) {
  FailureReport report = std::visit(CaseReader(), error.value());
  report.cause = host::nameOf(advice.cause);
  report.detail = failureText(advice);
  report.description = error.errorDescription();
  return report;
}

const char* FailureReport::caseName() const {
  static constexpr std::array<const char*, 7> kNames = {
      "aws",          "webservice",         "underlying", "invalidFile", "invalidResponse",
      "missingItems", "fingerprintFailure",
  };
  return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace quillbay::cli
