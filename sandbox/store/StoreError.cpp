#include "sandbox/store/StoreError.h"

#include "sandbox/support/Hex.h"
#include "sandbox/support/Markup.h"
#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

Reply StoreError::reply(const std::string& resource) const {
  const std::string requestIdentifier = hexEncode(randomBytes(8));
  Reply reply{status_, "application/xml", {}, headers_};
  reply.headers.emplace_back("x-amz-request-id", requestIdentifier);
  reply.body = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Error><Code>" + escapeMarkup(code_) +
               "</Code><Message>" + escapeMarkup(what()) + "</Message><Resource>" +
               escapeMarkup(resource) + "</Resource><RequestId>" + requestIdentifier +
               "</RequestId></Error>";
  return reply;
}

}  // namespace quillbay::sandbox
