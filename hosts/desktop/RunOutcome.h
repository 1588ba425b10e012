#pragma once

#include <optional>

#include "NoticePanel.h"

namespace quillbay::host {
class ShareRun;
}

namespace quillbay::desktop {

/// What the user is told of a run that is over and has shared nothing, or not everything: what
/// failed, and what has become of the link. Nothing if everything is as it was asked for. Main
/// thread only.
std::optional<Notice> noticeOf(const host::ShareRun& run);

/// That the service has not confirmed that `link` is deleted.
Notice leftoverNotice(const QString& link);

}  // namespace quillbay::desktop
