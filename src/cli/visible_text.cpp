#include "cli/visible_text.h"

#include "text/utf8.h"

namespace regvex::cli {

namespace {

constexpr char32_t kLastC1Control = 0x9F;

void AppendByteEscape(std::string& out, unsigned char byte) {
    constexpr std::string_view kHex = "0123456789abcdef";
    out += "\\x";
    out += kHex[byte >> 4];
    out += kHex[byte & 0x0F];
}

}  // namespace

std::string VisibleText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const auto lead = static_cast<unsigned char>(text[pos]);
        if (lead == '\\') {
            out += "\\\\";
            ++pos;
        } else if (lead < 0x20 || lead == 0x7F) {
            AppendByteEscape(out, lead);
            ++pos;
        } else if (lead < 0x80) {
            out += static_cast<char>(lead);
            ++pos;
        } else {
            const std::size_t start = pos;
            const char32_t code_point = text::DecodeUtf8(text, pos);
            // A malformed sequence gives way one byte at a time, each shown as a byte; a
            // well-formed U+FFFD takes its three bytes and stands.
            const bool malformed = pos == start + 1;
            if (malformed || code_point <= kLastC1Control) {
                for (std::size_t i = start; i < pos; ++i) {
                    AppendByteEscape(out, static_cast<unsigned char>(text[i]));
                }
            } else {
                out.append(text.substr(start, pos - start));
            }
        }
    }
    return out;
}

}  // namespace regvex::cli
