#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "system/file_system.h"
#include "text/utf8_path.h"

namespace regvex::system {

namespace fs = std::filesystem;

bool DiskFileSystem::Exists(const std::string& path) {
    std::error_code error;
    return fs::exists(text::PathFromUtf8(path), error);
}

bool DiskFileSystem::CreateFolder(const std::string& path) {
    std::error_code error;
    return fs::create_directory(text::PathFromUtf8(path), error) && !error;
}

std::vector<std::string> DiskFileSystem::FileNames(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator it(text::PathFromUtf8(folder), error), end; !error && it != end;
         it.increment(error)) {
        std::error_code kind_error;
        if (it->is_regular_file(kind_error)) {
            names.push_back(text::Utf8FromPath(it->path().filename()));
        }
    }
    return names;
}

std::optional<std::uint64_t> DiskFileSystem::FileSize(const std::string& path) {
    std::ifstream file(text::PathFromUtf8(path), std::ios::binary | std::ios::ate);
    if (!file) {
        return std::nullopt;
    }
    const std::streamoff size = file.tellg();
    if (size < 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(size);
}

bool DiskFileSystem::WriteFile(const std::string& path, std::string_view bytes) {
    std::ofstream file(text::PathFromUtf8(path), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return static_cast<bool>(file);
}

std::optional<std::string> DiskFileSystem::ReadFile(const std::string& path) {
    std::ifstream file(text::PathFromUtf8(path), std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) {
        return std::nullopt;
    }
    return bytes;
}

bool DiskFileSystem::RemoveFile(const std::string& path) {
    std::error_code error;
    return fs::remove(text::PathFromUtf8(path), error) && !error;
}

FileSystem::Listing DiskFileSystem::ListFolder(const std::string& folder) {
    Listing listing;
    std::error_code error;
    for (fs::directory_iterator it(text::PathFromUtf8(folder), error), end; !error && it != end;
         it.increment(error)) {
        std::error_code kind_error;
        const fs::file_status status = it->symlink_status(kind_error);
        if (kind_error) {
            continue;
        }
        if (fs::is_directory(status)) {
            listing.folders.push_back(text::Utf8FromPath(it->path().filename()));
        } else if (fs::is_regular_file(status)) {
            listing.files.push_back(text::Utf8FromPath(it->path().filename()));
        }
    }
    return listing;
}

std::optional<std::int64_t> DiskFileSystem::ModifiedTime(const std::string& path) {
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(text::PathFromUtf8(path), error);
    if (error) {
        return std::nullopt;
    }
    const auto since_epoch = std::chrono::file_clock::to_sys(written).time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(since_epoch).count();
}

}  // namespace regvex::system
