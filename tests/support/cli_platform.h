#pragma once
// The command line's system, faked: no live registry, drives or repair of its own, as on
// Linux, unless a test lends it a registry, the answers about files or a repair side.

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "engine/forwarding_registry.h"
#include "text/ansi_code_page.h"

namespace regvex::testing {

class FakeCliPlatform : public cli::CliPlatform {
  public:
    std::unique_ptr<Registry> OpenLiveRegistry(std::string& why_not) override {
        if (live == nullptr) {
            why_not = "no live registry here";
            return nullptr;
        }
        return std::make_unique<ForwardingRegistry>(*live);
    }
    std::unique_ptr<FileExistence> SystemFiles() override {
        return files == nullptr ? nullptr : std::make_unique<Answering>(*files);
    }
    const text::AnsiCodePage& AnsiCodePage() override { return code_page; }
    AccessMask KeyAccessMask() override { return reg::kKeyAllAccess; }
    cli::RepairPlatform* Repair(std::string& why_not) override {
        if (repair == nullptr) {
            why_not = "no live registry to repair here";
        }
        return repair;
    }
    bool StdoutIsTerminal() override { return false; }
    bool StderrIsTerminal() override { return false; }

    struct Run {
        int exit_code;
        std::string out;
        std::string err;
    };
    Run Cli(const std::vector<std::string>& args) {
        std::ostringstream out;
        std::ostringstream err;
        const int exit_code = cli::RunCli(args, out, err, *this);
        return {exit_code, out.str(), err.str()};
    }

    Registry* live = nullptr;
    FileExistence* files = nullptr;
    cli::RepairPlatform* repair = nullptr;
    text::Windows1252CodePage code_page;

  private:
    struct Answering final : FileExistence {
        explicit Answering(FileExistence& answers) : inner(answers) {}
        int Check(const std::string& path) override { return inner.Check(path); }
        FileExistence& inner;
    };
};

}  // namespace regvex::testing
