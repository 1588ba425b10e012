#include "benchmarks/support/ShareRequests.h"

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/SessionText.h"

namespace quillbay::bench {
namespace {

using std::filesystem::path;

const std::string kTokenLine = "X-QUILLBAY-SESSION-TOKEN: " + kSessionToken;
const std::string kFingerprint(64, '7');
constexpr const char* kContentType = "application/octet-stream";

ShareRequest creation(const std::string& instance, const std::vector<path>& files) {
  std::string body = R"({"items":[)";
  for (const path& file : files) {
    if (body.back() == '}') body += ',';
    body += R"({"file_name":")" + file.filename().string() + R"(","content_length":")" +
            std::to_string(file_size(file)) + R"(","content_type":")" + kContentType +
            R"(","f":")" + kFingerprint + R"("})";
  }
  body += R"(],"config":{"link_type":"page"}})";
  return {"POST", kServiceBase + instance + "/session", {}, std::move(body), {}, 0};
}

ShareRequest upload(const path& file, const std::string& item) {
  const std::string name = file.filename().string();
  return {"PUT",
          storeAddress(item),
          {"Content-Disposition: attachment; filename=\"" + name + "\"; filename*=UTF-8''" + name,
           std::string("Content-Type: ") + kContentType},
          {},
          file,
          file_size(file)};
}

}  // namespace

std::vector<ShareRequest> shareRequests(const std::string& instance,
                                        const std::vector<path>& files) {
  std::vector<ShareRequest> requests = {creation(instance, files)};
  const std::size_t replyItemCount = instance == kShortReplyInstance ? 1 : files.size();
  const std::string session =
      kServiceBase + instance + "/session/" + sessionIdentifier(replyItemCount) + "/items/";
  for (std::size_t i = files.size(); i-- > 0;) {
    const std::string item = itemIdentifier(i);
    requests.push_back({"PUT",
                        session + item + "/upload_url",
                        {kTokenLine, "X-QUILLBAY-CLOUD-SCP: 1"},
                        {},
                        {},
                        0});
    requests.push_back(upload(files[i], item));
    requests.push_back({"PUT",
                        session + item + "/finalize",
                        {kTokenLine},
                        R"({"etag":"\"9bb58f26192e4ba00f01e2e7b136bbd8\""})",
                        {},
                        0});
  }
  return requests;
}

}  // namespace quillbay::bench
