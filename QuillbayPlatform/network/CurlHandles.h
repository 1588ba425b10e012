#pragma once

#include <curl/curl.h>

#include <memory>

namespace quillbay::platform {

struct EasyDeleter {
  void operator()(CURL* easy) const noexcept { curl_easy_cleanup(easy); }
};
struct MultiDeleter {
  void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
};
struct StringListDeleter {
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};

using EasyHandle = std::unique_ptr<CURL, EasyDeleter>;
using MultiHandle = std::unique_ptr<CURLM, MultiDeleter>;
using StringList = std::unique_ptr<curl_slist, StringListDeleter>;

inline void append(StringList& list, const char* text) {
  curl_slist* extended = curl_slist_append(list.get(), text);
  if (extended == nullptr) return;
  (void)list.release();
  list.reset(extended);
}

}  // namespace quillbay::platform
