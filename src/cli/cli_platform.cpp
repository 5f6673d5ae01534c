#include "cli/cli_platform.h"

namespace regvex::cli {

std::unique_ptr<Registry> CliPlatform::OpenHive(const std::filesystem::path& file,
                                                std::string& error, std::ostream& /*warnings*/) {
    error = "cannot read the hive \"" + file.generic_string() +
            "\": hive files are read by the Linux build of the command line";
    return nullptr;
}

std::filesystem::path CliPlatform::ProgramFolderPath() {
    return {};
}

std::string CliPlatform::DateTextNow() {
    std::string why_not;
    RepairPlatform* repair = Repair(why_not);
    return repair != nullptr ? repair->GeneralDateText() : std::string();
}

std::string CliPlatform::WhyHiveCannotChange(const std::filesystem::path& file) {
    return "cannot change the hive \"" + file.generic_string() +
           "\": hive files are written by the Linux build of the command line";
}

hive::EditResult CliPlatform::EditHive(const std::filesystem::path& file,
                                       const std::vector<hive::ValueChange>& /*changes*/) {
    return {hive::EditOutcome::kRefused, WhyHiveCannotChange(file)};
}

}  // namespace regvex::cli
