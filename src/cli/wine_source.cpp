#include "cli/wine_source.h"

#include <system_error>

#include "cli/visible_text.h"
#include "text/utf8_path.h"
#include "wine/wine_prefix.h"

namespace regvex::cli {

std::unique_ptr<Registry> OpenWinePrefix(const std::string& prefix, std::ostream& err,
                                         std::vector<std::pair<char, std::string>>& drives,
                                         CliPlatform& platform) {
    const std::filesystem::path folder = text::PathFromUtf8(prefix);
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        err << "regvexlor-cli: --wine-prefix: \"" << VisibleText(prefix) << "\" is not a folder\n";
        return nullptr;
    }
    std::string why_not;
    std::vector<std::string> warnings;
    auto registry = platform.OpenWinePrefix(folder, why_not, warnings);
    for (const std::string& warning : warnings) {
        err << "regvexlor-cli: warning: " << VisibleText(warning) << "\n";
    }
    if (!registry) {
        err << "regvexlor-cli: " << VisibleText(why_not) << "\n";
        return nullptr;
    }
    for (const auto& [letter, path] : wine::WinePrefixDrives(folder)) {
        drives.emplace_back(letter, text::Utf8FromPath(path));
    }
    return registry;
}

}  // namespace regvex::cli
