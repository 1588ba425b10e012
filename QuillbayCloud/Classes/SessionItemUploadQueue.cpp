#include <QuillbayCloud/Classes/SessionItemUploadQueue.h>
#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/service/Log.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include <algorithm>
#include <cstdint>
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
    const std::vector<URL>& items, bool isInline) {
  return std::shared_ptr<SessionItemUploadQueue>(
      new SessionItemUploadQueue(webservice, session, items, isInline));
}

SessionItemUploadQueue::SessionItemUploadQueue(const std::shared_ptr<const Webservice>& webservice,
                                               const Session& session,
                                               const std::vector<URL>& files, bool isInline)
    : session_(session),
      progress_(platform::Progress::create(static_cast<std::int64_t>(items(session).size()) *
                                           kUnitsPerItem)) {
  const auto& sessionItems = items(session_);
  const auto pairCount = std::min(sessionItems.size(), files.size());
  queue_.reserve(pairCount);
  for (std::size_t i = 0; i < pairCount; ++i) {
    queue_.push_back(
        SessionItemUploader::create(webservice, session_, sessionItems[i], files[i], isInline));
  }
}

void SessionItemUploadQueue::start(Completion completion) {
  setCompletion(std::move(completion));
  if (items(session_).empty()) return finish(QuillbayCloudError::missingItems());
  if (queue_.size() < items(session_).size()) return finish(QuillbayCloudError::invalidResponse());
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
