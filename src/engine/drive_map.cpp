#include "engine/drive_map.h"

#include <system_error>

#include "text/char_set.h"
#include "text/upper_case.h"
#include "text/utf8_path.h"

namespace regvex {

namespace {

char DriveKey(char drive) {
    return drive >= 'a' && drive <= 'z' ? static_cast<char>(drive - 'a' + 'A') : drive;
}

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

// Characters Windows refuses in a file name, besides the control characters.
constexpr text::CharSet kInvalidInNames("<>:\"|?*");

bool HasInvalidCharacter(std::string_view name) {
    for (const char c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || kInvalidInNames.Contains(c)) {
            return true;
        }
    }
    return false;
}

// Appends the names below the drive root of `rest` to `normal` ("\name" each) after
// Windows' own normalisation; false when the path names nothing a file could be.
bool AppendNormalised(std::string_view rest, std::string& normal) {
    const std::size_t root_length = normal.size();
    std::size_t start = 0;
    while (start <= rest.size()) {
        std::size_t end = start;
        while (end < rest.size() && !IsSeparator(rest[end])) {
            ++end;
        }
        std::string_view name = rest.substr(start, end - start);
        if (end >= rest.size() && name != "." && name != "..") {
            // Trailing dots and blanks of the last name do not count.
            while (!name.empty() && (name.back() == '.' || name.back() == ' ')) {
                name.remove_suffix(1);
            }
        }
        if (name == "..") {
            const std::size_t last = normal.rfind('\\');
            if (last != std::string::npos && last >= root_length) {
                normal.resize(last);
            }
        } else if (!name.empty() && name != ".") {
            if (HasInvalidCharacter(name)) {
                return false;
            }
            normal.push_back('\\');
            normal.append(name);
        }
        start = end + 1;
    }
    return true;
}

}  // namespace

void DriveMapFileExistence::Map(char drive, std::filesystem::path folder) {
    drives_[DriveKey(drive)] = std::move(folder);
    folders_.clear();
    last_answer_ = -1;
}

bool DriveMapFileExistence::IsMapped(char drive) const {
    return drives_.count(DriveKey(drive)) != 0;
}

const DriveMapFileExistence::Folder* DriveMapFileExistence::Remember(const std::string& upper_path,
                                                                     std::filesystem::path real) {
    std::error_code error;
    if (!std::filesystem::is_directory(real, error)) {
        return nullptr;
    }
    if (folders_.size() >= kCachedFolders) {
        folders_.clear();
    }
    Folder& folder = folders_[upper_path];
    folder.real = std::move(real);
    for (std::filesystem::directory_iterator it(folder.real, error), end; !error && it != end;
         it.increment(error)) {
        std::string name = text::Utf8FromPath(it->path().filename());
        Entry& entry = folder.entries[text::UpperCase(name)];
        std::error_code type_error;
        if (!it->is_directory(type_error)) {
            entry.has_file = true;
        } else if (!entry.has_folder) {
            // Of folders whose names differ only in case, the first one listed wins.
            entry.has_folder = true;
            entry.folder_name = std::move(name);
        }
    }
    return &folder;
}

const DriveMapFileExistence::Folder* DriveMapFileExistence::FolderAt(std::string_view upper_path) {
    if (auto known = folders_.find(upper_path); known != folders_.end()) {
        return &known->second;
    }
    const std::size_t slash = upper_path.rfind('\\');
    if (slash == std::string_view::npos) {
        // The drive itself, "C:".
        auto drive = drives_.find(upper_path[0]);
        return drive == drives_.end() ? nullptr : Remember(std::string(upper_path), drive->second);
    }
    const Folder* parent = FolderAt(upper_path.substr(0, slash));
    if (parent == nullptr) {
        return nullptr;
    }
    auto entry = parent->entries.find(upper_path.substr(slash + 1));
    if (entry == parent->entries.end() || !entry->second.has_folder) {
        return nullptr;
    }
    // Copied before Remember, which may drop every folder it knows, this parent included.
    std::filesystem::path real = parent->real / text::PathFromUtf8(entry->second.folder_name);
    return Remember(std::string(upper_path), std::move(real));
}

int DriveMapFileExistence::Check(const std::string& path) {
    if (last_answer_ < 0 || path != last_path_) {
        last_answer_ = Answer(path);
        last_path_ = path;
    }
    return last_answer_;
}

int DriveMapFileExistence::Answer(const std::string& path) {
    // Only absolute paths on a mapped drive: "X:\..." or "X:/...".
    if (path.size() < 3 || path[1] != ':' || !IsSeparator(path[2]) || !IsMapped(path[0])) {
        return 0;
    }
    raw_.assign({DriveKey(path[0]), ':'});
    if (!AppendNormalised(std::string_view(path).substr(3), raw_)) {
        return 0;
    }
    text::UpperCaseInto(raw_, normal_);
    const std::size_t slash = normal_.rfind('\\');
    if (slash == std::string::npos) {
        return FolderAt(normal_) != nullptr ? 1 : 0;
    }
    const Folder* folder = FolderAt(std::string_view(normal_).substr(0, slash));
    if (folder == nullptr) {
        return 0;
    }
    return folder->entries.contains(std::string_view(normal_).substr(slash + 1)) ? 1 : 0;
}

}  // namespace regvex
