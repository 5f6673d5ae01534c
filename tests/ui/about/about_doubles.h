#pragma once
// The About box's services, recorded for tests.

#include <set>
#include <string>
#include <vector>

#include "engine/memory_registry.h"
#include "engine/path_exists.h"
#include "support/forwarding_registry.h"
#include "system/process.h"
#include "ui/about/frm_about.h"
#include "ui/base/services.h"

namespace regvex::testing {

class RecordingLauncher final : public system::ProcessLauncher {
  public:
    std::uint32_t RunAndWait(const std::string& command_line) override {
        waited.push_back(command_line);
        return 0;
    }
    bool Start(const std::string& command_line) override {
        started.push_back(command_line);
        return starts;
    }
    bool starts = true;
    std::vector<std::string> started;
    std::vector<std::string> waited;
};

// Files exist when listed, compared exactly.
class ListedFiles final : public FileExistence {
  public:
    int Check(const std::string& path) override {
        asked.push_back(path);
        return existing.count(path) != 0 ? 1 : 0;
    }
    std::set<std::string> existing;
    std::vector<std::string> asked;
};

class RecordingShell final : public ui::Shell {
  public:
    void OpenUrl(std::string_view url) override { urls.emplace_back(url); }
    bool ShowHelp(std::string_view) override { return false; }
    std::vector<std::string> urls;
};

class RecordingAboutView final : public ui::about::AboutView {
  public:
    void SetWindowIcon() override { calls.emplace_back("icon"); }
    void ResizeAbout() override { calls.emplace_back("resize"); }
    void MatchLinkFontToLabels() override { calls.emplace_back("link font"); }
    void Close() override { calls.emplace_back("close"); }
    std::vector<std::string> calls;
};

// Writes down the rights every open asks for, and lets the memory registry answer.
class AccessRecordingRegistry final : public ForwardingRegistry {
  public:
    using ForwardingRegistry::ForwardingRegistry;
    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override {
        opened_with.push_back(access);
        return ForwardingRegistry::OpenKey(root, path, access, key);
    }
    std::vector<AccessMask> opened_with;
};

}  // namespace regvex::testing
