#pragma once
// The folder that holds the running program file, without a trailing backslash: the
// backups, the ignore list and the help lie there.

#include <string>

namespace regvex::system {

std::string ProgramFolderOfThisProcess();

}  // namespace regvex::system
