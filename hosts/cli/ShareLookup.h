#pragma once

#include <QuillbayPlatform/Date.h>

#include <expected>
#include <optional>
#include <string>

#include "hosts/common/History.h"

namespace quillbay::cli {

/// A share that a command is about, or why there is none, for people.
using FoundShare = std::expected<host::RememberedShare, std::string>;

/// The share with the link or session `name`; without a name the newest one.
FoundShare rememberedShare(host::History& history, const std::optional<std::string>& name);

/// A share whose files can still be uploaded: the one with the link or session `name`, which may
/// have no files left; without a name the newest unfinished one.
FoundShare continuableShare(host::History& history, const std::optional<std::string>& name,
                            platform::Date now);

/// Why nothing may be done with a share that a running program uploads.
std::string inUseText(const host::RememberedShare& share);

}  // namespace quillbay::cli
