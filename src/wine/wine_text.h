#pragma once
// The text rules of Wine's registry: the escapes of its registry files, and the order in
// which its server keeps and enumerates key and value names.

#include <cstddef>
#include <string>
#include <string_view>

namespace regvex::wine {

// Reads an escaped text that starts at `pos` and ends before the first unescaped
// `end_char`, as Wine writes names and string data: "\\", "\"" and any other escaped
// character stand for that character; \a \b \e \f \n \r \t \v are the C escapes; \ooo (up
// to three octal digits) and \xhhhh (up to four hex digits) are UTF-16 code units; other
// bytes are UTF-8. On success `pos` is at `end_char` and `out` holds the UTF-16 units
// without a terminator; false when the text ends before `end_char`.
bool ReadEscapedText(std::string_view line, std::size_t& pos, char end_char, std::u16string& out);

// Appends `units` as Wine's server writes a value's name or string data between quotes:
// the reverse of ReadEscapedText, in its exact choices (C escapes where there is one, the
// shortest octal or hex form unless a digit follows, a last NUL left out as a terminator).
void AppendEscapedText(std::string& out, std::u16string_view units);

// The same, as UTF-8 (unpaired surrogates become U+FFFD).
bool ReadEscapedUtf8(std::string_view line, std::size_t& pos, char end_char, std::string& out);

// UTF-16 code units (a lone trailing byte as a unit of its own) as UTF-8.
std::string Utf8FromUtf16Bytes(std::string_view bytes);

// The form of a name that Wine sorts and compares by: its UTF-16 units lower-cased.
// Ordinal order of these forms, the shorter first where one begins the other, is Wine's
// order of keys and values alike.
std::u16string WineOrderForm(std::string_view utf8_name);

}  // namespace regvex::wine
