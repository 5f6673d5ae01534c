#pragma once
// What the command line needs of the system it runs on. Windows and Linux each provide
// one implementation, chosen by the build.

#include <memory>
#include <string>
#include <vector>

#include "engine/path_exists.h"
#include "engine/registry.h"
#include "text/ansi_code_page.h"

namespace regvex::cli {

class CliPlatform {
  public:
    virtual ~CliPlatform() = default;
    // The registry of the running system, or null with the reason when it has none.
    virtual std::unique_ptr<Registry> OpenLiveRegistry(std::string& why_not) = 0;
    // The system's own existence test, or null when no file system stands for drives.
    virtual std::unique_ptr<FileExistence> SystemFiles() = 0;
    virtual const text::AnsiCodePage& AnsiCodePage() = 0;
    virtual AccessMask KeyAccessMask() = 0;
    virtual bool StdoutIsTerminal() = 0;
    virtual bool StderrIsTerminal() = 0;
};

std::unique_ptr<CliPlatform> MakeSystemPlatform();

// The command line's arguments as UTF-8, without the program name.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

// Lets the console show UTF-8 output.
void PrepareConsole();

}  // namespace regvex::cli
