#include "backup/backup_file.h"

#include "engine/run_time_error.h"
#include "text/concat.h"
#include "text/utf8.h"

namespace regvex::backup {

using text::Concat;

namespace {

void ReplaceAll(std::string& text, char from, char to) {
    for (char& c : text) {
        if (c == from) {
            c = to;
        }
    }
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
            Concat({"\"", EscapeRegText(ReverseText(r.substr(0, p))), "\""})};
}

void AppendUtf16Le(std::string& out, std::string_view utf8) {
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    }
}

}  // namespace

std::string ReverseText(std::string_view text) {
    std::string reversed(text.size(), '\0');
    std::size_t end = text.size();
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t start = pos;
        text::DecodeUtf8(text, pos);
        const std::size_t length = pos - start;
        end -= length;
        reversed.replace(end, length, text.substr(start, length));
    }
    return reversed;
}

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
            lines.push_back(Concat({"[", parts.key, "]"}));
        }
        lines.push_back(Concat({parts.name_token, "=\"", EscapeRegText(row.value), "\""}));
        previous_key = std::move(parts.key);
    }
    return lines;
}

std::string BackupFileBytes(const std::vector<BackupRow>& rows, const text::AnsiCodePage& ansi) {
    const std::vector<std::string> lines = BackupLines(rows);
    std::string bytes = Concat({kRegedit4Header, "\r\n"});
    std::string ansi_line;
    bool representable = true;
    for (const std::string& line : lines) {
        if (!ansi.FromUtf8(line, ansi_line)) {
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

std::string CreateBackupFile(FileSystem& files, std::string_view program_folder,
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
