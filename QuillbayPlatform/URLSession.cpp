#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/SerialQueue.h>
#include <QuillbayPlatform/URLSession.h>
#include <QuillbayPlatform/network/Engine.h>

#include <atomic>
#include <utility>

namespace quillbay::platform {
namespace {

/// The network thread reads smaller replies sooner than it would wake another thread, or in the
/// time of a few other requests.
constexpr std::size_t kSmallReplyByteCount = 256UZ << 10;

// A transfer that could not start has no response, and may end within the call that starts it.
bool isSmallReply(const Transfer::Outcome& outcome) {
  return outcome.response && outcome.data && outcome.data->size() <= kSmallReplyByteCount;
}

class Task final : public URLSessionTask {
 public:
  Task(URLRequest request, std::optional<URL> bodyFile,
       URLSession::CompletionHandler completionHandler, std::shared_ptr<SerialQueue> callbackQueue)
      : progress_(TaskProgress::create()),
        transfer_(std::make_unique<Transfer>(
            std::move(request), std::move(bodyFile), progress_,
            makeFinish(std::move(completionHandler), std::move(callbackQueue)))) {}

  void resume() override {
    if (resumed_.exchange(true)) return;
    Engine::shared().start(std::move(transfer_));
  }

  const std::shared_ptr<Progress>& progress() const override { return progress_->progress(); }

 private:
  static Transfer::Finish makeFinish(URLSession::CompletionHandler completionHandler,
                                     std::shared_ptr<SerialQueue> callbackQueue);

  const std::shared_ptr<TaskProgress> progress_;
  std::unique_ptr<Transfer> transfer_;
  std::atomic<bool> resumed_ = false;
};

Transfer::Finish Task::makeFinish(URLSession::CompletionHandler completionHandler,
                                  std::shared_ptr<SerialQueue> callbackQueue) {
  return [handler = std::move(completionHandler),
          queue = std::move(callbackQueue)](Transfer::Outcome outcome) mutable {
    const bool isSmall = isSmallReply(outcome);
    auto call = [handler = std::move(handler), outcome = std::move(outcome)]() mutable {
      handler(std::move(outcome.data), std::move(outcome.response), std::move(outcome.error));
      // What the handler still holds may be the host's: it is destroyed where the host lives.
      DispatchQueue::main().async([spent = std::move(handler)] {});
    };
    if (isSmall) return queue->runHereOrAsync(std::move(call));
    queue->async(std::move(call));
  };
}

}  // namespace

URLSession::URLSession() : callbackQueue_(SerialQueue::create()) {}

URLSession& URLSession::shared() {
  static constinit OnFirstUse<URLSession> session;
  return session.get([] { return std::unique_ptr<URLSession>(new URLSession); });
}

std::shared_ptr<URLSession> URLSession::create() {
  return std::shared_ptr<URLSession>(new URLSession);
}

std::shared_ptr<URLSessionTask> URLSession::dataTask(URLRequest request,
                                                     CompletionHandler completionHandler) {
  return std::make_shared<Task>(std::move(request), std::nullopt, std::move(completionHandler),
                                callbackQueue_);
}

std::shared_ptr<URLSessionTask> URLSession::uploadTask(URLRequest request, URL fileURL,
                                                       CompletionHandler completionHandler) {
  return std::make_shared<Task>(std::move(request), std::move(fileURL),
                                std::move(completionHandler), callbackQueue_);
}

}  // namespace quillbay::platform
