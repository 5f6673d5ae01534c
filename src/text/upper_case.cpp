#include "text/upper_case.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "text/utf8.h"

namespace regvex::text {

namespace {

// A block of lower-case letters: every code point in [first, last] whose distance from
// `first` is a multiple of `step` maps to itself plus `delta`.
struct CaseRange {
    char32_t first;
    char32_t last;
    int delta;
    int step;
};

// Sorted by `first`; ranges do not overlap.
constexpr std::array kRanges{
    CaseRange{0x0061, 0x007A, -32, 1},   // a-z
    CaseRange{0x00E0, 0x00F6, -32, 1},   // Latin-1 letters before the division sign
    CaseRange{0x00F8, 0x00FE, -32, 1},   // ... and after it
    CaseRange{0x00FF, 0x00FF, 0x79, 1},  // y with diaeresis
    CaseRange{0x0101, 0x012F, -1, 2},    // Latin Extended-A, pairs upper/lower
    CaseRange{0x0131, 0x0131, -232, 1},  // dotless i
    CaseRange{0x0133, 0x0137, -1, 2},   CaseRange{0x013A, 0x0148, -1, 2},
    CaseRange{0x014B, 0x0177, -1, 2},   CaseRange{0x017A, 0x017E, -1, 2},
    CaseRange{0x017F, 0x017F, -300, 1},  // long s
    CaseRange{0x01C5, 0x01C5, -1, 1},    // digraphs: title case and lower case to upper
    CaseRange{0x01C6, 0x01C6, -2, 1},   CaseRange{0x01C8, 0x01C8, -1, 1},
    CaseRange{0x01C9, 0x01C9, -2, 1},   CaseRange{0x01CB, 0x01CB, -1, 1},
    CaseRange{0x01CC, 0x01CC, -2, 1},   CaseRange{0x01CE, 0x01DC, -1, 2},
    CaseRange{0x01DF, 0x01EF, -1, 2},   CaseRange{0x01F5, 0x01F5, -1, 1},
    CaseRange{0x01F9, 0x021F, -1, 2},   CaseRange{0x0223, 0x0233, -1, 2},
    CaseRange{0x03AC, 0x03AC, -38, 1},                                      // Greek with tonos
    CaseRange{0x03AD, 0x03AF, -37, 1},  CaseRange{0x03B1, 0x03C1, -32, 1},  // Greek alpha-rho
    CaseRange{0x03C2, 0x03C2, -31, 1},                                      // final sigma
    CaseRange{0x03C3, 0x03CB, -32, 1},  CaseRange{0x03CC, 0x03CC, -64, 1},
    CaseRange{0x03CD, 0x03CE, -63, 1},  CaseRange{0x03D9, 0x03EF, -1, 2},
    CaseRange{0x0430, 0x044F, -32, 1},  // Cyrillic
    CaseRange{0x0450, 0x045F, -80, 1},  CaseRange{0x0461, 0x0481, -1, 2},
    CaseRange{0x048B, 0x04BF, -1, 2},   CaseRange{0x04C2, 0x04CE, -1, 2},
    CaseRange{0x04CF, 0x04CF, -15, 1},  CaseRange{0x04D1, 0x052F, -1, 2},
    CaseRange{0x0561, 0x0586, -48, 1},  // Armenian
    CaseRange{0x1E01, 0x1E95, -1, 2},   // Latin Extended Additional
    CaseRange{0x1EA1, 0x1EFF, -1, 2},   CaseRange{0x2170, 0x217F, -16, 1},  // small Roman numerals
    CaseRange{0x24D0, 0x24E9, -26, 1},                                      // circled letters
    CaseRange{0xFF41, 0xFF5A, -32, 1},                                      // full-width Latin
};

constexpr char AsciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}

}  // namespace

char32_t UpperCaseCodePoint(char32_t code_point) {
    if (code_point < 0x80) {
        return static_cast<char32_t>(AsciiUpper(static_cast<char>(code_point)));
    }
    const auto* range =
        std::upper_bound(kRanges.begin(), kRanges.end(), code_point,
                         [](char32_t value, const CaseRange& r) { return value < r.first; });
    if (range == kRanges.begin()) {
        return code_point;
    }
    --range;
    if (code_point > range->last ||
        (code_point - range->first) % static_cast<char32_t>(range->step) != 0) {
        return code_point;
    }
    return static_cast<char32_t>(static_cast<int>(code_point) + range->delta);
}

namespace {

// Upper-cases eight ASCII bytes at once; false (and nothing written) when any of them is
// not ASCII. Adding 0x1F to a byte sets its top bit from 'a' on, adding 0x05 from past
// 'z' on; no byte below 0x80 carries into its neighbour.
bool UpperCaseEightAscii(const char* in, char* out) {
    constexpr std::uint64_t kOnes = 0x0101010101010101u;
    constexpr std::uint64_t kTops = 0x8080808080808080u;
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, in, sizeof chunk);
    if ((chunk & kTops) != 0) {
        return false;
    }
    const std::uint64_t from_a = chunk + (0x80 - 'a') * kOnes;
    const std::uint64_t past_z = chunk + (0x80 - 'z' - 1) * kOnes;
    chunk ^= ((from_a & ~past_z) & kTops) >> 2;  // 0x80 >> 2 is the case bit, 0x20
    std::memcpy(out, &chunk, sizeof chunk);
    return true;
}

}  // namespace

void UpperCaseInto(std::string_view text, std::string& out) {
    // Most texts are plain ASCII: write them eight bytes at a time and only decode from
    // the first byte that is not.
    out.resize(text.size());
    std::size_t pos = 0;
    while (pos + 8 <= text.size() && UpperCaseEightAscii(text.data() + pos, out.data() + pos)) {
        pos += 8;
    }
    for (; pos < text.size() && static_cast<unsigned char>(text[pos]) < 0x80; ++pos) {
        out[pos] = AsciiUpper(text[pos]);
    }
    if (pos == text.size()) {
        return;
    }
    out.resize(pos);
    while (pos < text.size()) {
        const auto byte = static_cast<unsigned char>(text[pos]);
        if (byte < 0x80) {
            out.push_back(AsciiUpper(text[pos]));
            ++pos;
            continue;
        }
        const std::size_t start = pos;
        const char32_t code_point = DecodeUtf8(text, pos);
        const char32_t upper = UpperCaseCodePoint(code_point);
        if (upper == code_point) {
            // Keep the original bytes, malformed ones included.
            out.append(text.substr(start, pos - start));
        } else {
            AppendUtf8(out, upper);
        }
    }
}

std::string UpperCase(std::string_view text) {
    std::string out;
    UpperCaseInto(text, out);
    return out;
}

std::size_t OffsetBeforeUpperCase(std::string_view text, std::size_t upper_offset) {
    // Walks the text as UpperCaseInto writes it, counting the bytes written.
    std::size_t pos = 0;
    std::size_t written = 0;
    while (pos < text.size() && written < upper_offset) {
        if (static_cast<unsigned char>(text[pos]) < 0x80) {
            ++pos;
            ++written;
            continue;
        }
        const std::size_t start = pos;
        const char32_t code_point = DecodeUtf8(text, pos);
        const char32_t upper = UpperCaseCodePoint(code_point);
        if (upper == code_point) {
            written += pos - start;
        } else {
            std::string encoded;
            AppendUtf8(encoded, upper);
            written += encoded.size();
        }
    }
    return pos;
}

bool NonAsciiTextCanMatch(std::string_view upper_needle) {
    return !IsAscii(upper_needle) ||
           upper_needle.find_first_of(kAsciiImagesOfNonAscii) != std::string_view::npos;
}

UpperNeedle::UpperNeedle(std::string upper)
    : upper_(std::move(upper)), non_ascii_can_match_(NonAsciiTextCanMatch(upper_)) {
    for (std::size_t i = 0; i < upper_.size(); ++i) {
        if (AsciiUpper(upper_[i]) == upper_[i] && (upper_[i] < 'A' || upper_[i] > 'Z')) {
            anchor_ = i;
            break;
        }
    }
    quick_reject_ = anchor_ != std::string::npos && !non_ascii_can_match_;
}

bool UpperNeedle::FoundInAnyText(std::string_view text, std::string& scratch) const {
    if (upper_.empty()) {
        return true;
    }
    // Upper-casing the text is only needed where a non-ASCII character could become part
    // of a match; otherwise its bytes (all 0x80 and above) simply never match.
    if (non_ascii_can_match_ && !IsAscii(text)) {
        UpperCaseInto(text, scratch);
        return scratch.find(upper_) != std::string::npos;
    }
    if (upper_.size() > text.size()) {
        return false;
    }
    const std::size_t last_start = text.size() - upper_.size();
    const auto matches_at = [&](std::size_t start) {
        for (std::size_t j = 0; j < upper_.size(); ++j) {
            if (AsciiUpper(text[start + j]) != upper_[j]) {
                return false;
            }
        }
        return true;
    };
    if (anchor_ == std::string::npos) {
        for (std::size_t start = 0; start <= last_start; ++start) {
            if (matches_at(start)) {
                return true;
            }
        }
        return false;
    }
    // A character without case is found by memchr, many bytes at a time; only where it
    // stands is the rest compared.
    const char* const begin = text.data();
    const char* at = begin + anchor_;
    const char* const end = begin + last_start + anchor_ + 1;
    while (at < end) {
        at = static_cast<const char*>(
            std::memchr(at, upper_[anchor_], static_cast<std::size_t>(end - at)));
        if (at == nullptr) {
            return false;
        }
        if (matches_at(static_cast<std::size_t>(at - begin) - anchor_)) {
            return true;
        }
        ++at;
    }
    return false;
}

namespace {

// Code points in UTF-16 code-unit order: the BMP above the surrogates sorts after
// every supplementary character, whose lead surrogates are 0xD800-0xDBFF.
char32_t Utf16SortKey(char32_t code_point) {
    return code_point >= 0xE000 && code_point <= 0xFFFF ? code_point + 0x110000 : code_point;
}

}  // namespace

int CompareUtf16Order(std::string_view a, std::string_view b) {
    std::size_t i = CommonPrefixLength(a, b);
    const auto continues_at = [](std::string_view text, std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    // A byte that is no continuation byte starts a character, in either text, and the
    // shared bytes before it decode alike in both: an end or an ASCII byte there settles
    // the order. A continuation byte in one text only may complete a character there that
    // the other text lacks ("\xDF" against "\xDF\x8F"), so the bytes cannot decide.
    if (!continues_at(a, i) && !continues_at(b, i)) {
        if (i == a.size() || i == b.size()) {
            return a.size() == b.size() ? 0 : (i == a.size() ? -1 : 1);
        }
        const auto ca = static_cast<unsigned char>(a[i]);
        const auto cb = static_cast<unsigned char>(b[i]);
        if (ca < 0x80 && cb < 0x80) {
            return ca < cb ? -1 : 1;
        }
    }
    // Back to the start of the character that differs in either text.
    while (i > 0 && (continues_at(a, i) || continues_at(b, i))) {
        --i;
    }
    std::size_t j = i;
    while (i < a.size() && j < b.size()) {
        const char32_t ka = Utf16SortKey(DecodeUtf8(a, i));
        const char32_t kb = Utf16SortKey(DecodeUtf8(b, j));
        if (ka != kb) {
            return ka < kb ? -1 : 1;
        }
    }
    if (i < a.size()) {
        return 1;
    }
    return j < b.size() ? -1 : 0;
}

}  // namespace regvex::text
