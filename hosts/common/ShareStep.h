#pragma once

#include <QuillbayCloud/model/SessionActivity.h>

namespace quillbay::host {

/// What a program was doing for the user when something failed.
enum class ShareStep {
  fingerprinting,
  checkingFiles,  ///< of a share that is continued: whether they are the announced ones
  creatingSession,
  requestingAddress,
  sending,
  finalizing,
  deletingSession,
};

/// The step of the library's activity, as it was before the run ended.
constexpr ShareStep stepOf(cloud::SessionActivity::Step step) {
  using Step = cloud::SessionActivity::Step;
  switch (step) {
    case Step::creatingSession:
      return ShareStep::creatingSession;
    case Step::requestingAddress:
      return ShareStep::requestingAddress;
    case Step::uploading:
      return ShareStep::sending;
    case Step::finalizing:
      return ShareStep::finalizing;
    default:
      return ShareStep::fingerprinting;
  }
}

}  // namespace quillbay::host
