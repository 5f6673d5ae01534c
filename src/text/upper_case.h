#pragma once
// Upper-casing as the program's matching rules need it: the simple one-to-one mapping of
// Unicode for the Latin, Greek, Cyrillic and Armenian alphabets (and full-width Latin).
// Mappings that change the number of characters (German sharp s to SS) are not applied,
// as Windows does not apply them either.

#include <string>
#include <string_view>

namespace regvex::text {

char32_t UpperCaseCodePoint(char32_t code_point);

std::string UpperCase(std::string_view text);

// The same, into a caller's buffer (hot paths reuse one buffer).
void UpperCaseInto(std::string_view text, std::string& out);

// True when `upper_needle` (already upper-cased) occurs in the upper-cased `text`.
// `scratch` is only used for text that is not plain ASCII.
bool ContainsUpperCased(std::string_view text, std::string_view upper_needle, std::string& scratch);

// Orders two upper-cased texts as Windows orders registry key names: by UTF-16 code
// units. Negative, zero or positive.
int CompareUtf16Order(std::string_view a, std::string_view b);

}  // namespace regvex::text
