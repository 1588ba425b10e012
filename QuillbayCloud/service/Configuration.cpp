#include <QuillbayCloud/service/Configuration.h>
#include <QuillbayCloud/service/Log.h>

namespace quillbay::cloud {

constinit std::atomic<const Configuration::EntryPoints*> Log::installed_ = nullptr;

void Configuration::install(const EntryPoints& entryPoints) {
  Log::installed_.store(&entryPoints, std::memory_order_release);
}

}  // namespace quillbay::cloud
