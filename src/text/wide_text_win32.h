#pragma once
// The one place where the program's UTF-8 text meets the UTF-16 of the Windows API.
// Every W call takes its text from ToWide and hands its answer back through FromWide.

#include <string>
#include <string_view>

namespace regvex::text {

// Malformed UTF-8 becomes U+FFFD; embedded NULs are kept.
std::wstring ToWide(std::string_view utf8);

// Unpaired surrogates become U+FFFD; embedded NULs are kept.
std::string FromWide(std::wstring_view wide);

}  // namespace regvex::text
