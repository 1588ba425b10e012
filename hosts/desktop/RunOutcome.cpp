#include "RunOutcome.h"

#include "Localized.h"
#include "ShownText.h"
#include "hosts/common/ShareRun.h"

namespace quillbay::desktop {
namespace {

using Fate = host::ShareRun::SessionFate;
using Result = host::ShareRun::Result;

QString fateText(const host::ShareRun& run) {
  const auto& session = run.session();
  const QString link = session ? textOf(session->url()) : QString();
  switch (run.sessionFate()) {
    case Fate::unfinished:
      if (!run.isRemembered()) return localized("unfinished.forgotten").arg(link);
      return localized("unfinished.message").arg(run.arrivedFileCount()).arg(run.files().count());
    case Fate::deleted:
      return localized("failure.link-deleted");
    case Fate::perhapsThere:
      return leftoverNotice(link).text;
    case Fate::none:
    case Fate::perhapsMade:
    case Fate::complete:
      break;
  }
  return {};
}

}  // namespace

Notice leftoverNotice(const QString& link) {
  return {localized("leftover.title"), localized("leftover.message").arg(link)};
}

std::optional<Notice> noticeOf(const host::ShareRun& run) {
  const QString fate = fateText(run);
  if (run.result() == Result::failed) {
    const bool isUnfinished = run.sessionFate() == Fate::unfinished;
    const QString reason = run.failure() ? adviceText(run.failure()->advice) : QString();
    return Notice{localized(isUnfinished ? "unfinished.title" : "failure.title"),
                  fate.isEmpty() ? reason : reason + "\n\n" + fate};
  }
  if (run.sessionFate() == Fate::unfinished) return Notice{localized("stopped.title"), fate};
  if (run.sessionFate() == Fate::perhapsThere) return Notice{localized("leftover.title"), fate};
  return std::nullopt;
}

}  // namespace quillbay::desktop
