#include "backup/registry_export.h"

#include <cstdio>
#include <string>
#include <vector>

#include "backup/backup_file.h"
#include "text/utf8.h"

namespace regvex::backup {

namespace {

// Past this many characters a line of hex bytes goes on, after a backslash, on the next;
// the Registry Editor wraps its own exports so.
constexpr std::size_t kHexLineWidth = 77;

void WriteUtf16(std::ostream& out, std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size() * 2);
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void WriteLine(std::ostream& out, std::string_view line) {
    WriteUtf16(out, line);
    WriteUtf16(out, "\r\n");
}

// The bytes a value's data stands for in the file: text types as the UTF-16LE that
// Windows stores, everything else as it is.
std::vector<std::uint8_t> StoredBytes(std::uint32_t type, const std::vector<std::uint8_t>& data) {
    if (!reg::IsTextType(type)) {
        return data;
    }
    std::vector<std::uint8_t> bytes;
    const std::string_view utf8(reinterpret_cast<const char*>(data.data()), data.size());
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

// Whether a REG_SZ comes back exactly from the quoted form: one terminator at its end and
// nothing that the form cannot carry.
bool QuotedFormFits(const std::vector<std::uint8_t>& data) {
    if (data.empty() || data.back() != 0) {
        return false;
    }
    for (std::size_t i = 0; i + 1 < data.size(); ++i) {
        if (data[i] == 0 || data[i] == '\r' || data[i] == '\n') {
            return false;
        }
    }
    const std::string_view text(reinterpret_cast<const char*>(data.data()), data.size() - 1);
    return text::Utf16ToUtf8(text::Utf8ToUtf16(text)) == text;
}

std::string ValueLine(std::string_view name, std::uint32_t type,
                      const std::vector<std::uint8_t>& data) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string line;
    if (name.empty()) {
        line.append("@=");
    } else {
        line.append("\"").append(LineBreaksEscaped(EscapeRegText(name))).append("\"=");
    }
    if (type == reg::kSz && QuotedFormFits(data)) {
        const std::string_view text(reinterpret_cast<const char*>(data.data()), data.size() - 1);
        return line.append("\"").append(EscapeRegText(text)).append("\"");
    }
    if (type == reg::kDword && data.size() == 4) {
        std::uint32_t number = 0;
        for (int i = 3; i >= 0; --i) {
            number = number << 8 | static_cast<std::uint32_t>(data[static_cast<std::size_t>(i)]);
        }
        char digits[9];
        for (int i = 7; i >= 0; --i) {
            digits[7 - i] = kDigits[(number >> (4 * i)) & 0xF];
        }
        digits[8] = '\0';
        return line.append("dword:").append(digits);
    }
    if (type == reg::kBinary) {
        line += "hex:";
    } else {
        char prefix[24];
        std::snprintf(prefix, sizeof prefix, "hex(%x):", static_cast<unsigned>(type));
        line += prefix;
    }
    const std::vector<std::uint8_t> bytes = StoredBytes(type, data);
    std::size_t width = line.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        line += kDigits[bytes[i] >> 4];
        line += kDigits[bytes[i] & 0xF];
        width += 2;
        if (i + 1 < bytes.size()) {
            line += ',';
            ++width;
            if (width >= kHexLineWidth) {
                line += "\\\r\n  ";
                width = 2;
            }
        }
    }
    return line;
}

std::string FullName(RootKeyHandle root, std::string_view path) {
    std::string name = RootKeyName(root);
    if (!path.empty()) {
        name.append("\\").append(path);
    }
    return name;
}

}  // namespace

void WriteExportHeader(std::ostream& out) {
    out.write("\xFF\xFE", 2);
    WriteLine(out, kRegedit5Header);
    WriteLine(out, "");
}

ExportCount WriteExportTree(Registry& registry, RootKeyHandle root, std::string_view path,
                            std::ostream& out) {
    ExportCount count;
    // Depth first without recursion: a registry may be 512 levels deep.
    std::vector<std::string> pending{std::string(path)};
    std::string name;
    std::string value_name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    while (!pending.empty()) {
        const std::string key_path = std::move(pending.back());
        pending.pop_back();
        ScopedKey key;
        if (ScopedKey::Open(registry, root, key_path, reg::kKeyRead, key) != reg::kSuccess) {
            ++count.keys_missed;
            continue;
        }
        std::vector<std::string> lines;
        RegStatus status = reg::kSuccess;
        std::uint32_t index = 0;
        for (; (status = registry.ReadValue(key.get(), index, value_name, type, data)) ==
                   reg::kSuccess ||
               status == reg::kMoreData;
             ++index) {
            // No export file can carry a NUL in a name.
            if (status == reg::kMoreData || value_name.find('\0') != std::string::npos) {
                ++count.values_missed;
            } else {
                lines.push_back(ValueLine(value_name, type, data));
            }
        }
        std::vector<std::string> children;
        for (std::uint32_t i = 0; (status = registry.EnumKey(key.get(), i, name)) == reg::kSuccess;
             ++i) {
            // Neither a NUL nor an empty name can be written, and a path through an empty
            // one would name this key again.
            if (name.empty() || name.find('\0') != std::string::npos) {
                ++count.keys_missed;
                continue;
            }
            children.push_back(key_path);
            if (!key_path.empty()) {
                children.back().append("\\");
            }
            children.back().append(name);
        }
        if (status != reg::kNoMoreItems) {
            ++count.keys_missed;
        }
        // A root is written only when it holds something.
        if (!key_path.empty() || !lines.empty() || !children.empty()) {
            std::string key_line = "[";
            key_line.append(LineBreaksEscaped(FullName(root, key_path))).append("]");
            WriteLine(out, key_line);
            for (const std::string& line : lines) {
                WriteLine(out, line);
            }
            WriteLine(out, "");
            ++count.keys;
            count.values += lines.size();
        }
        for (auto it = children.rbegin(); it != children.rend(); ++it) {
            pending.push_back(std::move(*it));
        }
    }
    return count;
}

void WriteExportKey(std::ostream& out, RootKeyHandle root, std::string_view path,
                    const std::vector<ExportValue>& values) {
    // Appended piece by piece: mingw's optimiser warns about the concatenation.
    std::string line(1, '[');
    line.append(LineBreaksEscaped(FullName(root, path)));
    line.push_back(']');
    WriteLine(out, line);
    for (const ExportValue& value : values) {
        if (value.position) {
            line.assign(kPositionComment);
            line.append(std::to_string(*value.position));
            WriteLine(out, line);
        }
        WriteLine(out, ValueLine(value.name, value.type, value.data));
    }
    WriteLine(out, "");
}

}  // namespace regvex::backup
