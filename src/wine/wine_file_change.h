#pragma once
// Changing the registry files of a Wine prefix from outside Wine, so that nothing can be
// lost: the lines of the changed values alone are edited, the edited file is read back
// and must hold every key and value of the old one except exactly the changes, and it
// replaces the old one in one step (see system/file_replace.h). Wine's server keeps the
// whole registry in memory and writes it back when it ends, so a prefix whose server is
// running is never changed.

#include <filesystem>
#include <string>
#include <vector>

#include "engine/value_change.h"
#include "system/file_replace.h"

namespace regvex::wine {

// Whether the wineserver of `prefix` is running: its lock is held, or a wineserver
// process holds the prefix open.
bool WineServerRunning(const std::filesystem::path& prefix);

// Why the registry file `file` (system.reg, user.reg or userdef.reg of the prefix that
// is its folder) must not be changed now, or empty.
std::string WhyWineFileCannotChange(const std::filesystem::path& file,
                                    const system::ReplaceHooks& hooks = {});

// Makes the changes (key paths below the file's root) as described above.
system::ReplaceResult EditWineRegistryFile(const std::filesystem::path& file,
                                           const std::vector<ValueChange>& changes,
                                           const system::ReplaceHooks& hooks = {});

}  // namespace regvex::wine
