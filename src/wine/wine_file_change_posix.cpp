#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "wine/wine_file_change.h"
#include "wine/wine_file_edit.h"

namespace regvex::wine {

namespace fs = std::filesystem;

namespace {

// Room beyond the old file's size that the new one may take: restored values.
constexpr std::uint64_t kSpareBytes = 1 << 20;

// Whether another process holds a lock on `file`, as a running wineserver holds its lock.
bool LockHeld(const fs::path& file) {
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    struct flock probe {};
    probe.l_type = F_WRLCK;
    probe.l_whence = SEEK_SET;
    const bool held = fcntl(fd, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
    close(fd);
    return held;
}

std::string ReadText(const fs::path& file, bool& read) {
    std::ifstream in(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    read = static_cast<bool>(in) || in.eof();
    return text;
}

// The folders where Wine keeps the server's socket and lock for a prefix: below
// /tmp/.wine-UID, or (in Debian's build) below the folder the prefix's "wineserver"
// file names.
std::vector<fs::path> ServerFolders(const fs::path& prefix, const struct stat& info) {
    char name[64];
    std::snprintf(name, sizeof name, "server-%llx-%llx",
                  static_cast<unsigned long long>(info.st_dev),
                  static_cast<unsigned long long>(info.st_ino));
    std::vector<fs::path> temporary{"/tmp"};
    if (const char* tmpdir = std::getenv("TMPDIR"); tmpdir != nullptr && *tmpdir != '\0') {
        temporary.emplace_back(tmpdir);
    }
    std::vector<fs::path> folders;
    bool read = false;
    std::string named = ReadText(prefix / "wineserver", read);
    while (!named.empty() && (named.back() == '\n' || named.back() == '\0')) {
        named.pop_back();
    }
    for (const fs::path& tmp : temporary) {
        folders.push_back(tmp / (".wine-" + std::to_string(info.st_uid)) / name);
        if (!named.empty() && named.find('/') == std::string::npos) {
            folders.push_back(tmp / named / name);
        }
    }
    return folders;
}

// Whether a wineserver process holds the prefix folder open (it keeps it as its
// current configuration folder), wherever its lock lies.
bool ServerProcessHolds(const struct stat& prefix) {
    DIR* processes = opendir("/proc");
    if (processes == nullptr) {
        return false;
    }
    bool holds = false;
    while (!holds) {
        const dirent* entry = readdir(processes);
        if (entry == nullptr) {
            break;
        }
        const std::string pid = entry->d_name;
        if (pid.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        bool read = false;
        const std::string command = ReadText(fs::path("/proc") / pid / "comm", read);
        if (command.rfind("wineserver", 0) != 0) {
            continue;
        }
        std::error_code error;
        for (fs::directory_iterator fd(fs::path("/proc") / pid / "fd", error), end;
             !error && fd != end && !holds; fd.increment(error)) {
            struct stat target {};
            holds = stat(fd->path().c_str(), &target) == 0 && S_ISDIR(target.st_mode) &&
                    target.st_dev == prefix.st_dev && target.st_ino == prefix.st_ino;
        }
    }
    closedir(processes);
    return holds;
}

}  // namespace

bool WineServerRunning(const fs::path& prefix) {
    struct stat info {};
    if (stat(prefix.c_str(), &info) != 0) {
        return false;
    }
    for (const fs::path& folder : ServerFolders(prefix, info)) {
        if (LockHeld(folder / "lock")) {
            return true;
        }
    }
    return ServerProcessHolds(info);
}

std::string WhyWineFileCannotChange(const fs::path& file, const system::ReplaceHooks& hooks) {
    const fs::path prefix = fs::absolute(file).parent_path();
    if (WineServerRunning(prefix)) {
        return "the Wine prefix " + system::QuotedName(prefix) +
               " is in use: its wineserver is running, and would write its own copy of the "
               "registry over the change when it ends. Close the programs of that prefix (or "
               "end them with \"wineserver -k\" in it) and try again";
    }
    return system::WhyFileCannotBeReplaced(file, kSpareBytes, hooks);
}

system::ReplaceResult EditWineRegistryFile(const fs::path& file,
                                           const std::vector<ValueChange>& changes,
                                           const system::ReplaceHooks& hooks) {
    std::string why_not = WhyWineFileCannotChange(file, hooks);
    if (!why_not.empty()) {
        return {system::ReplaceOutcome::kRefused, std::move(why_not)};
    }
    bool read = false;
    const std::string before = ReadText(file, read);
    if (!read) {
        return {system::ReplaceOutcome::kRefused, system::QuotedName(file) + " cannot be read"};
    }
    std::string error;
    const std::optional<std::string> edited = EditWineRegistryText(before, changes, error);
    if (!edited) {
        return {system::ReplaceOutcome::kRefused, system::QuotedName(file) + ": " + error};
    }
    return system::ReplaceFile(
        file, [&](const fs::path& fresh) { return system::WriteNewFile(fresh, *edited, file); },
        [&](const fs::path& fresh) {
            bool fresh_read = false;
            const std::string after = ReadText(fresh, fresh_read);
            if (!fresh_read || after != *edited) {
                return std::string("it does not read back as it was written");
            }
            return CheckWineRegistryEdit(before, after, changes);
        },
        hooks);
}

}  // namespace regvex::wine
