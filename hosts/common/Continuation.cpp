#include "Continuation.h"

#include <string>
#include <utility>

namespace quillbay::host {

Continuation Continuation::of(const RememberedShare& share,
                              const std::vector<RememberedFile>& files) {
  ShareRun::Unfinished rest{
      .session = share.session, .uploadedItems = {}, .historyIdentifier = share.identifier};
  std::vector<std::string> paths;
  for (std::size_t index = 0; index < files.size(); ++index) {
    paths.push_back(files[index].path);
    if (files[index].hasArrived) rest.uploadedItems.push_back(index);
  }
  return {.configuration =
              cloud::SessionConfiguration(share.session.title(), share.session.expirationDate(),
                                          share.linkType, std::nullopt, false),
          .files = SharedFiles(std::move(paths)),
          .share = std::move(rest)};
}

}  // namespace quillbay::host
