#pragma once
// Texts as JSON strings, for scripts that read the scan's findings. Control characters,
// DEL and C1 controls are written as \u escapes, so that the output can neither drive a
// terminal nor break a line; a byte that is not UTF-8 becomes U+FFFD.

#include <string>
#include <string_view>

namespace regvex::cli {

// The text as a quoted JSON string.
std::string JsonString(std::string_view text);

}  // namespace regvex::cli
