#pragma once

#include <expected>
#include <string>
#include <vector>

#include "SecretSource.h"

namespace quillbay::cli {

class Interruption;

/// How the paths of a list are told apart.
enum class PathSeparator { newline, null };

/// Reads the paths listed in `file`, as they are; "-" is standard input. Empty ones are passed
/// over. A list without a path, one of more than 64 MiB, and one of lines that holds a NUL byte are
/// refused. The wait for a pipe's other end, or for a person at a terminal, ends at the first
/// Ctrl-C.
std::expected<std::vector<std::string>, SecretSource::Failure> readPathList(
    const std::string& file, PathSeparator separator, const Interruption& interruption);

}  // namespace quillbay::cli
