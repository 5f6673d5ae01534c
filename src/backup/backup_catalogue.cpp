#include "backup/backup_catalogue.h"

#include <algorithm>

#include "engine/run_time_error.h"
#include "text/concat.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::backup {

namespace {

constexpr int kErrorFileNotFound = 53;

std::size_t CharCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t pos = 0; pos < text.size(); ++count) {
        text::DecodeUtf8(text, pos);
    }
    return count;
}

bool HasRegExtension(std::string_view name) {
    constexpr std::string_view kExtension = ".REG";
    return name.size() > kExtension.size() &&
           text::UpperCase(name.substr(name.size() - kExtension.size())) == kExtension;
}

}  // namespace

std::string BackupDateText(std::string_view file_name) {
    const std::size_t length = CharCount(file_name);
    if (length < 5) {
        throw RunTimeError(kErrorInvalidProcedureCall,
                           text::Concat({"\"", file_name, "\" is not the name of a backup"}));
    }
    std::string t(file_name);
    std::replace(t.begin(), t.end(), '-', '/');
    std::replace(t.begin(), t.end(), '.', ':');
    t = std::string(text::LeftChars(t, length - 5));
    const std::size_t paren = file_name.find('(');
    if (paren == std::string_view::npos) {
        return t;
    }
    return paren + 1 < t.size() ? t.substr(paren + 1) : std::string();
}

std::string BackupSizeText(std::uint64_t size) {
    if (size < 1024) {
        return text::Concat({std::to_string(size), " Bytes"});
    }
    // Hundredths of a kilobyte, rounded half up.
    const std::uint64_t hundredths = (size * 100 + 512) / 1024;
    std::string result = std::to_string(hundredths / 100) + ".";
    const std::uint64_t fraction = hundredths % 100;
    if (fraction != 0) {
        result += static_cast<char>('0' + fraction / 10);
        if (fraction % 10 != 0) {
            result += static_cast<char>('0' + fraction % 10);
        }
    }
    return result + " KB";
}

std::vector<std::string> BackupFileNames(system::FileSystem& files, const std::string& folder) {
    std::vector<std::string> names = files.FileNames(folder);
    std::erase_if(names, [](const std::string& name) { return !HasRegExtension(name); });
    std::vector<std::pair<std::string, std::string>> keyed;
    keyed.reserve(names.size());
    for (std::string& name : names) {
        keyed.emplace_back(text::UpperCase(name), std::move(name));
    }
    // Names that read alike in UTF-16 (malformed bytes all read as U+FFFD) are ordered by
    // their bytes, so that the order stays a strict one.
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        const int order = text::CompareUtf16Order(a.first, b.first);
        return order != 0 ? order < 0 : a.second < b.second;
    });
    names.clear();
    for (auto& [key, name] : keyed) {
        names.push_back(std::move(name));
    }
    return names;
}

void ListBackups(system::FileSystem& files, const std::string& folder,
                 std::vector<BackupEntry>& entries) {
    int number = 0;
    for (const std::string& name : BackupFileNames(files, folder)) {
        BackupEntry entry;
        entry.number_text = "Backup #" + std::to_string(++number);
        entry.date_text = BackupDateText(name);
        const auto size = files.FileSize(text::Concat({folder, "\\", name}));
        if (!size) {
            throw RunTimeError(kErrorFileNotFound,
                               text::Concat({"The backup \"", name, "\" cannot be read."}));
        }
        entry.size_text = BackupSizeText(*size);
        entry.file_name = name;
        entries.push_back(std::move(entry));
    }
}

}  // namespace regvex::backup
