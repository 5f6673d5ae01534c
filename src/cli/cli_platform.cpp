#include "cli/cli_platform.h"

#include "wine/wine_prefix.h"

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

std::unique_ptr<Registry> CliPlatform::OpenWinePrefix(const std::filesystem::path& prefix,
                                                      std::string& error,
                                                      std::vector<std::string>& warnings) {
    wine::WinePrefixRegistry read = wine::ReadWinePrefixRegistry(prefix);
    error = std::move(read.error);
    warnings.insert(warnings.end(), read.warnings.begin(), read.warnings.end());
    return std::move(read.registry);
}

std::string CliPlatform::WhyFileCannotChange(const std::filesystem::path& file,
                                             RegistryFileKind kind) {
    return kind == RegistryFileKind::kHive
               ? "cannot change the hive \"" + file.generic_string() +
                     "\": hive files are written by the Linux build of the command line"
               : "cannot change \"" + file.generic_string() +
                     "\": Wine prefixes are changed by the Linux build of the command line";
}

system::ReplaceResult CliPlatform::ChangeFile(const std::filesystem::path& file,
                                              RegistryFileKind kind,
                                              const std::vector<ValueChange>& /*changes*/) {
    return {system::ReplaceOutcome::kRefused, WhyFileCannotChange(file, kind)};
}

}  // namespace regvex::cli
