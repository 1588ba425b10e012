#pragma once

#include <QuillbayPlatform/URL.h>

#include <QString>
#include <cstddef>
#include <cstdint>
#include <string>

namespace quillbay::host {
struct FailureAdvice;
}

namespace quillbay::desktop {

/// Texts of others as the window shows them. Functions of their arguments; any thread.

/// `name` with U+FFFD in place of control characters, line breaks and marks that reorder a line:
/// with those "photo<U+202E>gpj.exe" would show as "photoexe.jpg".
QString shownName(const std::string& name);

/// The same in at most 60 characters, shortened in the middle: for names within a sentence.
QString shownShortName(const std::string& name);

/// "1 byte", "999 bytes", "1.2 kB", in the program's language.
QString byteCountText(std::uint64_t byteCount);

/// How many files and how large in all: "3 files, 1.2 MB".
QString extentText(std::size_t fileCount, std::uint64_t byteCount);

/// "Photo (1.2 MB)", "Photo and 2 more (1.2 MB)": `first`, a shown name, of `fileCount` files.
QString filesText(const QString& first, std::size_t fileCount, std::uint64_t byteCount);

/// What failed and what to do about it, a sentence each in lines of their own.
QString adviceText(const host::FailureAdvice& advice);

/// The whole address.
QString textOf(const platform::URL& url);

/// `text` for a tooltip, which would take it for markup if it looked like it.
QString tooltip(const QString& text);

}  // namespace quillbay::desktop
