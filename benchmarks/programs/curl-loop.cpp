// bench-curl-loop AUTHORITY-FILE ROUTE INSTANCE FILE...: the requests of a share of these files in
// a tight libcurl loop: one handle, no fingerprints, replies received and thrown away.

#include <curl/curl.h>

#include <cstdio>
#include <memory>

#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/ShareRequests.h"

namespace quillbay::bench {
namespace {

using Easy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::size_t throwAway(char* /*bytes*/, std::size_t size, std::size_t count,
                      void* /*context*/) noexcept {
  return size * count;
}

HeaderList headerList(const ShareRequest& request) {
  curl_slist* list = curl_slist_append(nullptr, "Expect:");
  const char* unwanted = request.file.empty() ? "Content-Type:" : "Accept:";
  list = curl_slist_append(list, unwanted);
  for (const auto& line : request.headerLines) list = curl_slist_append(list, line.c_str());
  return {list, curl_slist_free_all};
}

File setBody(CURL* easy, const ShareRequest& request) {
  File file(nullptr, std::fclose);
  if (request.file.empty()) {
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "gzip");
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.c_str());
    return file;
  }
  file.reset(std::fopen(request.file.c_str(), "rbe"));
  if (!file) fail("cannot open " + request.file.string());
  curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
  curl_easy_setopt(easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(request.fileByteCount));
  curl_easy_setopt(easy, CURLOPT_READDATA, file.get());
  return file;
}

void perform(CURL* easy, const ShareRequest& request, const std::string& authorityFile,
             curl_slist* routes) {
  curl_easy_reset(easy);
  curl_easy_setopt(easy, CURLOPT_URL, request.url.c_str());
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(easy, CURLOPT_CAINFO, authorityFile.c_str());
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy, CURLOPT_CONNECT_TO, routes);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, throwAway);
  curl_easy_setopt(easy, CURLOPT_FAILONERROR, 1L);
  const File file = setBody(easy, request);
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  const HeaderList headers = headerList(request);
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers.get());
  const CURLcode code = curl_easy_perform(easy);
  if (code != CURLE_OK) fail(curl_easy_strerror(code));
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 4) {
    fail("usage: bench-curl-loop AUTHORITY-FILE ROUTE INSTANCE FILE...");
  };
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const Easy easy(curl_easy_init(), curl_easy_cleanup);
  const HeaderList routes(curl_slist_append(nullptr, arguments[1].c_str()), curl_slist_free_all);
  for (const auto& request :
       shareRequests(arguments[2], {arguments.begin() + 3, arguments.end()})) {
    perform(easy.get(), request, arguments[0], routes.get());
  }
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-curl-loop", argumentCount, arguments,
                                     quillbay::bench::run);
}
