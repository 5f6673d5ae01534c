#pragma once
// The backup file that the Fix command writes before it deletes anything: the checked
// findings as the results list shows them, in the Registry Editor's import format, so
// that importing the file puts every value back as a string value.

#include <string>
#include <string_view>
#include <vector>

#include "system/file_system.h"
#include "text/ansi_code_page.h"

namespace regvex::backup {

// One checked row of the results: its root key, its "key path\value name" (a trailing
// backslash names the default value) and its data as display text.
struct BackupRow {
    std::string root_key;
    std::string sub_key;
    std::string value;
};

// Backslashes doubled first, then every double quote preceded by a backslash.
std::string EscapeRegText(std::string_view text);

// A key path or name on one line: CR and LF as the escapes \r and \n, which the
// Registry Editor of Wine and our reader read back.
std::string LineBreaksEscaped(std::string_view text);

// The lines of the file after its header, without line ends: an empty line and a key
// line whenever the key differs from the previous row's, then one value line per row.
// A line break can stand in no quoted text: in a key or value name it is written as the
// escape \r or \n, and data that holds one is written as hex(1) bytes of UTF-16.
std::vector<std::string> BackupLines(const std::vector<BackupRow>& rows);

inline constexpr std::string_view kRegedit4Header = "REGEDIT4";
inline constexpr std::string_view kRegedit5Header = "Windows Registry Editor Version 5.00";

// The whole file: "REGEDIT4" in the ANSI code page with CR LF line ends. When some text
// has no form in that code page, or some data is written as hex bytes, the Unicode export
// format instead (UTF-16LE with a byte-order mark), which the Registry Editor imports to
// the same text.
std::string BackupFileBytes(const std::vector<BackupRow>& rows, const text::AnsiCodePage& ansi);

// "Backup (" + the date text with "/" made "-" and then ":" made "." + ").reg".
std::string BackupFileName(std::string_view date_text);

// The folder of the backups: the program's folder + "\RegBackups".
std::string BackupsFolder(std::string_view program_folder);

// Writes the backup of `rows` into the backups folder (created when missing) under the
// name made from `date_text`, replacing a file of that name, and answers its path.
// Throws a run-time error when the folder or the file cannot be written.
std::string CreateBackupFile(system::FileSystem& files, std::string_view program_folder,
                             std::string_view date_text, const std::vector<BackupRow>& rows,
                             const text::AnsiCodePage& ansi);

// The command line that imports a backup silently with the Registry Editor.
std::string RestoreCommandLine(std::string_view program_folder, std::string_view file_name);

// The command line that shows a backup in Notepad. The path is not quoted: Notepad takes
// the whole rest of its command line as the file name.
std::string ViewCommandLine(std::string_view program_folder, std::string_view file_name);

}  // namespace regvex::backup
