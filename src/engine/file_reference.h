#pragma once
// Cuts the one file path that a found value's text names out of that text, or refuses
// the text as "Rejected". These rules decide what the program reports.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace regvex {

inline constexpr std::string_view kRejected = "Rejected";

// `scan_drive` is the scanned drive's root in upper case, for example "C:\".
std::string ValidatePath(std::string_view text, std::string_view scan_drive);

// Where in the upper-cased text the accepted path was cut from: `length` bytes from
// `start`, before "%1" was taken out of them; `path` is the answer of ValidatePath.
struct PathCut {
    std::size_t start = 0;
    std::size_t length = 0;
    std::string path;
};
// The rule of ValidatePath on a text that is upper case already; nothing for "Rejected".
std::optional<PathCut> CutReferencedPath(std::string_view upper_text, std::string_view scan_drive);

// Bytes `length` from `start` of a text.
struct TextSpan {
    std::size_t start = 0;
    std::size_t length = 0;
};
// The bytes of `text` (as it stands, not upper-cased) that ValidatePath reads as the
// path: replacing them replaces that path and nothing else. Nothing when the text is
// rejected, or when the path cannot be pinned to one run of bytes.
std::optional<TextSpan> ReferencedPathSpan(std::string_view text, std::string_view scan_drive);

// Up to and including the last backslash; empty when there is none.
std::string GetFileDir(std::string_view path);
// Without the last dot and what follows it, then only what follows the last backslash.
std::string GetFileTitle(std::string_view path);
// The first three characters after the last dot; empty when there is no dot.
std::string GetFileExt(std::string_view path);

}  // namespace regvex
