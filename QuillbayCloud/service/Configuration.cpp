#include <QuillbayCloud/service/Configuration.h>

namespace quillbay::cloud {

constinit std::atomic<const Configuration::EntryPoints*> Configuration::log_ = nullptr;

}  // namespace quillbay::cloud
