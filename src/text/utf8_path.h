#pragma once
// File-system paths from and to UTF-8. A plain std::string would be read in the ANSI
// code page on Windows and lose every character outside it.

#include <filesystem>
#include <string>
#include <string_view>

namespace regvex::text {

inline std::filesystem::path PathFromUtf8(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

inline std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string utf8 = path.u8string();
    return std::string(utf8.begin(), utf8.end());
}

}  // namespace regvex::text
