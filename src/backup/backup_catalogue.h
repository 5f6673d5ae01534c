#pragma once
// The backups as the catalogue lists them: which files count, their order, and the
// texts of their date and size columns.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "system/file_system.h"

namespace regvex::backup {

// The date text of a backup file name, the inverse of the file naming: "-" back to "/",
// "." back to ":", the final ").reg" and everything up to the first "(" dropped. A date
// text with dots of its own comes back with colons; that is how the catalogue shows it.
// Throws a run-time error for a name shorter than five characters.
std::string BackupDateText(std::string_view file_name);

// "512 Bytes" below 1024 bytes, else kilobytes with at most two decimals and the point
// kept: "1. KB", "1.5 KB", "1.07 KB".
std::string BackupSizeText(std::uint64_t size);

// The "*.reg" files of the folder, in case-insensitive alphabetical order, as a file
// list shows them.
std::vector<std::string> BackupFileNames(system::FileSystem& files, const std::string& folder);

struct BackupEntry {
    std::string number_text;  // "Backup #1"
    std::string date_text;
    std::string size_text;
    std::string file_name;  // the row's hidden tag
};

// Every backup in the folder, numbered by its place in the listing. Throws a run-time
// error when a file cannot be read or its name gives no date text; the entries listed
// before it are in `entries`.
void ListBackups(system::FileSystem& files, const std::string& folder,
                 std::vector<BackupEntry>& entries);

}  // namespace regvex::backup
