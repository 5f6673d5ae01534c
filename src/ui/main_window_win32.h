#pragma once
// The main window on Windows: creates the controls, menus and task pane, and hands every
// event to the window's code (frmMain).

#include <windows.h>

#include <functional>
#include <memory>

#include "handles/unique_handle_win32.h"

#include "ui/about/frm_about_win32.h"
#include "ui/base/form_resizer_win32.h"
#include "ui/base/win32_controls_win32.h"
#include "ui/base/window_kit_win32.h"
#include "ui/check_list_control_win32.h"
#include "ui/frm_main.h"
#include "ui/info/frm_info_win32.h"
#include "ui/main_menus_win32.h"
#include "ui/search/frm_search_win32.h"
#include "ui/taskpane/task_pane_win32.h"

namespace regvex::ui {

// What the window needs that belongs to the rest of the program.
struct MainWindowServices {
    MessageDialogs& dialogs;
    Clock& clock;
    MessagePump& pump;
    Shell& shell;
    Screen& screen;
    system::SystemInfo& system;
    Registry& registry;
    FileExistence& files;
    system::FileSystemRedirection& redirection;
    system::FileSystem& disk;
    system::ProcessLauncher& processes;
    const text::AnsiCodePage& code_page;
    ignore::IgnoreWindow& ignore;
    // The results' context-menu commands of the ignore list.
    std::function<void()> add_value_to_ignore;
    std::function<void()> add_subkey_to_ignore;
};

class MainWindow final : public MainView, public WindowImpl {
  public:
    MainWindow(MainWindowServices services, ProgramState& state);
    ~MainWindow() override;
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    // Creates the window and its controls, runs Form_Load and shows the window.
    bool Create(int show);
    frmMain& form() { return *form_; }
    CheckListView& results() { return errors_; }
    CheckListView& backups() { return backups_; }
    // Sees every queued message before it is dispatched; never consumes one.
    void PreTranslateMessage(const MSG& message) const;

    // MainView
    void SetWindowIcon() override;
    void SetControlsFont(std::string_view font_name) override;
    void BuildTaskPane(const std::vector<TaskPaneGroup>& groups) override;
    void BringToFront(Panel panel) override;
    void ScaleForm(double ratio_x, double ratio_y, bool size_window) override;
    void LayOut() override;
    void ShowAbout() override;
    void ShowInfo(const std::string& explanation) override;
    void Close() override;
    void ScanPaused() override;
    void ShowHeldBack() override;
    void ShowSearch(search::MissingFile missing) override;

  private:
    LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) override;
    void CreateControls();
    void OnCommand(int id, int code);
    void OnNotify(const NMHDR& notification);
    // A double-click or Enter on a row of the results.
    void OnResultActivated(const NMHDR& notification);
    void OnClose();
    void ShowContextMenu(HMENU menu);
    LRESULT ColorStatic(HDC dc, HWND control);
    void FitFirstColumns();

    MainWindowServices services_;
    ProgramState& state_;
    MainMenus menus_;
    taskpane::TaskPane task_pane_;
    FormResizer resizer_;
    handles::UniqueFont font_;
    handles::UniqueFont link_font_;
    handles::UniqueWindow header_tips_;
    bool destroying_ = false;

    // The controls, as the window's code reaches them.
    FormWindow form_window_;
    WindowText frame1_, frame2_, label2_, start_stop_, label21_, label3_;
    ThrottledText status_, current_key_;
    WindowText restore_button_, delete_button_;
    RadioButton option1_, option2_;
    DriveCombo drive_;
    CheckListControl errors_, backups_;
    ProgressControl progress_;
    MenuItemText menu_start_stop_;
    std::vector<HWND> scan_panel_, backups_panel_;

    std::unique_ptr<frmMain> form_;
    std::unique_ptr<about::Win32AboutBox> about_;
    std::unique_ptr<search::Win32SearchWindow> search_;
    std::unique_ptr<info::Win32InfoBox> info_;
};

}  // namespace regvex::ui
