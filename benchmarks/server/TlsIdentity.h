#pragma once

#include <filesystem>

#include "benchmarks/support/OpenSslHandles.h"

namespace quillbay::bench {

/// Makes a certificate authority, writes its certificate to `authorityFile` (PEM), and returns a
/// server context with a certificate from it for the service's and the store's host names.
TlsContext makeServerContext(const std::filesystem::path& authorityFile);

}  // namespace quillbay::bench
