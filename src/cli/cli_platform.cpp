#include "cli/cli_platform.h"

namespace regvex::cli {

std::unique_ptr<Registry> CliPlatform::OpenHive(const std::filesystem::path& file,
                                                std::string& error, std::ostream& /*warnings*/) {
    error = "cannot read the hive \"" + file.generic_string() +
            "\": hive files are read by the Linux build of the command line";
    return nullptr;
}

}  // namespace regvex::cli
