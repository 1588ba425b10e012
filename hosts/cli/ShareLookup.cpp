#include "ShareLookup.h"

#include <algorithm>

#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using host::RememberedShare;
using Failure = std::unexpected<std::string>;
using State = RememberedShare::State;

std::string linkOf(const RememberedShare& share) {
  return host::inQuotes(share.session.url().absoluteString());
}

FoundShare newestUnfinished(host::History& history, platform::Date now) {
  const auto shares = history.shares();
  const auto found = std::ranges::find_if(shares, [&](const RememberedShare& share) {
    return share.state == State::unfinished && !share.isExpired(now);
  });
  if (found == shares.end()) return Failure("no share is unfinished");
  return *found;
}

}  // namespace

FoundShare rememberedShare(host::History& history, const std::optional<std::string>& name) {
  auto share = name ? history.find(*name) : history.newest();
  if (share) return std::move(*share);
  if (!name) return Failure("the history is empty");
  return Failure(host::inQuotes(*name) + " is not in the history; see 'quillbay list --all'");
}

FoundShare continuableShare(host::History& history, const std::optional<std::string>& name,
                            platform::Date now) {
  if (!name) return newestUnfinished(history, now);
  auto share = rememberedShare(history, name);
  if (!share) return share;
  if (share->state == State::deleted) return Failure(linkOf(*share) + " was deleted");
  if (share->isExpired(now)) return Failure(linkOf(*share) + " has expired");
  return share;
}

std::string inUseText(const RememberedShare& share) {
  return "another program is uploading " + linkOf(share);
}

}  // namespace quillbay::cli
