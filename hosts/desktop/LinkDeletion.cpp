#include "LinkDeletion.h"

#include <chrono>
#include <utility>

#include "ShownText.h"
#include "hosts/common/FailureAdvice.h"
#include "hosts/common/History.h"

namespace quillbay::desktop {
namespace {

constexpr std::chrono::seconds kBound{5};

}  // namespace

LinkDeletion::LinkDeletion(Share share, host::NetworkOptions network, host::History& history,
                           std::function<void(const Result&)> completion)
    : share_(std::move(share)),
      network_(std::move(network)),
      history_(history),
      completion_(std::move(completion)) {
  deadline_.setSingleShot(true);
  deadline_.callOnTimeout([this] { end({}); });
}

void LinkDeletion::start() {
  deadline_.start(kBound);
  cloud::SessionController::deleteSession(share_.session.identifier(), share_.instanceIdentifier,
                                          share_.session.token().value_or(""),
                                          [self = std::weak_ptr(self_)](const auto& result) {
                                            if (const auto deletion = self.lock())
                                              (*deletion)->answered(result);
                                          });
}

void LinkDeletion::answered(const std::expected<void, cloud::QuillbayCloudError>& result) {
  // The reply may come after the deadline.
  if (!completion_) return;
  if (!result) {
    const auto advice = host::FailureAdvice::of(result.error(),
                                                {.step = host::ShareStep::deletingSession,
                                                 .subject = share_.session.identifier(),
                                                 .network = network_},
                                                host::FailureAudience::window);
    return end({.isRefused = advice.cause == host::FailureCause::deletionRefused,
                .reason = adviceText(advice)});
  }
  if (share_.historyIdentifier != 0) {
    history_.setState(share_.historyIdentifier, host::RememberedShare::State::deleted);
  }
  end({.isDeleted = true});
}

void LinkDeletion::end(const Result& result) {
  deadline_.stop();
  std::exchange(completion_, {})(result);
}

}  // namespace quillbay::desktop
