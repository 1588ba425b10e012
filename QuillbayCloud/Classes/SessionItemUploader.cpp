#include <QuillbayCloud/Classes/MainQueueReference.h>
#include <QuillbayCloud/Classes/SessionItemUploader.h>
#include <QuillbayCloud/service/AmazonErrorParser.h>
#include <QuillbayCloud/service/ItemUploadUrl.h>
#include <QuillbayCloud/service/Log.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include <cstdint>
#include <utility>

namespace quillbay::cloud {
namespace {

using platform::ErrorPtr;
using platform::HTTPURLResponse;
using platform::URL;
using Step = SessionActivity::Step;

constexpr std::string_view kRequestUploadUrl = "requestUploadUrl()";
constexpr std::string_view kUploadItem = "uploadItem(url:)";
constexpr std::string_view kUploadResult = "uploadResult(data:response:error:url:)";
constexpr std::string_view kFinalizeUpload = "finalizeUpload(etag:)";

}  // namespace

std::shared_ptr<SessionItemUploader> SessionItemUploader::create(
    std::shared_ptr<const Webservice> webservice, const Session& session, Item item, URL filePath,
    bool isInline) {
  return std::shared_ptr<SessionItemUploader>(new SessionItemUploader(
      std::move(webservice), session, std::move(item), std::move(filePath), isInline));
}

SessionItemUploader::SessionItemUploader(std::shared_ptr<const Webservice> webservice,
                                         const Session& session, Item item, URL filePath,
                                         bool isInline)
    : webservice_(std::move(webservice)),
      session_(session),
      item_(std::move(item)),
      filePath_(std::move(filePath)),
      isInline_(isInline) {}

void SessionItemUploader::upload(std::shared_ptr<platform::Progress> progress,
                                 Completion completion) {
  progress_ = std::move(progress);
  completion_ = std::move(completion);
  requestUploadUrl();
}

void SessionItemUploader::reportTo(std::shared_ptr<RunActivity> activity, std::size_t position) {
  activity_ = std::move(activity);
  position_ = position;
}

void SessionItemUploader::enter(Step step) const {
  if (activity_) activity_->uploading(step, position_);
}

void SessionItemUploader::requestUploadUrl() {
  enter(Step::requestingAddress);
  webservice_->perform<ItemUploadUrl>(
      webservice_->requestFactory().uploadUrlRequest(session_.identifier(), item_.identifier(),
                                                     token()),
      [weakSelf = weak_from_this()](std::expected<ItemUploadUrl, Webservice::Error> result) {
        if (!result) {
          Log::error(kRequestUploadUrl, [&] {
            return "Failed to obtain upload URL with error " + result.error().description();
          });
          if (const auto self = weakSelf.lock()) {
            // Unlike everywhere else the service's error is wrapped as it is.
            self->fail(QuillbayCloudError::underlying(
                std::make_shared<const Webservice::Error>(result.error())));
          }
          return;
        }
        Log::debug(kRequestUploadUrl,
                   [] { return "Obtained upload URL, proceeding to upload..."; });
        if (const auto self = weakSelf.lock()) self->uploadItem(result->url());
      });
}

void SessionItemUploader::uploadItem(const URL& url) {
  enter(Step::uploading);
  using Disposition = RequestFactory::ContentDispositionType;
  auto request = webservice_->requestFactory().uploadRequest(
      url, filePath_, isInline_ ? Disposition::inline_() : Disposition::attachment());
  if (!request) {
    Log::error(kUploadItem,
               [&] { return "Failed to create upload item (" + item_.identifier() + ") request"; });
    return fail(QuillbayCloudError::invalidFile());
  }
  Log::debug(kUploadItem,
             [&] { return "Performing item (" + item_.identifier() + ") upload request..."; });
  const auto task = platform::URLSession::create()->uploadTask(
      *request, filePath_,
      [weakSelf = weak_from_this(), request = *request](
          std::optional<std::string> data, const std::optional<HTTPURLResponse>& response,
          const ErrorPtr& error) {
        const MainQueueReference self(weakSelf);
        if (self && !response) self->noteUnanswered(error);
        if (self) self->uploadEnded(uploadResult(std::move(data), response, error, request.url));
      });
  task->resume();
  if (activity_) {
    sentBytesObservation_ =
        task->progress()->observe([activity = activity_](const platform::Progress& progress) {
          activity->sent(static_cast<std::uint64_t>(progress.completedUnitCount()));
        });
  }
  if (progress_) progress_->addChild(task->progress(), task->progress()->totalUnitCount());
  uploadTask_ = task;
}

void SessionItemUploader::noteUnanswered(const ErrorPtr& error) const {
  if (!activity_) return;
  platform::DispatchQueue::main().async(
      [activity = activity_, error] { activity->uploadUnanswered(error); });
}

void SessionItemUploader::uploadEnded(const std::expected<std::string, QuillbayCloudError>& etag) {
  if (!etag) {
    Log::error(kUploadItem,
               [&] { return "Failed uploading with error " + etag.error().description(); });
    return fail(etag.error());
  }
  Log::debug(kUploadItem, [&] { return "Successfully uploaded item with etag: " + *etag; });
  // Ahead of the call, so that its reply finds the step entered.
  platform::DispatchQueue::main().async(
      [self = shared_from_this()] { self->enter(Step::finalizing); });
  finalizeUpload(*etag);
}

std::expected<std::string, QuillbayCloudError> SessionItemUploader::uploadResult(
    std::optional<std::string> data, const std::optional<HTTPURLResponse>& response,
    const ErrorPtr& error, const URL& /*url*/) {
  if (!response) {
    Log::error(kUploadResult, [] { return "Unexpected response"; });
    return std::unexpected(QuillbayCloudError::invalidResponse());
  }
  if (response->statusCode() == 200) {
    if (auto etag = response->valueForHTTPHeaderField("Etag")) return std::move(*etag);
  }
  if (error) {
    Log::error(kUploadResult,
               [&] { return "Failed uploading item with generic error " + error->description(); });
    return std::unexpected(QuillbayCloudError::underlying(error));
  }
  if (data) {
    if (auto refusal = AmazonErrorParser::create(std::move(*data))->parse()) {
      Log::error(kUploadResult,
                 [&] { return "Failed uploading with AWS error " + refusal->description(); });
      return std::unexpected(QuillbayCloudError::aws(std::move(*refusal)));
    }
  }
  Log::error(kUploadResult, [] { return "Failed uploading item with unknown error"; });
  return std::unexpected(QuillbayCloudError::invalidResponse());
}

void SessionItemUploader::finalizeUpload(const std::string& etag) {
  Log::debug(kFinalizeUpload, [&] { return "Finalizing upload with etag: " + etag; });
  webservice_->perform<Session>(
      webservice_->requestFactory().finalizeRequest(session_.identifier(), item_.identifier(),
                                                    token(), etag),
      [weakSelf = weak_from_this()](std::expected<Session, Webservice::Error> result) {
        if (!result) {
          Log::error(kFinalizeUpload, [&] {
            return "Failed to finalize upload with error " + result.error().description();
          });
          if (const auto self = weakSelf.lock()) {
            self->fail(QuillbayCloudError::from(result.error()));
          }
          return;
        }
        Log::debug(kFinalizeUpload, [] { return "Finished upload finalization"; });
        if (const auto self = weakSelf.lock()) self->succeed(*result);
      });
}

void SessionItemUploader::fail(const QuillbayCloudError& error) { report(std::unexpected(error)); }

void SessionItemUploader::succeed(const Session& session) {
  if (activity_) activity_->uploaded();
  report(session);
}

void SessionItemUploader::report(Result result) {
  platform::DispatchQueue::main().async(
      [self = shared_from_this(), result = std::move(result)]() mutable {
        if (self->completion_) self->completion_(std::move(result));
      });
}

}  // namespace quillbay::cloud
