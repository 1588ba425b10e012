#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>

#include <vector>

#include "History.h"
#include "ShareRun.h"
#include "SharedFiles.h"

namespace quillbay::host {

/// What a `ShareRun` needs to continue a share of the history.
struct Continuation {
  /// Looks at the files. `files` are those of `share`, in the order of the list.
  static Continuation of(const RememberedShare& share, const std::vector<RememberedFile>& files);

  cloud::SessionConfiguration configuration;
  SharedFiles files;
  ShareRun::Unfinished share;
};

}  // namespace quillbay::host
