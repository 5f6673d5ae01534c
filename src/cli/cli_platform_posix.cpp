#include <unistd.h>

#include <cstdlib>

#include "cli/cli_platform.h"
#include "cli/visible_text.h"
#include "hive/hive_edit.h"
#include "hive/hive_file.h"
#include "system/general_date.h"
#include "wine/wine_file_change.h"

namespace regvex::cli {

namespace {

class PosixPlatform final : public CliPlatform {
  public:
    std::unique_ptr<Registry> OpenLiveRegistry(std::string& why_not) override {
        why_not =
            "this system has no registry of its own; scan registry exports with "
            "--registry FILE.reg";
        return nullptr;
    }
    std::unique_ptr<Registry> OpenHive(const std::filesystem::path& file, std::string& error,
                                       std::ostream& warnings) override {
        hive::OpenedHive opened = hive::OpenHiveFile(
            file,
            [&warnings](std::string_view warning) {
                warnings << "regvexlor-cli: warning: " << VisibleText(warning) << "\n";
            },
            code_page_);
        error = std::move(opened.error);
        return std::move(opened.registry);
    }
    std::unique_ptr<FileExistence> SystemFiles() override { return nullptr; }
    const text::AnsiCodePage& AnsiCodePage() override { return code_page_; }
    // No 64-bit registry view to ask for: the files are the whole registry.
    AccessMask KeyAccessMask() override { return reg::kKeyAllAccess; }
    RepairPlatform* Repair(std::string& why_not) override {
        why_not =
            "fixing and restoring change a live registry, and Linux has none; they wait for a "
            "writable offline registry backend. Run the Windows build (regvexlor-cli.exe) under "
            "Windows or Wine.";
        return nullptr;
    }
    std::filesystem::path ProgramFolderPath() override {
        std::error_code error;
        return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    }
    std::string DateTextNow() override { return system::GeneralDateTextNow(); }
    std::string WhyFileCannotChange(const std::filesystem::path& file,
                                    RegistryFileKind kind) override {
        return kind == RegistryFileKind::kHive ? hive::WhyHiveCannotChange(file)
                                               : wine::WhyWineFileCannotChange(file);
    }
    system::ReplaceResult ChangeFile(const std::filesystem::path& file, RegistryFileKind kind,
                                     const std::vector<ValueChange>& changes) override {
        system::ReplaceHooks hooks;
        // REGVEX_STOP_AFTER=STEP ends the process after that step of a change, as a
        // power loss would: what the file is left as can then be checked.
        if (const char* stop = std::getenv("REGVEX_STOP_AFTER"); stop != nullptr) {
            hooks.after_step = [stop = std::string(stop)](std::string_view step) {
                if (step == stop) {
                    _exit(86);
                }
            };
        }
        return kind == RegistryFileKind::kHive ? hive::EditHiveFile(file, changes, hooks)
                                               : wine::EditWineRegistryFile(file, changes, hooks);
    }
    bool StdoutIsTerminal() override { return isatty(STDOUT_FILENO) != 0; }
    bool StderrIsTerminal() override { return isatty(STDERR_FILENO) != 0; }

  private:
    text::Windows1252CodePage code_page_;
};

}  // namespace

std::unique_ptr<CliPlatform> MakeSystemPlatform() {
    return std::make_unique<PosixPlatform>();
}

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
    return std::vector<std::string>(argv + 1, argv + argc);
}

void PrepareConsole() {}

}  // namespace regvex::cli
