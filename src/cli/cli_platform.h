#pragma once
// What the command line needs of the system it runs on. Windows and Linux each provide
// one implementation, chosen by the build.

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "engine/path_exists.h"
#include "engine/registry.h"
#include "engine/value_change.h"
#include "system/file_replace.h"
#include "system/file_system.h"
#include "system/process.h"
#include "text/ansi_code_page.h"

namespace regvex::cli {

// The kinds of file that hold a registry that is not running.
enum class RegistryFileKind {
    kHive,      // a Windows hive file
    kWineFile,  // system.reg, user.reg or userdef.reg of a Wine prefix
};

// What backing up, deleting and restoring need beyond the registry: the program's folder
// (the backups lie beside it), the system's programs and the date for backup names.
class RepairPlatform {
  public:
    virtual ~RepairPlatform() = default;
    virtual std::string ProgramFolder() = 0;
    virtual system::FileSystem& Disk() = 0;
    virtual system::ProcessLauncher& Processes() = 0;
    virtual system::FileSystemRedirection& Redirection() = 0;
    virtual bool Is64BitWindows() = 0;
    virtual std::string GeneralDateText() = 0;
};

class CliPlatform {
  public:
    virtual ~CliPlatform() = default;
    // The registry of the running system, or null with the reason when it has none.
    virtual std::unique_ptr<Registry> OpenLiveRegistry(std::string& why_not) = 0;
    // A Windows hive file, read-only; null with what is wrong (naming the file). What the
    // scan can go on without (a damaged part skipped) is written to `warnings`.
    virtual std::unique_ptr<Registry> OpenHive(const std::filesystem::path& file,
                                               std::string& error, std::ostream& warnings);
    // The system's own existence test, or null when no file system stands for drives.
    virtual std::unique_ptr<FileExistence> SystemFiles() = 0;
    virtual const text::AnsiCodePage& AnsiCodePage() = 0;
    virtual AccessMask KeyAccessMask() = 0;
    // Repair works on a live registry that can be written; null with the reason where
    // there is none.
    virtual RepairPlatform* Repair(std::string& why_not) = 0;
    // The folder of the command line program, where its backups lie.
    virtual std::filesystem::path ProgramFolderPath();
    // The local date and time as backup names are made from (see system/general_date.h).
    virtual std::string DateTextNow();
    // A Wine prefix's registry, read from its files (see wine/wine_prefix.h); null with
    // why not. Lines and files it goes on without are added to `warnings`.
    virtual std::unique_ptr<Registry> OpenWinePrefix(const std::filesystem::path& prefix,
                                                     std::string& error,
                                                     std::vector<std::string>& warnings);
    // Whether a registry file may be changed now (empty) or why not, and the change
    // itself, made safely (see hive/hive_edit.h and wine/wine_file_change.h). Answered
    // where such files can be written.
    virtual std::string WhyFileCannotChange(const std::filesystem::path& file,
                                            RegistryFileKind kind);
    virtual system::ReplaceResult ChangeFile(const std::filesystem::path& file,
                                             RegistryFileKind kind,
                                             const std::vector<ValueChange>& changes);
    virtual bool StdoutIsTerminal() = 0;
    virtual bool StderrIsTerminal() = 0;
};

std::unique_ptr<CliPlatform> MakeSystemPlatform();

// The command line's arguments as UTF-8, without the program name.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

// Lets the console show UTF-8 output.
void PrepareConsole();

}  // namespace regvex::cli
