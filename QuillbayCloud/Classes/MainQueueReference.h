#pragma once

#include <QuillbayPlatform/DispatchQueue.h>

#include <memory>
#include <utility>

namespace quillbay::cloud {

/// Internal: a strong reference taken on a background queue. It is released on the main queue,
/// because it may be the last one and its object belongs there.
template <class T>
class MainQueueReference {
 public:
  explicit MainQueueReference(const std::weak_ptr<T>& object) : object_(object.lock()) {}
  MainQueueReference(const MainQueueReference&) = delete;
  MainQueueReference& operator=(const MainQueueReference&) = delete;
  ~MainQueueReference() {
    if (object_) platform::DispatchQueue::main().async([object = std::move(object_)] {});
  }

  explicit operator bool() const { return object_ != nullptr; }
  T* operator->() const { return object_.get(); }

 private:
  std::shared_ptr<T> object_;
};

}  // namespace quillbay::cloud
