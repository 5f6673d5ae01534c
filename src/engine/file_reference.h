#pragma once
// Cuts the one file path that a found value's text names out of that text, or refuses
// the text as "Rejected". These rules decide what the program reports.

#include <string>
#include <string_view>

namespace regvex {

inline constexpr std::string_view kRejected = "Rejected";

// `scan_drive` is the scanned drive's root in upper case, for example "C:\".
std::string ValidatePath(std::string_view text, std::string_view scan_drive);

// Up to and including the last backslash; empty when there is none.
std::string GetFileDir(std::string_view path);
// Without the last dot and what follows it, then only what follows the last backslash.
std::string GetFileTitle(std::string_view path);
// The first three characters after the last dot; empty when there is no dot.
std::string GetFileExt(std::string_view path);

}  // namespace regvex
