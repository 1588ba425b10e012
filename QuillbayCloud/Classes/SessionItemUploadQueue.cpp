#include <QuillbayCloud/Classes/SessionItemUploadQueue.h>
#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/service/Log.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

namespace quillbay::cloud {
namespace {

using platform::DispatchQueue;
using platform::URL;

constexpr std::int64_t kUnitsPerItem = 100;
constexpr std::string_view kUploadNextItem = "uploadNextItem()";

}  // namespace

std::shared_ptr<SessionItemUploadQueue> SessionItemUploadQueue::create(
    const std::shared_ptr<const Webservice>& webservice, const Session& session,
    const std::vector<URL>& items, bool isInline, const std::shared_ptr<RunActivity>& activity) {
  return std::shared_ptr<SessionItemUploadQueue>(
      new SessionItemUploadQueue(webservice, session, items, isInline, activity));
}

SessionItemUploadQueue::SessionItemUploadQueue(const std::shared_ptr<const Webservice>& webservice,
                                               const Session& session,
                                               const std::vector<URL>& files, bool isInline,
                                               const std::shared_ptr<RunActivity>& activity)
    : session_(session),
      progress_(platform::Progress::create(
          static_cast<std::int64_t>(items(session).size() - activity->uploadedItems().size()) *
          kUnitsPerItem)),
      hasFileForEachItem_(items(session).size() <= files.size()) {
  const auto& sessionItems = items(session_);
  const auto pairCount = std::min(sessionItems.size(), files.size());
  const std::set<std::size_t> uploaded(activity->uploadedItems().begin(),
                                       activity->uploadedItems().end());
  queue_.reserve(pairCount);
  for (std::size_t i = 0; i < pairCount; ++i) {
    if (uploaded.contains(i)) continue;
    auto uploader =
        SessionItemUploader::create(webservice, session_, sessionItems[i], files[i], isInline);
    uploader->reportTo(activity, queue_.size());
    queue_.push_back(std::move(uploader));
  }
}

void SessionItemUploadQueue::start(Completion completion) {
  setCompletion(std::move(completion));
  if (items(session_).empty()) return finish(QuillbayCloudError::missingItems());
  if (!hasFileForEachItem_) return finish(QuillbayCloudError::invalidResponse());
  uploadNextItem();
}

void SessionItemUploadQueue::setCompletion(Completion completion) {
  completion_ = completion ? std::make_shared<Completion>(std::move(completion)) : nullptr;
}

void SessionItemUploadQueue::uploadNextItem() {
  if (cancelled_) {
    Log::debug(kUploadNextItem, [] { return "We are cancelled, will not upload next item"; });
    return;
  }
  if (queue_.empty()) {
    Log::debug(kUploadNextItem, [] { return "No more uploads left, we are done"; });
    return finish();
  }
  const auto uploader = std::move(queue_.back());
  queue_.pop_back();
  uploader->upload(progress_,
                   [weakSelf = weak_from_this()](const SessionItemUploader::Result& result) {
                     const auto self = weakSelf.lock();
                     if (!self) return;
                     if (!result) return self->finish(result.error());
                     self->uploadNextItem();
                   });
  currentUploader_ = uploader;
}

void SessionItemUploadQueue::finish() { report({}); }

void SessionItemUploadQueue::finish(const QuillbayCloudError& error) {
  report(std::unexpected(error));
}

void SessionItemUploadQueue::report(Result result) {
  DispatchQueue::main().async([weakSelf = weak_from_this(), result = std::move(result)]() mutable {
    const auto self = weakSelf.lock();
    if (!self) return;
    if (const auto completion = self->completion_) (*completion)(std::move(result));
  });
}

}  // namespace quillbay::cloud
