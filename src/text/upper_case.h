#pragma once
// Upper-casing as the program's matching rules need it: the simple one-to-one mapping of
// Unicode for the Latin, Greek, Cyrillic and Armenian alphabets (and full-width Latin).
// Mappings that change the number of characters (German sharp s to SS) are not applied,
// as Windows does not apply them either.

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace regvex::text {

char32_t UpperCaseCodePoint(char32_t code_point);

std::string UpperCase(std::string_view text);

// The same, into a caller's buffer (hot paths reuse one buffer).
void UpperCaseInto(std::string_view text, std::string& out);

// The offset in `text` at which the upper-cased text has `upper_offset` bytes: the two
// differ where a character changes its length in bytes (dotless i, long s). An offset
// inside a character gives the end of that character; one past the end gives the size.
std::size_t OffsetBeforeUpperCase(std::string_view text, std::size_t upper_offset);

// The ASCII letters that some non-ASCII letter upper-cases to (dotless i, long s).
inline constexpr std::string_view kAsciiImagesOfNonAscii = "IS";

// Whether a non-ASCII character of a text could be part of an occurrence of the
// (upper-cased) needle.
bool NonAsciiTextCanMatch(std::string_view upper_needle);

// A text to look for in other texts without regard to case, prepared once for many
// searches.
class UpperNeedle {
  public:
    UpperNeedle() = default;
    explicit UpperNeedle(std::string upper);

    const std::string& text() const { return upper_; }

    // True when the needle occurs in the upper-cased `text`. `scratch` is only used for
    // text that is not plain ASCII, and only when such text could hold a match.
    bool FoundIn(std::string_view text, std::string& scratch) const {
        // Nearly every text of a scan lacks the needle's caseless character altogether;
        // that is settled here, without a call.
        if (quick_reject_) {
            if (text.size() < upper_.size() ||
                std::memchr(text.data() + anchor_, upper_[anchor_],
                            text.size() - upper_.size() + 1) == nullptr) {
                return false;
            }
        }
        return FoundInAnyText(text, scratch);
    }

  private:
    bool FoundInAnyText(std::string_view text, std::string& scratch) const;

    std::string upper_;
    bool non_ascii_can_match_ = false;
    // A character of the needle that has no case, found in a text as it stands.
    std::size_t anchor_ = std::string::npos;
    // Only ASCII can match and there is an anchor: texts without it are rejected at once.
    bool quick_reject_ = false;
};

// Orders two upper-cased texts as Windows orders registry key names: by UTF-16 code
// units. Negative, zero or positive.
int CompareUtf16Order(std::string_view a, std::string_view b);

}  // namespace regvex::text
