#include "wine/wine_prefix.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "text/utf8_path.h"
#include "wine/wine_registry_file.h"

namespace regvex::wine {

namespace {

// Wine gives every prefix's user this one identity.
constexpr const char* kWineUserRoot = "User\\S-1-5-21-0-0-0-1000";
// A broken file is reported by its first bad lines; more say nothing new.
constexpr std::size_t kBadLinesReported = 20;

struct RegistryFile {
    const char* name;
    const char* default_root;
    bool required;
};

// Reads one file; false with `result.error` set when the prefix cannot be read.
bool ReadFile(const std::filesystem::path& prefix, const RegistryFile& file, WineKey& top,
              WinePrefixRegistry& result, std::string& root) {
    const std::filesystem::path path = prefix / file.name;
    const std::string shown = text::Utf8FromPath(path);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        if (file.required) {
            result.error = "\"" + text::Utf8FromPath(prefix) +
                           "\" is not a Wine prefix: it has no " + file.name;
            return false;
        }
        result.warnings.push_back(shown + ": missing, read as empty");
        root = file.default_root;
        return true;
    }
    std::ifstream in(path, std::ios::binary);
    WineFileContents contents;
    const auto refused = in ? ReadWineRegistryFile(in, file.default_root, top, contents)
                            : std::optional<std::string>("cannot be opened");
    if (refused) {
        result.error = shown + ": " + *refused;
        return false;
    }
    for (std::size_t i = 0; i < contents.bad_lines.size() && i < kBadLinesReported; ++i) {
        const WineBadLine& bad = contents.bad_lines[i];
        result.warnings.push_back(shown + ":" + std::to_string(bad.line) + ": " + bad.message +
                                  "; the line is skipped, as Wine skips it");
    }
    if (contents.bad_lines.size() > kBadLinesReported) {
        result.warnings.push_back(shown + ": " +
                                  std::to_string(contents.bad_lines.size() - kBadLinesReported) +
                                  " more bad lines skipped");
    }
    root = contents.root;
    result.files.emplace_back(path, root);
    return true;
}

void MakeKey(WineKey& top, std::string_view path) {
    WineKey* key = &top;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        if (end > start) {
            key = &key->Child(path.substr(start, end - start));
        }
        start = end + 1;
    }
}

}  // namespace

WinePrefixRegistry ReadWinePrefixRegistry(const std::filesystem::path& prefix) {
    WinePrefixRegistry result;
    auto top = std::make_unique<WineKey>();
    std::string root;
    std::string user_root;
    if (!ReadFile(prefix, {"system.reg", "Machine", true}, *top, result, root) ||
        !ReadFile(prefix, {"userdef.reg", "User\\.Default", false}, *top, result, root) ||
        !ReadFile(prefix, {"user.reg", kWineUserRoot, false}, *top, result, user_root)) {
        return result;
    }
    // The server makes these keys whatever the files hold.
    MakeKey(*top, "Machine");
    MakeKey(*top, "User\\.Default");
    MakeKey(*top, user_root);
    top->Finish();
    result.registry = std::make_unique<WineRegistry>(std::move(top), user_root);
    return result;
}

std::vector<std::pair<char, std::filesystem::path>> WinePrefixDrives(
    const std::filesystem::path& prefix) {
    std::vector<std::pair<char, std::filesystem::path>> drives;
    std::error_code error;
    const std::filesystem::path devices = prefix / "dosdevices";
    for (std::filesystem::directory_iterator it(devices, error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = text::Utf8FromPath(it->path().filename());
        if (name.size() != 2 || name[1] != ':') {
            continue;  // "c::" is the raw device, "com1" a port
        }
        char letter = name[0];
        if (letter >= 'a' && letter <= 'z') {
            letter = static_cast<char>(letter - 'a' + 'A');
        }
        std::error_code type_error;
        if (letter >= 'A' && letter <= 'Z' &&
            std::filesystem::is_directory(it->path(), type_error)) {
            // The link itself, so that a relative target is taken from dosdevices.
            drives.emplace_back(letter, it->path());
        }
    }
    std::sort(drives.begin(), drives.end());
    return drives;
}

}  // namespace regvex::wine
