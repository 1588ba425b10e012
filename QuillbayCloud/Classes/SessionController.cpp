#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/Classes/SessionItemUploadQueue.h>
#include <QuillbayCloud/service/Log.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include <cstdint>
#include <utility>

namespace quillbay::cloud {
namespace {

using platform::DispatchQueue;

constexpr std::int64_t kUnitsPerFile = 100;
constexpr std::string_view kCreateSession = "createSession(sessionCreation:completion:)";

}  // namespace

std::shared_ptr<SessionController> SessionController::create(SessionContext context,
                                                             SessionConfiguration configuration) {
  return std::shared_ptr<SessionController>(
      new SessionController(std::move(context), std::move(configuration)));
}

SessionController::SessionController(SessionContext context, SessionConfiguration configuration)
    : context_(std::move(context)),
      configuration_(std::move(configuration)),
      progress_(platform::Progress::create(static_cast<std::int64_t>(context_.items().size()) *
                                           kUnitsPerFile)),
      webservice_(Webservice::create(RequestFactory::create(context_.instanceIdentifier()))) {}

SessionController::~SessionController() = default;

void SessionController::createSession(Completion completion) {
  createSession(nullptr, std::move(completion));
}

void SessionController::createSession(SessionCreation sessionCreation, Completion completion) {
  if (!completion) completion = [](const auto&) {};
  Log::debug(kCreateSession, [] { return "Creating fingerprints..."; });
  fileFingerprint_ = FileFingerprint::create(context_.items());
  fileFingerprint_->calculate(
      [weakSelf = weak_from_this(), sessionCreation = std::move(sessionCreation),
       completion = std::move(completion)](const auto& fingerprints) mutable {
        if (!fingerprints) {
          Log::error(kCreateSession, [] { return "Failed to create fingerprints, stopping now"; });
          return completion(std::unexpected(QuillbayCloudError::fingerprintFailure()));
        }
        Log::debug(kCreateSession, [] {
          return "Finished creating fingerprints, proceeding to create session...";
        });
        if (const auto self = weakSelf.lock()) {
          self->requestSession(*fingerprints, std::move(sessionCreation), std::move(completion));
        }
      });
}

void SessionController::requestSession(
    const std::unordered_map<platform::URL, std::string>& fingerprints,
    SessionCreation sessionCreation, Completion completion) {
  auto request =
      webservice_->requestFactory().createSessionRequest(context_, fingerprints, configuration_);
  if (!request) {
    DispatchQueue::main().async([completion = std::move(completion)]() mutable {
      completion(std::unexpected(QuillbayCloudError::invalidFile()));
    });
    return;
  }
  webservice_->perform<Session>(
      std::move(*request),
      [weakSelf = weak_from_this(), sessionCreation = std::move(sessionCreation),
       completion = std::move(completion)](const auto& session) mutable {
        if (!session) return completion(std::unexpected(QuillbayCloudError::from(session.error())));
        if (sessionCreation) sessionCreation(*session);
        // Taken only now: the host may have released the controller while it looked at the session.
        if (const auto self = weakSelf.lock()) self->uploadItems(*session, std::move(completion));
      });
}

void SessionController::uploadItems(const Session& session, Completion completion) {
  if (cancelled_) return;
  const bool isInline = configuration_.linkType() == SessionLinkType::directLink;
  const auto queue =
      SessionItemUploadQueue::create(webservice_, session, context_.items(), isInline);
  queue->start([session, completion = std::move(completion)](const auto& result) mutable {
    // The queue keeps this callback; the host's goes as soon as it has run.
    auto report = std::move(completion);
    if (!result) return report(std::unexpected(QuillbayCloudError::from(result.error())));
    report(session);
  });
  progress_->addChild(queue->progress(), queue->progress()->totalUnitCount());
  uploader_ = queue;
}

void SessionController::cancel() {
  cancelled_ = true;
  if (fileFingerprint_) fileFingerprint_->cancel();
  if (!uploader_) return;
  uploader_->setCancelled(true);
  uploader_->setCompletion(nullptr);
}

void SessionController::deleteSession(std::string_view sessionIdentifier,
                                      std::string_view instanceIdentifier, std::string_view token,
                                      DeletionCompletion completion) {
  if (!completion) completion = [](const auto&) {};
  const auto webservice =
      Webservice::create(RequestFactory::create(std::string(instanceIdentifier)));
  webservice->perform(
      webservice->requestFactory().deleteSessionRequest(sessionIdentifier, token),
      [completion = std::move(completion)](const Webservice::RawResult& result) mutable {
        std::expected<void, QuillbayCloudError> outcome;
        if (!result) outcome = std::unexpected(QuillbayCloudError::from(result.error()));
        DispatchQueue::main().async(
            [completion = std::move(completion), outcome = std::move(outcome)]() mutable {
              completion(std::move(outcome));
            });
      });
}

}  // namespace quillbay::cloud
