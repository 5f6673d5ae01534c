#include "backup/reg_file_parser.h"

#include <array>
#include <optional>
#include <utility>

#include "engine/registry.h"
#include "text/hex_digit.h"
#include "text/utf8.h"

namespace regvex {

namespace {

constexpr std::string_view kRegedit4Header = "REGEDIT4";
constexpr std::string_view kVersion5Header = "Windows Registry Editor Version 5.00";

// Longest piece of the file's own text that a message quotes; a garbled line can be
// megabytes long.
constexpr std::size_t kQuotedChars = 40;

// A fault at byte `at` of the (possibly continued) line being parsed. Thrown only inside
// this file and caught where the line's number is known.
struct LineFault {
    std::size_t at;
    std::string message;
};

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view TrimLeft(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::string_view TrimRight(std::string_view text) {
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view Trim(std::string_view text) {
    return TrimRight(TrimLeft(text));
}

std::string Quote(std::string_view text) {
    const std::string_view shown = text::LeftChars(text, kQuotedChars);
    std::string out = "\"";
    out.append(shown);
    if (shown.size() < text.size()) {
        out.append("...");
    }
    out.push_back('"');
    return out;
}

// 1 to 8 hexadecimal digits and nothing else.
bool ParseHex32(std::string_view digits, std::uint32_t& value) {
    if (digits.empty() || digits.size() > 8) {
        return false;
    }
    value = 0;
    for (const char c : digits) {
        const int digit = text::HexDigitValue(c);
        if (digit < 0) {
            return false;
        }
        value = (value << 4) | static_cast<std::uint32_t>(digit);
    }
    return true;
}

std::size_t CountLines(std::string_view text) {
    std::size_t lines = 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'))) {
            ++lines;
        }
    }
    return lines;
}

// A lone trailing byte is taken as a unit with a zero high byte rather than refused: a
// REG_SZ of odd length is what some programs really leave behind, and refusing it would
// make the whole export impossible to restore.
std::string Utf16LeToUtf8(std::string_view bytes) {
    std::u16string units;
    units.reserve((bytes.size() + 1) / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0u;
        units.push_back(static_cast<char16_t>(low | (high << 8)));
    }
    return text::Utf16ToUtf8(units);
}

// Malformed sequences become U+FFFD so that only valid UTF-8 reaches the registry.
std::string RepairUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (std::size_t pos = 0; pos < bytes.size();) {
        text::AppendUtf8(out, text::DecodeUtf8(bytes, pos));
    }
    return out;
}

std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' || text[i] == '\r') {
            lines.push_back(text.substr(start, i - start));
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
                ++i;
            }
            start = i + 1;
        }
    }
    lines.push_back(text.substr(start));
    return lines;
}

// A value line with its continuation lines joined, remembering where each physical line
// starts so that a fault deep in a long hex list names the line it is on.
struct JoinedLine {
    std::string text;
    std::vector<std::pair<std::size_t, std::size_t>> starts;  // (offset in text, line number)

    std::size_t LineAt(std::size_t at) const {
        std::size_t line = starts.front().second;
        for (const auto& [offset, number] : starts) {
            if (offset <= at) {
                line = number;
            }
        }
        return line;
    }
};

// Joins lines[index] with the lines that continue it and leaves `index` on the last one.
JoinedLine JoinContinuedLines(const std::vector<std::string_view>& lines, std::size_t& index) {
    JoinedLine joined;
    std::string_view piece = TrimLeft(lines[index]);
    joined.starts.emplace_back(0, index + 1);
    while (true) {
        const std::string_view trimmed = TrimRight(piece);
        if (trimmed.empty() || trimmed.back() != '\\') {
            joined.text.append(piece);
            return joined;
        }
        joined.text.append(trimmed.substr(0, trimmed.size() - 1));
        if (index + 1 == lines.size()) {
            return joined;
        }
        ++index;
        piece = TrimLeft(lines[index]);
        joined.starts.emplace_back(joined.text.size(), index + 1);
    }
}

// Reads a quoted text whose opening quote is just before `pos` and leaves `pos` past the
// closing quote. Regedit escapes only the backslash and the quote; Wine's also writes
// "\n". Any other backslash is part of the text, as older hand-written files expect.
bool ReadQuoted(std::string_view text, std::size_t& pos, std::string& out) {
    while (pos < text.size()) {
        const char c = text[pos++];
        if (c == '"') {
            return true;
        }
        if (c == '\\' && pos < text.size()) {
            const char next = text[pos];
            if (next == '\\' || next == '"') {
                out.push_back(next);
                ++pos;
                continue;
            }
            if (next == 'n') {
                out.push_back('\n');
                ++pos;
                continue;
            }
        }
        out.push_back(c);
    }
    return false;
}

// `list` starts at byte `base` of the line.
std::vector<std::uint8_t> ParseHexBytes(std::string_view list, std::size_t base) {
    std::vector<std::uint8_t> bytes;
    if (Trim(list).empty()) {
        return bytes;
    }
    bytes.reserve(list.size() / 3 + 1);
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = list.find(',', start);
        const bool last = comma == std::string_view::npos;
        const std::string_view raw =
            list.substr(start, last ? std::string_view::npos : comma - start);
        const std::string_view item = Trim(raw);
        const std::size_t at = base + start + (raw.size() - TrimLeft(raw).size());
        if (item.empty()) {
            // One trailing comma is what a continuation into an empty line leaves behind.
            if (!last) {
                throw LineFault{at, "a hex byte is missing between two commas"};
            }
        } else if (item.size() > 2) {
            throw LineFault{at, "hex byte " + Quote(item) + " has more than two digits"};
        } else {
            std::uint32_t value = 0;
            if (!ParseHex32(item, value)) {
                throw LineFault{at, "hex byte " + Quote(item) + " is not hexadecimal"};
            }
            bytes.push_back(static_cast<std::uint8_t>(value));
        }
        if (last) {
            return bytes;
        }
        start = comma + 1;
    }
}

class Parser {
  public:
    explicit Parser(const text::AnsiCodePage& ansi) : ansi_(ansi) {}

    RegFileParse Parse(std::string_view bytes) {
        std::string decoded;
        if (bytes.starts_with("\xFF\xFE")) {
            bytes.remove_prefix(2);
            decoded = Utf16LeToUtf8(bytes);
            if (bytes.size() % 2 != 0) {
                return RegFileError{CountLines(decoded),
                                    "the file ends in the middle of a UTF-16 character"};
            }
        } else if (bytes.starts_with("\xEF\xBB\xBF")) {
            decoded = RepairUtf8(bytes.substr(3));
        } else {
            decoded = ansi_.ToUtf8(bytes);
        }

        const std::vector<std::string_view> lines = SplitLines(decoded);
        std::size_t index = 0;
        if (std::optional<RegFileError> error = ReadHeader(lines, index)) {
            return *std::move(error);
        }
        for (++index; index < lines.size(); ++index) {
            const std::string_view line = TrimLeft(lines[index]);
            if (line.empty() || line.front() == ';') {
                continue;
            }
            line_ = index + 1;
            JoinedLine joined;
            try {
                if (line.front() == '[') {
                    ParseKeyLine(line);
                } else if (line.front() == '"' || line.front() == '@') {
                    joined = JoinContinuedLines(lines, index);
                    ParseValueLine(joined.text);
                } else {
                    throw LineFault{0, "expected a [key] line, a value line or a ; comment"};
                }
            } catch (const LineFault& fault) {
                return RegFileError{joined.starts.empty() ? line_ : joined.LineAt(fault.at),
                                    fault.message};
            }
        }
        return std::move(changes_);
    }

  private:
    std::optional<RegFileError> ReadHeader(const std::vector<std::string_view>& lines,
                                           std::size_t& index) {
        while (index + 1 < lines.size() && Trim(lines[index]).empty()) {
            ++index;
        }
        const std::string_view header = Trim(lines[index]);
        if (header == kRegedit4Header) {
            version5_ = false;
        } else if (header == kVersion5Header) {
            version5_ = true;
        } else {
            return RegFileError{index + 1, "the file must start with \"REGEDIT4\" or \"" +
                                               std::string(kVersion5Header) + "\""};
        }
        return std::nullopt;
    }

    void ParseKeyLine(std::string_view line) {
        const std::size_t close = line.rfind(']');
        if (close == std::string_view::npos) {
            throw LineFault{0, "expected \"]\" at the end of the key name"};
        }
        std::string_view name = line.substr(1, close - 1);
        const bool remove = name.starts_with('-');
        if (remove) {
            name.remove_prefix(1);
        }
        const std::size_t separator = name.find('\\');
        const std::string_view root_name = name.substr(0, separator);
        std::string_view path =
            separator == std::string_view::npos ? std::string_view{} : name.substr(separator + 1);

        const RootKeyHandle root = RootFromName(root_name);
        if (root == kHkeyAll) {
            throw LineFault{0, "unknown root key " + Quote(root_name)};
        }
        // The registry takes one trailing backslash but no empty name inside a path.
        if (path.ends_with('\\')) {
            path.remove_suffix(1);
        }
        if (!path.empty() &&
            (path.starts_with('\\') || path.ends_with('\\') || path.find("\\\\") != path.npos)) {
            throw LineFault{0, "key path " + Quote(name) + " has an empty key name in it"};
        }
        if (remove && path.empty()) {
            throw LineFault{0, "a root key cannot be deleted"};
        }

        RegFileChange& change = changes_.emplace_back();
        change.kind = remove ? RegFileChange::Kind::kDeleteKey : RegFileChange::Kind::kOpenKey;
        change.line = line_;
        change.root = root;
        change.path = std::string(path);
        in_key_ = !remove;
    }

    void ParseValueLine(std::string_view line) {
        RegFileChange change;
        change.line = line_;
        std::size_t pos = 1;
        if (line.front() == '"' && !ReadQuoted(line, pos, change.name)) {
            throw LineFault{0, "the value name has no closing quote"};
        }
        while (pos < line.size() && IsBlank(line[pos])) {
            ++pos;
        }
        if (pos == line.size() || line[pos] != '=') {
            throw LineFault{pos, "expected \"=\" after the value name"};
        }
        ++pos;
        while (pos < line.size() && IsBlank(line[pos])) {
            ++pos;
        }
        if (!in_key_) {
            throw LineFault{0, "value outside of any key"};
        }
        ParseData(TrimRight(line.substr(pos)), pos, change);
        changes_.push_back(std::move(change));
    }

    // `data` starts at byte `base` of the line.
    void ParseData(std::string_view data, std::size_t base, RegFileChange& change) const {
        change.kind = RegFileChange::Kind::kSetValue;
        if (data == "-") {
            change.kind = RegFileChange::Kind::kDeleteValue;
        } else if (data.starts_with('"')) {
            std::size_t pos = 1;
            std::string value;
            if (!ReadQuoted(data, pos, value)) {
                throw LineFault{base, "unterminated string"};
            }
            if (pos != data.size()) {
                throw LineFault{base + pos, "unexpected text after the closing quote"};
            }
            change.type = reg::kSz;
            change.data.assign(value.begin(), value.end());
            change.data.push_back(0);
        } else if (data.starts_with("dword:")) {
            std::uint32_t value = 0;
            if (!ParseHex32(data.substr(6), value)) {
                throw LineFault{base, "dword needs 1 to 8 hexadecimal digits"};
            }
            change.type = reg::kDword;
            change.data = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                           static_cast<std::uint8_t>(value >> 16),
                           static_cast<std::uint8_t>(value >> 24)};
        } else if (data.starts_with("hex")) {
            ParseHexData(data, base, change);
        } else {
            throw LineFault{base,
                            "the value data must be a \"string\", dword:, hex:, hex(n): or -"};
        }
    }

    void ParseHexData(std::string_view data, std::size_t base, RegFileChange& change) const {
        std::size_t pos = 3;
        change.type = reg::kBinary;
        if (pos < data.size() && data[pos] == '(') {
            const std::size_t close = data.find(')', pos);
            if (close == std::string_view::npos ||
                !ParseHex32(data.substr(pos + 1, close - pos - 1), change.type)) {
                throw LineFault{base, "the type in hex(n) needs 1 to 8 hexadecimal digits"};
            }
            pos = close + 1;
        }
        if (pos == data.size() || data[pos] != ':') {
            throw LineFault{base + pos, "expected \":\" after " + Quote(data.substr(0, pos))};
        }
        ++pos;
        std::vector<std::uint8_t> bytes = ParseHexBytes(data.substr(pos), base + pos);
        if (reg::IsTextType(change.type)) {
            const std::string_view raw(reinterpret_cast<const char*>(bytes.data()), bytes.size());
            const std::string utf8 = version5_ ? Utf16LeToUtf8(raw) : ansi_.ToUtf8(raw);
            bytes.assign(utf8.begin(), utf8.end());
        }
        change.data = std::move(bytes);
    }

    static RootKeyHandle RootFromName(std::string_view name) {
        static constexpr std::array<std::pair<std::string_view, RootKeyHandle>, 5> kShortNames{{
            {"HKCR", kHkeyClassesRoot},
            {"HKCU", kHkeyCurrentUser},
            {"HKLM", kHkeyLocalMachine},
            {"HKU", kHkeyUsers},
            {"HKCC", kHkeyCurrentConfig},
        }};
        for (const auto& [short_name, root] : kShortNames) {
            if (name == short_name) {
                return root;
            }
        }
        return RootKeyFromName(name);
    }

    const text::AnsiCodePage& ansi_;
    bool version5_ = true;
    bool in_key_ = false;
    std::size_t line_ = 0;
    std::vector<RegFileChange> changes_;
};

}  // namespace

RegFileParse ParseRegText(std::string_view bytes, const text::AnsiCodePage& ansi) {
    return Parser(ansi).Parse(bytes);
}

}  // namespace regvex
