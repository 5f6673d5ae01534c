#include "wine/wine_text.h"

#include <array>
#include <charconv>
#include <memory>

#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::wine {

namespace {

int HexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

char16_t SimpleEscape(char c) {
    switch (c) {
        case 'a':
            return u'\a';
        case 'b':
            return u'\b';
        case 'e':
            return 0x1B;
        case 'f':
            return u'\f';
        case 'n':
            return u'\n';
        case 'r':
            return u'\r';
        case 't':
            return u'\t';
        case 'v':
            return u'\v';
        default:
            return static_cast<char16_t>(static_cast<unsigned char>(c));
    }
}

void AppendCodePoint(std::u16string& out, char32_t code_point) {
    if (code_point >= 0x10000) {
        code_point -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (code_point >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (code_point & 0x3FF)));
    } else {
        out.push_back(static_cast<char16_t>(code_point));
    }
}

// Lower case of each UTF-16 unit. The program's upper-casing is one-to-one for the
// letters Wine's tables fold too, so its inverse serves; of several letters with one
// upper case (s and long s), the lowest is the lower case.
class LowerCaseTable {
  public:
    LowerCaseTable() {
        for (std::size_t c = 0; c < table_.size(); ++c) {
            table_[c] = static_cast<char16_t>(c);
        }
        // From the top down, so that the lowest of several letters is written last.
        for (std::size_t c = table_.size(); c-- > 0;) {
            if (c >= 0xD800 && c <= 0xDFFF) {
                continue;
            }
            const char32_t upper = text::UpperCaseCodePoint(static_cast<char32_t>(c));
            if (upper != c && upper < table_.size()) {
                table_[upper] = static_cast<char16_t>(c);
            }
        }
    }
    char16_t operator()(char16_t unit) const { return table_[unit]; }

  private:
    std::array<char16_t, 0x10000> table_{};
};

}  // namespace

bool ReadEscapedText(std::string_view line, std::size_t& pos, char end_char, std::u16string& out) {
    out.clear();
    while (pos < line.size() && line[pos] != end_char) {
        const char c = line[pos];
        if (c != '\\') {
            if (static_cast<unsigned char>(c) < 0x80) {
                out.push_back(static_cast<char16_t>(c));
                ++pos;
            } else {
                AppendCodePoint(out, text::DecodeUtf8(line, pos));
            }
            continue;
        }
        if (++pos == line.size()) {
            return false;
        }
        const char escaped = line[pos];
        if (escaped >= '0' && escaped <= '7') {
            unsigned value = 0;
            for (int digits = 0;
                 digits < 3 && pos < line.size() && line[pos] >= '0' && line[pos] <= '7';
                 ++digits, ++pos) {
                value = value * 8 + static_cast<unsigned>(line[pos] - '0');
            }
            out.push_back(static_cast<char16_t>(value));
        } else if (escaped == 'x' && pos + 1 < line.size() && HexValue(line[pos + 1]) >= 0) {
            ++pos;
            unsigned value = 0;
            for (int digits = 0; digits < 4 && pos < line.size() && HexValue(line[pos]) >= 0;
                 ++digits, ++pos) {
                value = value * 16 + static_cast<unsigned>(HexValue(line[pos]));
            }
            out.push_back(static_cast<char16_t>(value));
        } else {
            out.push_back(SimpleEscape(escaped));
            ++pos;
        }
    }
    return pos < line.size();
}

void AppendEscapedText(std::string& out, std::u16string_view units) {
    static constexpr std::string_view kCEscapes = ".......abtnvfr.............e....";
    // Lower-case digits, at least `width` of them.
    const auto append_number = [&out](unsigned value, int base, std::size_t width) {
        char digits[8];
        const auto written =
            static_cast<std::size_t>(std::to_chars(digits, digits + 8, value, base).ptr - digits);
        out.append(width > written ? width - written : 0, '0');
        out.append(digits, written);
    };
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        const bool last = i + 1 == units.size();
        const char16_t next = last ? u'\0' : units[i + 1];
        if (unit > 127) {
            out += "\\x";
            const bool hex_follows = next < 128 && HexValue(static_cast<char>(next)) >= 0;
            append_number(unit, 16, hex_follows ? 4 : 1);
        } else if (unit < 32) {
            if (unit == 0 && last) {
                continue;
            }
            out.push_back('\\');
            if (kCEscapes[unit] != '.') {
                out.push_back(kCEscapes[unit]);
            } else {
                append_number(unit, 8, next >= u'0' && next <= u'7' ? 3 : 1);
            }
        } else {
            if (unit == u'\\' || unit == u'"') {
                out.push_back('\\');
            }
            out.push_back(static_cast<char>(unit));
        }
    }
}

bool ReadEscapedUtf8(std::string_view line, std::size_t& pos, char end_char, std::string& out) {
    // Most names and strings are plain ASCII without escapes, and are their own UTF-8.
    const std::size_t end = line.find(end_char, pos);
    if (end != std::string_view::npos) {
        const std::string_view plain = line.substr(pos, end - pos);
        if (plain.find('\\') == std::string_view::npos && text::IsAscii(plain)) {
            out.assign(plain);
            pos = end;
            return true;
        }
    }
    std::u16string units;
    const bool ended = ReadEscapedText(line, pos, end_char, units);
    out = text::Utf16ToUtf8(units);
    return ended;
}

std::string Utf8FromUtf16Bytes(std::string_view bytes) {
    std::u16string units;
    units.reserve((bytes.size() + 1) / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0u;
        units.push_back(static_cast<char16_t>(low | (high << 8)));
    }
    return text::Utf16ToUtf8(units);
}

std::u16string WineOrderForm(std::string_view utf8_name) {
    static const auto lower = std::make_unique<LowerCaseTable>();
    if (text::IsAscii(utf8_name)) {
        std::u16string form(utf8_name.size(), u'\0');
        for (std::size_t i = 0; i < utf8_name.size(); ++i) {
            const char c = utf8_name[i];
            form[i] = static_cast<char16_t>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        }
        return form;
    }
    std::u16string form = text::Utf8ToUtf16(utf8_name);
    for (char16_t& unit : form) {
        unit = (*lower)(unit);
    }
    return form;
}

}  // namespace regvex::wine
