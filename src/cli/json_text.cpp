#include "cli/json_text.h"

#include "text/utf8.h"

namespace regvex::cli {

namespace {

constexpr char32_t kLastC1Control = 0x9F;

void AppendUnicodeEscape(std::string& out, char32_t unit) {
    constexpr std::string_view kHex = "0123456789abcdef";
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        out += kHex[(unit >> shift) & 0x0F];
    }
}

}  // namespace

std::string JsonString(std::string_view text) {
    std::string out = "\"";
    out.reserve(text.size() + 2);
    for (std::size_t pos = 0; pos < text.size();) {
        const auto lead = static_cast<unsigned char>(text[pos]);
        if (lead == '"' || lead == '\\') {
            out += '\\';
            out += static_cast<char>(lead);
            ++pos;
        } else if (lead < 0x20 || lead == 0x7F) {
            AppendUnicodeEscape(out, lead);
            ++pos;
        } else if (lead < 0x80) {
            out += static_cast<char>(lead);
            ++pos;
        } else {
            const std::size_t start = pos;
            const char32_t code_point = text::DecodeUtf8(text, pos);
            if (pos == start + 1) {
                out += "\xEF\xBF\xBD";
            } else if (code_point <= kLastC1Control) {
                AppendUnicodeEscape(out, code_point);
            } else {
                out.append(text.substr(start, pos - start));
            }
        }
    }
    out += '"';
    return out;
}

}  // namespace regvex::cli
