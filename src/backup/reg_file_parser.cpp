#include "backup/reg_file_parser.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "engine/registry.h"
#include "text/hex_digit.h"
#include "text/utf8.h"

namespace regvex::backup {

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
void ParseHexBytes(std::string_view list, std::size_t base, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    if (Trim(list).empty()) {
        return;
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
            return;
        }
        start = comma + 1;
    }
}

RootKeyHandle RootFromName(std::string_view name) {
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

// Refuses what the registry refuses, so that the message can name the line. `path` has
// no empty names.
void CheckKeyPath(std::string_view path) {
    std::size_t depth = 0;
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        const std::string_view name = path.substr(start, end - start);
        if (text::Utf16Length(name) > reg::kMaxKeyNameChars) {
            throw LineFault{0, "key name " + Quote(name) + " is longer than the " +
                                   std::to_string(reg::kMaxKeyNameChars) +
                                   " characters a registry key name may have"};
        }
        if (++depth > reg::kMaxKeyDepth) {
            throw LineFault{0, "the key path is more than " + std::to_string(reg::kMaxKeyDepth) +
                                   " levels deep, deeper than the registry goes"};
        }
        start = end + 1;
    }
}

RegFileError HeaderError(std::size_t line) {
    return RegFileError{
        line, "the file must start with \"REGEDIT4\" or \"" + std::string(kVersion5Header) + "\""};
}

}  // namespace

std::size_t RegFileParser::JoinedLine::LineAt(std::size_t at) const {
    const auto after = std::upper_bound(
        starts.begin(), starts.end(), at,
        [](std::size_t offset, const auto& start) { return offset < start.first; });
    return after == starts.begin() ? starts.front().second : std::prev(after)->second;
}

RegFileParser::RegFileParser(RegFileLines& lines, const text::AnsiCodePage& ansi)
    : lines_(lines), ansi_(ansi) {}

std::optional<RegFileError> RegFileParser::ReadHeader() {
    std::string_view line;
    do {
        if (!lines_.Next(line)) {
            return lines_.error() ? *lines_.error() : HeaderError(lines_.line_number());
        }
    } while (Trim(line).empty());
    const std::string_view header = Trim(line);
    if (header == kRegedit4Header) {
        version5_ = false;
    } else if (header == kVersion5Header) {
        version5_ = true;
    } else {
        return HeaderError(lines_.line_number());
    }
    return std::nullopt;
}

RegFileParser::Step RegFileParser::Next(RegFileChange& change, RegFileError& error) {
    std::string_view raw;
    while (lines_.Next(raw)) {
        const std::string_view line = TrimLeft(raw);
        if (line.empty() || line.front() == ';') {
            continue;
        }
        change.line = lines_.line_number();
        bool joined = false;
        try {
            if (line.front() == '[') {
                ParseKeyLine(line, change);
                return Step::kChange;
            }
            if (line.front() != '"' && line.front() != '@') {
                throw LineFault{0, "expected a [key] line, a value line or a ; comment"};
            }
            joined = true;
            JoinContinuedLines(line);
            if (lines_.error()) {
                break;  // the file's own fault comes first
            }
            ParseValueLine(joined_.text, change);
            return Step::kChange;
        } catch (const LineFault& fault) {
            error = RegFileError{joined ? joined_.LineAt(fault.at) : change.line, fault.message};
            return Step::kError;
        }
    }
    if (lines_.error()) {
        error = *lines_.error();
        return Step::kError;
    }
    return Step::kEnd;
}

// Joins `first` with the lines that continue it. `first` is used before the next line is
// read, which replaces it.
void RegFileParser::JoinContinuedLines(std::string_view first) {
    joined_.text.clear();
    joined_.starts.clear();
    joined_.starts.emplace_back(0, lines_.line_number());
    std::string_view piece = first;
    while (true) {
        const std::string_view trimmed = TrimRight(piece);
        if (trimmed.empty() || trimmed.back() != '\\') {
            joined_.text.append(piece);
            return;
        }
        joined_.text.append(trimmed.substr(0, trimmed.size() - 1));
        std::string_view next;
        if (!lines_.Next(next)) {
            return;
        }
        piece = TrimLeft(next);
        joined_.starts.emplace_back(joined_.text.size(), lines_.line_number());
    }
}

void RegFileParser::ParseKeyLine(std::string_view line, RegFileChange& change) {
    const std::size_t close = line.rfind(']');
    if (close == std::string_view::npos) {
        throw LineFault{0, "expected \"]\" at the end of the key name"};
    }
    std::string_view name = line.substr(1, close - 1);
    // Windows could not hold it, and the scan would see the name cut at the NUL.
    if (name.find('\0') != std::string_view::npos) {
        throw LineFault{0, "the key name has a NUL character in it"};
    }
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
    CheckKeyPath(path);

    change.kind = remove ? RegFileChange::Kind::kDeleteKey : RegFileChange::Kind::kOpenKey;
    change.root = root;
    change.path.assign(path);
    in_key_ = !remove;
}

void RegFileParser::ParseValueLine(std::string_view line, RegFileChange& change) {
    change.name.clear();
    std::size_t pos = 1;
    if (line.front() == '"' && !ReadQuoted(line, pos, change.name)) {
        throw LineFault{0, "the value name has no closing quote"};
    }
    if (change.name.find('\0') != std::string::npos) {
        throw LineFault{0, "the value name has a NUL character in it"};
    }
    if (text::Utf16Length(change.name) > reg::kMaxValueNameChars) {
        throw LineFault{0, "value name " + Quote(change.name) + " is longer than the " +
                               std::to_string(reg::kMaxValueNameChars) +
                               " characters a registry value name may have"};
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
}

// `data` starts at byte `base` of the line.
void RegFileParser::ParseData(std::string_view data, std::size_t base,
                              RegFileChange& change) const {
    change.kind = RegFileChange::Kind::kSetValue;
    change.type = 0;
    change.data.clear();
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
        throw LineFault{base, "the value data must be a \"string\", dword:, hex:, hex(n): or -"};
    }
}

void RegFileParser::ParseHexData(std::string_view data, std::size_t base,
                                 RegFileChange& change) const {
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
    ParseHexBytes(data.substr(pos), base + pos, change.data);
    if (reg::IsTextType(change.type)) {
        const std::string_view raw(reinterpret_cast<const char*>(change.data.data()),
                                   change.data.size());
        const std::string utf8 = version5_ ? Utf16LeToUtf8(raw) : ansi_.ToUtf8(raw);
        change.data.assign(utf8.begin(), utf8.end());
    }
}

}  // namespace regvex::backup
