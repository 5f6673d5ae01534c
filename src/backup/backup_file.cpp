#include "backup/backup_file.h"

#include <algorithm>

#include "engine/run_time_error.h"
#include "text/concat.h"
#include "text/utf8.h"

namespace regvex::backup {

using text::Concat;
using text::ReverseText;

namespace {

void ReplaceAll(std::string& text, char from, char to) {
    for (char& c : text) {
        if (c == from) {
            c = to;
        }
    }
}

// No quoted text of the import format can hold a line break: one would end the value's
// line there, and what followed would be read as lines of their own, key lines
// included. Names keep them as the escapes the Registry Editor of Wine reads back; data,
// which must come back exactly, is written as the bytes of a string value instead.
bool HasLineBreak(std::string_view text) {
    return text.find_first_of("\r\n") != std::string_view::npos;
}

}  // namespace

std::string LineBreaksEscaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '\r') {
            out.append("\\r");
        } else if (c == '\n') {
            out.append("\\n");
        } else {
            out.push_back(c);
        }
    }
    return out;
}

namespace {

// A REG_SZ as UTF-16LE bytes with its terminator, which only the Unicode format carries.
std::string HexStringData(std::string_view utf8) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out = "hex(1):";
    const auto append_byte = [&](unsigned byte) {
        out.push_back(kDigits[byte >> 4]);
        out.push_back(kDigits[byte & 0xF]);
        out.push_back(',');
    };
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        append_byte(unit & 0xFFu);
        append_byte(unit >> 8);
    }
    out.append("00,00");
    return out;
}

struct KeyAndName {
    std::string key;
    std::string name_token;
};

// Splits "ROOT\key path\name" at its last backslash, working on the reversed text.
KeyAndName SplitFullPath(const std::string& full) {
    const std::string reversed = ReverseText(full);
    if (!reversed.empty() && reversed.front() == '\\') {
        return {ReverseText(std::string_view(reversed).substr(1)), "@"};
    }
    // The root key's name always puts a backslash in the text.
    const std::size_t p = reversed.find('\\');
    const std::string_view r(reversed);
    return {ReverseText(r.substr(p + 1)),
            Concat({"\"", LineBreaksEscaped(EscapeRegText(ReverseText(r.substr(0, p)))), "\""})};
}

void AppendUtf16Le(std::string& out, std::string_view utf8) {
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    }
}

}  // namespace

std::string EscapeRegText(std::string_view text) {
    std::string doubled;
    doubled.reserve(text.size() + 8);
    for (const char c : text) {
        doubled.push_back(c);
        if (c == '\\') {
            doubled.push_back('\\');
        }
    }
    std::string escaped;
    escaped.reserve(doubled.size() + 8);
    for (const char c : doubled) {
        if (c == '"') {
            escaped.push_back('\\');
        }
        escaped.push_back(c);
    }
    return escaped;
}

std::vector<std::string> BackupLines(const std::vector<BackupRow>& rows) {
    std::vector<std::string> lines;
    std::string previous_key;
    for (const BackupRow& row : rows) {
        KeyAndName parts = SplitFullPath(Concat({row.root_key, "\\", row.sub_key}));
        if (parts.key != previous_key) {
            lines.emplace_back();
            lines.push_back(Concat({"[", LineBreaksEscaped(parts.key), "]"}));
        }
        if (HasLineBreak(row.value)) {
            lines.push_back(Concat({parts.name_token, "=", HexStringData(row.value)}));
        } else {
            lines.push_back(Concat({parts.name_token, "=\"", EscapeRegText(row.value), "\""}));
        }
        previous_key = std::move(parts.key);
    }
    return lines;
}

std::string BackupFileBytes(const std::vector<BackupRow>& rows, const text::AnsiCodePage& ansi) {
    const std::vector<std::string> lines = BackupLines(rows);
    std::string bytes = Concat({kRegedit4Header, "\r\n"});
    std::string ansi_line;
    bool representable = std::none_of(rows.begin(), rows.end(),
                                      [](const BackupRow& row) { return HasLineBreak(row.value); });
    for (const std::string& line : lines) {
        if (!representable || !ansi.FromUtf8(line, ansi_line)) {
            representable = false;
            break;
        }
        bytes.append(ansi_line).append("\r\n");
    }
    if (representable) {
        return bytes;
    }
    std::string unicode = "\xFF\xFE";
    AppendUtf16Le(unicode, Concat({kRegedit5Header, "\r\n"}));
    for (const std::string& line : lines) {
        AppendUtf16Le(unicode, Concat({line, "\r\n"}));
    }
    return unicode;
}

std::string BackupFileName(std::string_view date_text) {
    std::string stamp(date_text);
    ReplaceAll(stamp, '/', '-');
    ReplaceAll(stamp, ':', '.');
    return Concat({"Backup (", stamp, ").reg"});
}

std::string BackupsFolder(std::string_view program_folder) {
    return Concat({program_folder, "\\RegBackups"});
}

std::string CreateBackupFile(system::FileSystem& files, std::string_view program_folder,
                             std::string_view date_text, const std::vector<BackupRow>& rows,
                             const text::AnsiCodePage& ansi) {
    constexpr int kErrorPathFileAccess = 75;
    const std::string folder = BackupsFolder(program_folder);
    if (!files.Exists(folder) && !files.CreateFolder(folder)) {
        throw RunTimeError(kErrorPathFileAccess,
                           Concat({"The folder \"", folder, "\" cannot be created."}));
    }
    const std::string path = Concat({folder, "\\", BackupFileName(date_text)});
    if (!files.WriteFile(path, BackupFileBytes(rows, ansi))) {
        throw RunTimeError(kErrorPathFileAccess,
                           Concat({"The backup \"", path, "\" cannot be written."}));
    }
    return path;
}

std::string RestoreCommandLine(std::string_view program_folder, std::string_view file_name) {
    return Concat({"regedit.exe /s \"", BackupsFolder(program_folder), "\\", file_name, "\""});
}

std::string ViewCommandLine(std::string_view program_folder, std::string_view file_name) {
    return Concat({"notepad.exe ", BackupsFolder(program_folder), "\\", file_name});
}

}  // namespace regvex::backup
