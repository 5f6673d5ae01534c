#pragma once
// A Windows system that is not running, put together from its partition as Windows puts
// its registry together when it starts: the machine's hives, each user's hives, and the
// links and merged views between them.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/mounted_registry.h"

namespace regvex::offline {

// Opens one hive file read-only, or answers null with what is wrong (naming the file).
// Warnings (a damaged part skipped, a dirty hive without logs) go to `warn`.
using HiveOpener =
    std::function<std::unique_ptr<Registry>(const std::filesystem::path& file, std::string& error)>;

// A file or folder below `folder` whose names match `relative` ("a/b/c") without regard
// to case, as Windows matches them; empty when there is none.
std::filesystem::path FindCaseless(const std::filesystem::path& folder, std::string_view relative);

struct WindowsSystem {
    MountedRegistry registry;
    std::vector<std::unique_ptr<Registry>> hives;
    // The profile folder names of HKEY_USERS, and which of them is HKEY_CURRENT_USER.
    std::vector<std::string> profiles;
    std::string current_user;
};

// Mounts the system of the partition whose root is `root`:
//   HKEY_LOCAL_MACHINE\SOFTWARE and \SYSTEM (CurrentControlSet linked to the control set
//   that Select\Current names), HKEY_USERS\.DEFAULT, each profile of ProfileList whose
//   NTUSER.DAT is there as HKEY_USERS\<SID> and its UsrClass.dat as
//   HKEY_USERS\<SID>_Classes, HKEY_CURRENT_USER as the profile named `user` (a profile
//   folder name, any case) or the only user profile, HKEY_CLASSES_ROOT as the user's
//   classes over the machine's, HKEY_CURRENT_CONFIG as the current hardware profile.
// SAM and SECURITY stay out, as a program run by an administrator cannot open them.
// Answers false with the reason when the partition cannot be read as a Windows system.
bool MountWindows(const std::filesystem::path& root, std::string_view user,
                  const HiveOpener& open_hive, WindowsSystem& system, std::string& error);

}  // namespace regvex::offline
