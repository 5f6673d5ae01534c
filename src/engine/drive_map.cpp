#include "engine/drive_map.h"

#include <string_view>
#include <system_error>
#include <vector>

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

// Characters Windows refuses in a file name.
bool HasInvalidCharacter(std::string_view name) {
    for (const char c : name) {
        if (static_cast<unsigned char>(c) < 0x20 ||
            std::string_view("<>:\"|?*").find(c) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

// The components below the drive root after Windows' own normalisation, or false when
// the path names nothing a file could be.
bool NormalisedComponents(std::string_view rest, std::vector<std::string>& components) {
    std::size_t start = 0;
    while (start <= rest.size()) {
        std::size_t end = start;
        while (end < rest.size() && !IsSeparator(rest[end])) {
            ++end;
        }
        std::string name(rest.substr(start, end - start));
        const bool last = end >= rest.size();
        if (last) {
            // Trailing dots and blanks of the last component do not count.
            while (!name.empty() && (name.back() == '.' || name.back() == ' ')) {
                if (name == "." || name == "..") {
                    break;
                }
                name.pop_back();
            }
        }
        if (name == "..") {
            if (!components.empty()) {
                components.pop_back();
            }
        } else if (!name.empty() && name != ".") {
            if (HasInvalidCharacter(name)) {
                return false;
            }
            components.push_back(std::move(name));
        }
        start = end + 1;
    }
    return true;
}

}  // namespace

void DriveMapFileExistence::Map(char drive, std::filesystem::path folder) {
    drives_[DriveKey(drive)] = std::move(folder);
    cache_.clear();
    cache_index_.clear();
}

bool DriveMapFileExistence::IsMapped(char drive) const {
    return drives_.count(DriveKey(drive)) != 0;
}

const DriveMapFileExistence::Listing& DriveMapFileExistence::ListingOf(
    const std::filesystem::path& folder) {
    const std::string key = text::Utf8FromPath(folder);
    if (auto hit = cache_index_.find(key); hit != cache_index_.end()) {
        cache_.splice(cache_.begin(), cache_, hit->second);
        return hit->second->second;
    }
    Listing listing;
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = text::Utf8FromPath(it->path().filename());
        std::error_code type_error;
        // First one wins when a Linux folder holds names that differ only by case.
        listing.emplace(text::UpperCase(name), Entry{name, it->is_directory(type_error)});
    }
    cache_.emplace_front(key, std::move(listing));
    cache_index_[key] = cache_.begin();
    if (cache_.size() > kCachedDirectories) {
        cache_index_.erase(cache_.back().first);
        cache_.pop_back();
    }
    return cache_.front().second;
}

const DriveMapFileExistence::Entry* DriveMapFileExistence::Find(const std::filesystem::path& folder,
                                                                const std::string& name) {
    const Listing& listing = ListingOf(folder);
    auto it = listing.find(text::UpperCase(name));
    return it == listing.end() ? nullptr : &it->second;
}

int DriveMapFileExistence::Check(const std::string& path) {
    // Only absolute paths on a drive: "X:\..." or "X:/...".
    if (path.size() < 3 || path[1] != ':' || !IsSeparator(path[2])) {
        return 0;
    }
    auto drive = drives_.find(DriveKey(path[0]));
    if (drive == drives_.end()) {
        return 0;
    }
    std::vector<std::string> components;
    if (!NormalisedComponents(std::string_view(path).substr(3), components)) {
        return 0;
    }
    std::filesystem::path current = drive->second;
    for (std::size_t i = 0; i < components.size(); ++i) {
        const Entry* entry = Find(current, components[i]);
        if (entry == nullptr || (i + 1 < components.size() && !entry->is_directory)) {
            return 0;
        }
        current /= text::PathFromUtf8(entry->name);
    }
    std::error_code error;
    return std::filesystem::exists(current, error) ? 1 : 0;
}

}  // namespace regvex
