#include "ui/base/disk_text_files.h"

#include <fstream>
#include <iterator>
#include <system_error>

#include "text/utf8_path.h"

namespace regvex::ui {

bool DiskTextFiles::Exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(text::PathFromUtf8(path), error);
}

std::optional<std::string> DiskTextFiles::Read(const std::string& path) {
    std::ifstream in(text::PathFromUtf8(path), std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) {
        return std::nullopt;
    }
    return bytes;
}

bool DiskTextFiles::Write(const std::string& path, std::string_view bytes) {
    std::ofstream out(text::PathFromUtf8(path), std::ios::binary | std::ios::trunc);
    if (!out) {
        return false;
    }
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return !out.fail();
}

}  // namespace regvex::ui
