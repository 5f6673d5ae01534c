#pragma once
// An offline registry whose files (hives, a Wine prefix's registry files) take no change
// directly: each delete or set of a value is noted with the file and the key's place in
// it, so that every file's changes can be checked first and then made in one safe step.

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "cli/cli_platform.h"
#include "engine/value_change.h"

namespace regvex::cli {

// The changes to one file, in the order they were asked for. A value reached twice (by
// two roots, or through a link) is deleted once.
struct NotedFile {
    RegistryFileKind kind = RegistryFileKind::kHive;
    std::vector<ValueChange> changes;

    void Note(ValueChange change);
};

// The changes noted, by file.
using NotedChanges = std::map<std::filesystem::path, NotedFile>;

// The platform it is given, except that the hives it opens note their changes in
// `noted`. Must outlive what it opens.
class RecordingPlatform final : public CliPlatform {
  public:
    RecordingPlatform(CliPlatform& inner, NotedChanges& noted) : inner_(inner), noted_(noted) {}

    std::unique_ptr<Registry> OpenLiveRegistry(std::string& why_not) override {
        return inner_.OpenLiveRegistry(why_not);
    }
    std::unique_ptr<Registry> OpenHive(const std::filesystem::path& file, std::string& error,
                                       std::ostream& warnings) override;
    std::unique_ptr<Registry> OpenWinePrefix(const std::filesystem::path& prefix,
                                             std::string& error,
                                             std::vector<std::string>& warnings) override;
    std::unique_ptr<FileExistence> SystemFiles() override { return inner_.SystemFiles(); }
    const text::AnsiCodePage& AnsiCodePage() override { return inner_.AnsiCodePage(); }
    AccessMask KeyAccessMask() override { return inner_.KeyAccessMask(); }
    RepairPlatform* Repair(std::string& why_not) override { return inner_.Repair(why_not); }
    bool StdoutIsTerminal() override { return inner_.StdoutIsTerminal(); }
    bool StderrIsTerminal() override { return inner_.StderrIsTerminal(); }

    // The place among its key's values of the value set next, when the key lacks it.
    void PlaceNextValueAt(std::optional<std::size_t> position) { next_position_ = position; }

  private:
    CliPlatform& inner_;
    NotedChanges& noted_;
    std::optional<std::size_t> next_position_;
};

}  // namespace regvex::cli
