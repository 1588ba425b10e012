#include <QuillbayCloud/Classes/ActivityMonitor.h>
#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/Classes/SessionItemUploadQueue.h>
#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/service/Log.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

namespace quillbay::cloud {
namespace {

using platform::DispatchQueue;
using platform::URL;

constexpr std::int64_t kUnitsPerFile = 100;
constexpr std::string_view kCreateSession = "createSession(sessionCreation:completion:)";
constexpr std::string_view kResumeSession = "resumeSession(session:uploadedItems:completion:)";

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
      webservice_(Webservice::create(RequestFactory::create(context_.instanceIdentifier()))),
      activityMonitor_(ActivityMonitor::create(context_.items().size())) {}

SessionController::~SessionController() = default;

void SessionController::createSession(Completion completion) {
  createSession(nullptr, std::move(completion));
}

void SessionController::createSession(SessionCreation sessionCreation, Completion completion) {
  const auto run = beginRun(context_.items().size(), {});
  fingerprintFiles(
      kCreateSession, "create session", run, std::move(completion),
      [run, sessionCreation = std::move(sessionCreation)](
          SessionController& self, const Fingerprints& fingerprints, Completion report) mutable {
        self.requestSession(fingerprints, run, std::move(sessionCreation), std::move(report));
      });
}

void SessionController::resumeSession(const Session& session,
                                      std::span<const std::size_t> uploadedItems,
                                      Completion completion) {
  const auto run = beginRun(items(session).size(), uploadedItems);
  fingerprintFiles(
      kResumeSession, "upload", run, std::move(completion),
      [run, session](SessionController& self, const Fingerprints& fingerprints, Completion report) {
        self.resumeUploads(session, fingerprints, run, std::move(report));
      });
}

std::shared_ptr<RunActivity> SessionController::beginRun(
    std::size_t itemCount, std::span<const std::size_t> uploadedItems) {
  const std::vector<URL>& files = context_.items();
  const std::size_t pairCount = std::min(itemCount, files.size());
  std::set<std::size_t> uploaded(uploadedItems.begin(), uploadedItems.end());
  uploaded.erase(uploaded.lower_bound(pairCount), uploaded.end());
  ActivityMonitor::Files pending;
  for (std::size_t index = 0; index < pairCount; ++index) {
    if (!uploaded.contains(index)) pending.push_back({index, files[index]});
  }
  progress_->setCompletedUnitCount(static_cast<std::int64_t>(uploaded.size()) * kUnitsPerFile);
  return activityMonitor_->beginRun(std::move(pending), {uploaded.begin(), uploaded.end()});
}

void SessionController::fingerprintFiles(std::string_view operation, std::string_view nextStep,
                                         const std::shared_ptr<RunActivity>& run,
                                         Completion completion, Continuation proceed) {
  if (!completion) completion = [](const auto&) {};
  Log::debug(operation, [] { return "Creating fingerprints..."; });
  std::vector<URL> files;
  files.reserve(run->files().size());
  for (const auto& file : run->files()) files.push_back(file.url);
  fileFingerprint_ = FileFingerprint::create(std::move(files), run);
  fileFingerprint_->calculate(
      [weakSelf = weak_from_this(), operation, nextStep, run, proceed = std::move(proceed),
       completion = std::move(completion)](const auto& fingerprints) mutable {
        if (!fingerprints) {
          Log::error(operation, [] { return "Failed to create fingerprints, stopping now"; });
          run->fail();
          return completion(std::unexpected(QuillbayCloudError::fingerprintFailure()));
        }
        Log::debug(operation, [&] {
          return "Finished creating fingerprints, proceeding to " + std::string(nextStep) + "...";
        });
        if (const auto self = weakSelf.lock()) proceed(*self, *fingerprints, std::move(completion));
      });
}

void SessionController::requestSession(const Fingerprints& fingerprints,
                                       const std::shared_ptr<RunActivity>& run,
                                       SessionCreation sessionCreation, Completion completion) {
  run->creatingSession();
  auto request =
      webservice_->requestFactory().createSessionRequest(context_, fingerprints, configuration_);
  if (!request) {
    run->fail();
    return reportLater(QuillbayCloudError::invalidFile(), std::move(completion));
  }
  webservice_->perform<Session>(
      std::move(*request),
      [weakSelf = weak_from_this(), run, sessionCreation = std::move(sessionCreation),
       completion = std::move(completion)](const auto& session) mutable {
        if (!session) {
          run->fail();
          return completion(std::unexpected(QuillbayCloudError::from(session.error())));
        }
        if (sessionCreation) sessionCreation(*session);
        // Taken only now: the host may have released the controller while it looked at the session.
        if (const auto self = weakSelf.lock()) {
          self->uploadItems(*session, run, std::move(completion));
        }
      });
}

void SessionController::resumeUploads(const Session& session, const Fingerprints& fingerprints,
                                      const std::shared_ptr<RunActivity>& run,
                                      Completion completion) {
  for (std::size_t position = 0; position < run->files().size(); ++position) {
    const auto& file = run->files()[position];
    if (fingerprints.at(file.url) == items(session)[file.index].fingerprint()) continue;
    run->fail(position);
    return reportLater(QuillbayCloudError::invalidFile(), std::move(completion));
  }
  uploadItems(session, run, std::move(completion));
}

void SessionController::reportLater(const QuillbayCloudError& error, Completion completion) {
  DispatchQueue::main().async([error, completion = std::move(completion)]() mutable {
    completion(std::unexpected(error));
  });
}

void SessionController::uploadItems(const Session& session, const std::shared_ptr<RunActivity>& run,
                                    Completion completion) {
  if (cancelled_) return run->cancel();
  const bool isInline = configuration_.linkType() == SessionLinkType::directLink;
  const auto queue =
      SessionItemUploadQueue::create(webservice_, session, context_.items(), isInline, run);
  queue->start([session, run, completion = std::move(completion)](const auto& result) mutable {
    // The queue keeps this callback; the host's goes as soon as it has run.
    auto report = std::move(completion);
    if (!result) {
      run->fail();
      return report(std::unexpected(QuillbayCloudError::from(result.error())));
    }
    run->finish();
    report(session);
  });
  progress_->addChild(queue->progress(), queue->progress()->totalUnitCount());
  uploader_ = queue;
}

const SessionActivity& SessionController::activity() const { return activityMonitor_->activity(); }

const std::vector<std::size_t>& SessionController::uploadedItems() const {
  return activityMonitor_->uploadedItems();
}

platform::Observation SessionController::observeActivity(ActivityObserver observer) {
  return activityMonitor_->observe(std::move(observer));
}

void SessionController::cancel() {
  cancelled_ = true;
  activityMonitor_->cancelRun();
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
