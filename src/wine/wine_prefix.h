#pragma once
// A Wine prefix read from outside Wine: its registry from system.reg (the machine),
// userdef.reg (HKEY_USERS\.Default) and user.reg (the user, HKEY_CURRENT_USER), and its
// drives from the links in dosdevices. Nothing in the prefix is written.
//
// Keys that Wine makes afresh at every start and never saves (HKEY_LOCAL_MACHINE\Hardware,
// the active computer name, the video and device keys, mounted devices) are not in the
// files and so not here. They hold descriptions of the hardware, device paths and Unix
// paths, never a Windows file path, so no scan finds anything in them.

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "wine/wine_registry.h"

namespace regvex::wine {

struct WinePrefixRegistry {
    std::unique_ptr<WineRegistry> registry;  // null when the prefix could not be read
    std::string error;                       // why not
    // Lines skipped as Wine skips them, and files that are missing, one message each.
    std::vector<std::string> warnings;
    // Each registry file read, with the key below \Registry that its keys are relative to
    // ("Machine" for system.reg).
    std::vector<std::pair<std::filesystem::path, std::string>> files;
};

WinePrefixRegistry ReadWinePrefixRegistry(const std::filesystem::path& prefix);

// The drives of the prefix ('C' -> DIR/dosdevices/c:), those whose link leads to a
// folder; names compared without regard to case.
std::vector<std::pair<char, std::filesystem::path>> WinePrefixDrives(
    const std::filesystem::path& prefix);

}  // namespace regvex::wine
