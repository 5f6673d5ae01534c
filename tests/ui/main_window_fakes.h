#pragma once
// The main window's surroundings, faked: its controls in memory, a pump that runs
// scripted clicks while a scan is inside the search, and services that record calls.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "engine/memory_registry.h"
#include "support/memory_controls.h"
#include "support/scripted_services.h"
#include "support/search_doubles.h"
#include "support/system_doubles.h"
#include "ui/frm_main.h"
#include "ui/ignore/ignore_window.h"
#include "ui/task_pane_keys.h"

namespace regvex::testing {

class ScriptedPump final : public ui::MessagePump {
  public:
    void DoEvents() override {
        ++pumps;
        if (auto action = at_pump.find(pumps); action != at_pump.end()) {
            action->second();
        }
    }
    void EndProcess() override { throw ProcessEnded{}; }
    int pumps = 0;
    std::map<int, std::function<void()>> at_pump;
};

class FixedScreen final : public ui::Screen {
  public:
    ui::ScreenMetrics Metrics() override { return metrics; }
    ui::ScreenMetrics metrics{15, 15, 1024, 768};
};

class FakeSystem final : public system::SystemInfo {
  public:
    system::OsVersion Version() override { return version; }
    std::uint16_t NativeProcessorArchitecture() override { return architecture; }
    system::OsVersion version{6, 1};
    std::uint16_t architecture = 0;  // x86
};

class RecordingRedirection final : public system::FileSystemRedirection {
  public:
    std::uintptr_t Disable() override {
        calls.push_back("disable");
        return 0xAB;
    }
    void Revert(std::uintptr_t old_value) override {
        calls.push_back("revert " + std::to_string(old_value));
    }
    std::vector<std::string> calls;
};

class FakeIgnoreWindow final : public ui::ignore::IgnoreWindow {
  public:
    bool IsLoaded() const override { return loaded; }
    ui::ignore::frmIgnore& Form() override {
        throw std::logic_error("not used by the main window");
    }
    ui::ListBox& lstIgnore() override {
        if (!loaded) {
            loaded = true;
            ++loads;
            entries.items = file_entries;
        }
        return entries;
    }
    void Unload() override {
        loaded = false;
        ++unloads;
    }
    void Show() override { ++shows; }

    bool loaded = false;
    int loads = 0;
    int unloads = 0;
    int shows = 0;
    std::vector<std::string> file_entries;
    MemoryListBox entries;
};

class RecordingView final : public ui::MainView {
  public:
    void SetWindowIcon() override { calls.push_back("icon"); }
    void SetControlsFont(std::string_view font) override {
        calls.push_back("font " + std::string(font));
    }
    void BuildTaskPane(const std::vector<ui::TaskPaneGroup>& groups) override { pane = groups; }
    void BringToFront(Panel panel) override {
        calls.push_back(panel == Panel::kScan ? "front scan" : "front backups");
    }
    void ScaleForm(double rx, double ry, bool size_window) override {
        scales.push_back({rx, ry, size_window});
    }
    void LayOut() override { calls.push_back("layout"); }
    void ShowAbout() override { calls.push_back("about"); }
    void ShowInfo(const std::string& explanation) override { infos.push_back(explanation); }
    void Close() override { calls.push_back("close"); }
    void ScanPaused() override { ++pauses; }
    void ShowHeldBack() override { calls.push_back("show held back"); }
    void ShowSearch(ui::search::MissingFile missing) override {
        searches.push_back(std::move(missing));
    }

    struct Scale {
        double rx, ry;
        bool size_window;
    };
    std::vector<std::string> calls;
    std::vector<ui::TaskPaneGroup> pane;
    std::vector<Scale> scales;
    std::vector<std::string> infos;
    int pauses = 0;
    std::vector<ui::search::MissingFile> searches;
};

// The main window's controls in memory, as the form designer left them.
struct MainWindowControls {
    MemoryWindow form;
    MemoryCaption frame1{"Registry Scan"};
    MemoryCaption frame2{"Restore Backups"};
    MemoryOption option1;
    MemoryOption option2;
    MemoryDriveList drive{"c: [SYSTEM]"};
    MemoryCaption start_stop{"Begin Scan"};
    MemoryCaption status{"Scanning Key:"};
    MemoryCaption current_key;
    MemoryListView errors;
    MemoryListView backups;
    MemoryProgressBar progress;
    MemoryCaption label21;
    MemoryCaption menu_start_stop{"&Start Scan"};

    ui::MainControls Controls() {
        return {form,   frame1,      frame2, option1, option2,  drive,   start_stop,
                status, current_key, errors, backups, progress, label21, menu_start_stop};
    }
    void AddFinding(std::string root, std::string sub_key, std::string value, bool checked) {
        errors.AddRow({"Invalid Entry", std::move(root), std::move(sub_key), std::move(value)});
        errors.rows.back().checked = checked;
    }
    std::vector<std::vector<std::string>> Rows() const {
        std::vector<std::vector<std::string>> rows;
        for (const auto& row : errors.rows) {
            rows.push_back(row.texts);
        }
        return rows;
    }
};

// The services of a rig that names them as the main window does.
template <class Rig>
ui::MainServices ServicesOf(Rig& r) {
    return {r.dialogs, r.clock,       r.pump, r.shell,     r.screen,    r.system, r.registry,
            r.files,   r.redirection, r.disk, r.processes, r.code_page, r.ignore, r.view};
}

// A main window with everything around it, in a program folder that exists.
struct MainWindowRig : MainWindowControls {
    MainWindowRig() {
        state.program_folder = "C:\\App";
        disk.folders.insert(state.program_folder);
    }

    ScriptedDialogs dialogs;
    ScriptedClock clock;
    ScriptedPump pump;
    RecordingShell shell;
    FixedScreen screen;
    FakeSystem system;
    MemoryRegistry registry;
    SetOfFiles files;
    RecordingRedirection redirection;
    MemoryFileSystem disk;
    RecordingProcesses processes;
    text::Windows1252CodePage code_page;
    FakeIgnoreWindow ignore;
    RecordingView view;
    ui::ProgramState state;

    ui::frmMain main{Controls(), ServicesOf(*this), state};
};

struct LoadedMainWindowRig : MainWindowRig {
    LoadedMainWindowRig() { main.Form_Load(); }
};

class MainWindowTest : public ::testing::Test {
  protected:
    LoadedMainWindowRig rig;
};

}  // namespace regvex::testing
