#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/OnFirstUse.h>
#include <QuillbayPlatform/SerialQueue.h>
#include <QuillbayPlatform/WorkerPool.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace quillbay::platform {
namespace {

WorkerPool& globalPool() {
  static constinit OnFirstUse<WorkerPool> pool;
  return pool.get([] {
    const std::size_t threadCount = std::max(2U, std::thread::hardware_concurrency());
    return std::make_unique<WorkerPool>(
        WorkerPool::Settings{.threadName = "quillbay-work",
                             .maximumThreadCount = threadCount,
                             .maximumIdleThreadCount = threadCount});
  });
}

class ConcurrentQueue final : public DispatchQueue {
 public:
  void async(Work work) override {
    if (work) globalPool().submit(std::move(work));
  }
};

}  // namespace

DispatchQueue::~DispatchQueue() = default;

DispatchQueue& DispatchQueue::globalUserInitiated() {
  static constinit OnFirstUse<ConcurrentQueue> queue;
  return queue.get();
}

std::shared_ptr<DispatchQueue> DispatchQueue::makeSerial() { return SerialQueue::create(); }

}  // namespace quillbay::platform
