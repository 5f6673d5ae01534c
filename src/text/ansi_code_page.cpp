#include "text/ansi_code_page.h"

#include <array>

#include "text/utf8.h"

namespace regvex::text {

namespace {

// Bytes 0x80-0x9F. The five bytes that Windows-1252 leaves undefined map to the C1
// control characters of the same value, as Windows' own conversion does.
constexpr std::array<char16_t, 32> kHighControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char32_t ByteToCodePoint(unsigned char byte) {
    if (byte >= 0x80 && byte <= 0x9F) {
        return kHighControls[byte - 0x80u];
    }
    return byte;
}

bool CodePointToByte(char32_t code_point, char& byte) {
    if (code_point < 0x80 || (code_point >= 0xA0 && code_point <= 0xFF)) {
        byte = static_cast<char>(code_point);
        return true;
    }
    for (std::size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == code_point) {
            byte = static_cast<char>(0x80 + i);
            return true;
        }
    }
    return false;
}

}  // namespace

std::string Windows1252CodePage::ToUtf8(std::string_view ansi) const {
    std::string out;
    out.reserve(ansi.size());
    for (const char c : ansi) {
        AppendUtf8(out, ByteToCodePoint(static_cast<unsigned char>(c)));
    }
    return out;
}

bool Windows1252CodePage::FromUtf8(std::string_view utf8, std::string& ansi) const {
    ansi.clear();
    ansi.reserve(utf8.size());
    bool lossless = true;
    for (std::size_t pos = 0; pos < utf8.size();) {
        char byte = '?';
        if (!CodePointToByte(DecodeUtf8(utf8, pos), byte)) {
            lossless = false;
        }
        ansi.push_back(byte);
    }
    return lossless;
}

std::size_t Windows1252CodePage::AnsiLength(std::string_view utf8) const {
    return Utf16Length(utf8);
}

const AnsiCodePage& DefaultAnsiCodePage() {
    static const Windows1252CodePage code_page;
    return code_page;
}

}  // namespace regvex::text
