#include "engine/file_reference.h"

#include <array>

#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex {

namespace {

// The order is part of the rule: each cut works on what the earlier ones left.
constexpr std::array<std::string_view, 22> kCutExtensions{
    ".SYS", ".EXE", ".DLL", ".OCX", ".OCA", ".VXD", ".AX",  ".COM", ".CPL", ".TLB", ".SCR",
    ".BAT", ".DRV", ".MSI", ".ZIP", ".RAR", ".HLP", ".LNK", ".JPG", ".BMP", ".PDF", ".TXT"};

constexpr std::string_view kCutCharacters = "/*?<>|,(;";

}  // namespace

std::string GetFileDir(std::string_view path) {
    const std::size_t slash = path.rfind('\\');
    return slash == std::string_view::npos ? std::string() : std::string(path.substr(0, slash + 1));
}

std::string GetFileTitle(std::string_view path) {
    if (const std::size_t dot = path.rfind('.'); dot != std::string_view::npos) {
        path = path.substr(0, dot);
    }
    if (const std::size_t slash = path.rfind('\\'); slash != std::string_view::npos) {
        path = path.substr(slash + 1);
    }
    return std::string(path);
}

std::string GetFileExt(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos) {
        return {};
    }
    return std::string(text::LeftChars(path.substr(dot + 1), 3));
}

std::string ValidatePath(std::string_view text, std::string_view scan_drive) {
    std::string s = text::UpperCase(text);

    // A text that does not name the scanned drive ends up rejected below.
    std::size_t drive = s.find(scan_drive);
    if (drive == std::string::npos) {
        s = std::string(scan_drive);
        drive = 0;
    }
    // Quotes, program names and whatever else stands before the drive go.
    s.erase(0, drive);

    // The path as rebuilt from the whole text; the cuts below must arrive at it.
    const std::string expected =
        text::UpperCase(GetFileDir(s) + GetFileTitle(s) + "." + GetFileExt(s));

    for (const std::string_view extension : kCutExtensions) {
        if (const std::size_t at = s.find(extension); at != std::string::npos) {
            s.erase(at + extension.size());
        }
    }
    for (const char c : kCutCharacters) {
        if (const std::size_t at = s.find(c); at != std::string::npos) {
            s.erase(at);
        }
    }
    // Any colon from the third character on cuts at the first colon, which in a text
    // that starts with the drive is the drive's own: such texts are rejected.
    if (s.find(':', 2) != std::string::npos) {
        s.erase(s.find(':'));
    }
    // Only "%1" goes; a blank before it stays.
    for (std::size_t at = s.find("%1"); at != std::string::npos; at = s.find("%1", at)) {
        s.erase(at, 2);
    }

    if (s != expected) {
        return std::string(kRejected);
    }
    return s;
}

}  // namespace regvex
