#pragma once
// The code of the main window: set-up, the task pane's commands, the menus, quitting,
// help, and the scan (its handlers are in frm_main_scan.cpp). It reaches its controls
// and the platform only through the interfaces below.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/path_exists.h"
#include "engine/reg_search.h"
#include "engine/registry.h"
#include "system/file_system.h"
#include "system/process.h"
#include "system/system_version.h"
#include "text/ansi_code_page.h"
#include "ui/base/controls.h"
#include "ui/base/program_state.h"
#include "ui/base/services.h"
#include "ui/ignore/ignore_window.h"
#include "ui/search/frm_search.h"

namespace regvex::ui {

struct MainControls {
    Window& form;
    Captioned& Frame1;
    Captioned& Frame2;
    OptionButton& Option1;
    OptionButton& Option2;
    DriveList& Drive1;
    Captioned& cmdStartStop;
    Captioned& lblStatus;
    Captioned& lblCurrentKey;
    CheckListView& lvwRegErrors;
    CheckListView& lvwRegBackups;
    ProgressBar& vbalProgressBar1;
    Captioned& Label21;
    Captioned& mnuStartStop;
};

// One item of the task pane: a link when it has a key, plain text when it has none. Keys
// are the constants of ui/task_pane_keys.h.
struct TaskPaneLink {
    std::string_view key;
    std::string text;
    std::string tooltip;
};

struct TaskPaneGroup {
    std::string caption;
    std::string_view key;
    std::vector<TaskPaneLink> items;
};

// The key the Registry Editor is to show for a finding: "Computer\" (or "My Computer\"
// before Windows Vista), the root and the subkey without its value name.
std::string RegeditLastKey(std::uint32_t major_version, std::string_view root_key,
                           std::string_view sub_key);

// The task pane's groups and items, in order.
std::vector<TaskPaneGroup> TaskPaneGroups();

// What only the window itself can do.
class MainView {
  public:
    enum class Panel { kScan, kBackups };

    virtual ~MainView() = default;
    virtual void SetWindowIcon() = 0;
    // Sets the font of every control that has one.
    virtual void SetControlsFont(std::string_view font_name) = 0;
    virtual void BuildTaskPane(const std::vector<TaskPaneGroup>& groups) = 0;
    virtual void BringToFront(Panel panel) = 0;
    // The proportional form resizer: at load the window is sized to the ratios; later
    // calls lay the controls out to the window as it stands.
    virtual void ScaleForm(double ratio_x, double ratio_y, bool size_window) = 0;
    virtual void LayOut() = 0;
    virtual void ShowAbout() = 0;
    // "Info On This Item" with the explanation of one finding (lines ended by '\n').
    virtual void ShowInfo(const std::string& explanation) = 0;
    virtual void Close() = 0;
    // A scan changes its texts and rows far more often than they can be drawn: from its
    // first pause on, the window shows them at its pauses, a few times a second.
    virtual void ScanPaused() = 0;
    // Shows every change held back, and later ones as they come, until the next pause.
    virtual void ShowHeldBack() = 0;
    // The search for a finding's missing file, modal; returns when its window has closed.
    virtual void ShowSearch(search::MissingFile missing) { (void)missing; }
};

struct MainServices {
    MessageDialogs& dialogs;
    Clock& clock;
    MessagePump& pump;
    Shell& shell;
    Screen& screen;
    system::SystemInfo& system;
    Registry& registry;
    FileExistence& files;
    system::FileSystemRedirection& redirection;
    // The backups beside the program, the system programs that restore and show them,
    // and the code page the backups are written in.
    system::FileSystem& disk;
    system::ProcessLauncher& processes;
    const text::AnsiCodePage& code_page;
    ignore::IgnoreWindow& ignore;
    MainView& view;
};

// How the window is being closed: 0 from its title bar, 1 by the program's own code.
inline constexpr int kUnloadFromTitleBar = 0;
inline constexpr int kUnloadFromCode = 1;

class frmMain final : private SearchHost, private SearchEvents {
  public:
    frmMain(MainControls controls, MainServices services, ProgramState& state);
    ~frmMain() override;

    void Form_Load();
    void Form_Resize();
    // Answers true to cancel the closing.
    bool Form_QueryUnload(int unload_mode);
    void Form_Unload();

    void TaskPane_ItemClick(std::string_view key);
    void mnuCheckAll_Click();
    void mnuUncheckAll_Click();
    void mnuExit_Click();
    void Image1_Click();
    void Label3_Click();
    void mnuHelp2_Click();
    void mnuAbout_Click();

    void cmdStartStop_Click();
    void mnuStartStop_Click();
    // The window's contract names it; nothing in the program raises it.
    void lblCurrentKey_Change() {}

    // Repair and backups (frm_main_backups.cpp) and the Registry Editor (frm_main_regedit.cpp).
    void mnuFix_Click();
    void CreateRegistryBackup();
    void LoadBackupList();
    void Command1_Click();
    void Command2_Click();
    void View_Backup_Click();
    void Regedit_View_Click();
    // The search for a missing file (frm_main_search.cpp).
    void mnuSearch_Click();
    // "Info On This Item" (frm_main_info.cpp), also a double-click or Enter on a result.
    void mnuInfo_Click();
    void lvwRegErrors_DblClick();

    bool SafeScan() const { return bSafeScan_; }

    // The search object's events, as the window handles them. The search never raises
    // SearchKeyChanged; its handler is kept because the window's contract names it.
    void cReg_SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                          FoundKind lFound);
    void cReg_SearchFinished(FinishReason lReason);
    void cReg_SearchKeyChanged(const std::string& sFullKeyName);

  private:
    void SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                     FoundKind lFound) override;
    void SearchFinished(FinishReason lReason) override;
    void SearchKeyChanged(const std::string& sFullKeyName) override;

    // What the search drives in this window.
    void SetProgressMax(int max) override;
    int ProgressValue() const override;
    void SetProgressValue(int value) override;
    void SetCurrentKey(const std::string& full_key_name) override;
    void DoEvents() override;
    void EndProcess() override;

    void StartScan();
    // The entries of the ignore window's list as they stand, loading the window (hidden)
    // when it is not loaded.
    std::span<const std::string> ReadIgnoreList();
    void StopScan();
    void ScreenScaling(bool at_load);
    void AutoSizeListColumns(CheckListView& list);
    void ShowHelp();
    int Message(std::string_view prompt, int style, std::string_view title);
    bool EnsureBackupsFolder();
    // Puts `new_path` in the place of the missing file of row `row`; false when refused.
    bool UseFoundFile(int row, const std::string& sub_key, const std::string& old_path,
                      const std::string& new_path);

    MainControls c_;
    MainServices s_;
    ProgramState& state_;
    std::unique_ptr<cRegSearch> cReg;
    // Existence answers remembered for the scan that runs.
    std::unique_ptr<FileExistence> scan_files_;
    std::vector<std::string> ignore_entries_;

    bool bSafeScan_ = false;
    double dNextKeyUpdate_ = 0;
};

}  // namespace regvex::ui
