#pragma once
// UTF-8 is the text of all portable code. These helpers convert to and from UTF-16
// (the registry's and Windows' own form) and count characters where a rule counts them.

#include <cstddef>
#include <string>
#include <string_view>

namespace regvex::text {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// Decodes the code point at `pos` and advances `pos` past it. Malformed input yields
// U+FFFD and advances by one byte, so decoding always makes progress.
char32_t DecodeUtf8(std::string_view text, std::size_t& pos);

void AppendUtf8(std::string& out, char32_t code_point);

std::u16string Utf8ToUtf16(std::string_view text);

// Unpaired surrogates become U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text);

// Length in UTF-16 code units: what Windows counts as characters.
std::size_t Utf16Length(std::string_view text);

// The first `count` characters (code points) of `text`, or all of it.
std::string_view LeftChars(std::string_view text, std::size_t count);

// The text with its characters (code points) in reverse order.
std::string ReverseText(std::string_view text);

bool IsAscii(std::string_view text);

// How many leading bytes two texts share; compared eight bytes at a time.
std::size_t CommonPrefixLength(std::string_view a, std::string_view b);

}  // namespace regvex::text
