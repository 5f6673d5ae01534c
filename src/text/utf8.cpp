#include "text/utf8.h"

#include <cstdint>
#include <cstring>

namespace regvex::text {

namespace {

bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

}  // namespace

char32_t DecodeUtf8(std::string_view text, std::size_t& pos) {
    const auto lead = static_cast<unsigned char>(text[pos]);
    if (lead < 0x80) {
        ++pos;
        return lead;
    }
    std::size_t length = 0;
    char32_t code_point = 0;
    char32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        code_point = lead & 0x1Fu;
        minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        code_point = lead & 0x0Fu;
        minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        code_point = lead & 0x07u;
        minimum = 0x10000;
    } else {
        ++pos;
        return kReplacementCharacter;
    }
    if (pos + length > text.size()) {
        ++pos;
        return kReplacementCharacter;
    }
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[pos + i]);
        if (!IsContinuation(byte)) {
            ++pos;
            return kReplacementCharacter;
        }
        code_point = (code_point << 6) | (byte & 0x3Fu);
    }
    if (code_point < minimum || code_point > 0x10FFFF ||
        (code_point >= 0xD800 && code_point <= 0xDFFF)) {
        ++pos;
        return kReplacementCharacter;
    }
    pos += length;
    return code_point;
}

void AppendUtf8(std::string& out, char32_t code_point) {
    if (code_point < 0x80) {
        out.push_back(static_cast<char>(code_point));
    } else if (code_point < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code_point >> 6)));
        out.push_back(static_cast<char>(0x80 | (code_point & 0x3F)));
    } else if (code_point < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code_point >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code_point >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code_point & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code_point >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code_point >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code_point >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code_point & 0x3F)));
    }
}

std::u16string Utf8ToUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const char32_t code_point = DecodeUtf8(text, pos);
        if (code_point >= 0x10000) {
            const char32_t offset = code_point - 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(code_point));
        }
    }
    return out;
}

std::string Utf16ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            const char32_t high = unit - 0xD800u;
            const char32_t low = text[i + 1] - 0xDC00u;
            AppendUtf8(out, 0x10000 + (high << 10) + low);
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            AppendUtf8(out, kReplacementCharacter);
        } else {
            AppendUtf8(out, unit);
        }
    }
    return out;
}

std::size_t Utf16Length(std::string_view text) {
    std::size_t units = 0;
    for (std::size_t pos = 0; pos < text.size();) {
        units += DecodeUtf8(text, pos) >= 0x10000 ? 2 : 1;
    }
    return units;
}

std::string_view LeftChars(std::string_view text, std::size_t count) {
    std::size_t pos = 0;
    // ASCII characters are one byte each.
    while (pos < count && pos < text.size() && static_cast<unsigned char>(text[pos]) < 0x80) {
        ++pos;
    }
    if (pos == count || pos == text.size()) {
        return text.substr(0, pos);
    }
    count -= pos;
    for (std::size_t taken = 0; taken < count && pos < text.size(); ++taken) {
        DecodeUtf8(text, pos);
    }
    return text.substr(0, pos);
}

std::size_t CommonPrefixLength(std::string_view a, std::string_view b) {
    const std::size_t length = a.size() < b.size() ? a.size() : b.size();
    std::size_t i = 0;
    for (; i + 8 <= length; i += 8) {
        std::uint64_t wa = 0;
        std::uint64_t wb = 0;
        std::memcpy(&wa, a.data() + i, 8);
        std::memcpy(&wb, b.data() + i, 8);
        if (wa != wb) {
            break;
        }
    }
    while (i < length && a[i] == b[i]) {
        ++i;
    }
    return i;
}

std::string ReverseText(std::string_view text) {
    std::string reversed(text.size(), '\0');
    std::size_t end = text.size();
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t start = pos;
        DecodeUtf8(text, pos);
        const std::size_t length = pos - start;
        end -= length;
        reversed.replace(end, length, text.substr(start, length));
    }
    return reversed;
}

bool IsAscii(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

}  // namespace regvex::text
