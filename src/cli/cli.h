#pragma once
// The command-line front end: regvexlor-cli <command> [options].

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/cli_platform.h"

namespace regvex::cli {

inline constexpr int kExitOk = 0;
inline constexpr int kExitScanFailed = 1;
inline constexpr int kExitUsage = 2;
// A repair did some of what was asked and says what it could not do.
inline constexpr int kExitNotAllDone = 1;

// "--help" or "-h".
bool IsHelpOption(std::string_view arg);
std::string_view UsageText();

// `args` without the program name. Findings go to `out`; counts, progress and messages
// to `err`.
int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           CliPlatform& platform);

}  // namespace regvex::cli
