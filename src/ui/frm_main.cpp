#include "ui/frm_main.h"

#include "ui/base/program_version.h"
#include "ui/help/help_file.h"
#include "ui/task_pane_keys.h"

namespace regvex::ui {

namespace {

constexpr double kDesignWidth = 1024;
constexpr double kDesignHeight = 768;

}  // namespace

std::vector<TaskPaneGroup> TaskPaneGroups() {
    return {
        {"&Tasks",
         kTasksGroup,
         {
             {kScanTask, "Scan", "This task will scan for invalid entries in the registry."},
             {kCheckAllTask, "Select All Items", "This task will select all items to be deleted."},
             {kUncheckTask, "UnSelect All Items",
              "This task will deselect all items that were previously selected."},
             {kDeleteTask, "Delete Selected Items",
              "This task will remove all selected items from the registry and create a backup "
              "file."},
             {kRestoreTask, "Restore Backups",
              "This task allows you to restore all registry entries removed."},
             {kIgnoreTask, "Ignore List",
              "This task allows you to have Registry Vexlor ignore what you specify."},
         }},
        {"&Info",
         kInfoGroup,
         {{"", "Backups are created automatically when deleting items from the registry.", ""}}},
        {"&Details",
         kDetailsGroup,
         {
             {kVersionTask, ProgramTitleAndVersion(), ""},
             {kCopyrightTask, "Copyright \xC2\xA9 2026 Dunmarch Software", ""},
             {kCompanyTask, "Dunmarch Software", ""},
             {kAboutTask, "About...", ""},
             {kLikeTask, "\"Like\" Dunmarch Software",
              "\"Like\" Dunmarch Software. Visit Our Facebook Page"},
         }},
    };
}

frmMain::frmMain(MainControls controls, MainServices services, ProgramState& state)
    : c_(controls), s_(services), state_(state) {}

frmMain::~frmMain() = default;

int frmMain::Message(std::string_view prompt, int style, std::string_view title) {
    return ShowMessage(s_.dialogs, state_.theme, prompt, style, title);
}

void frmMain::Form_Load() {
    s_.view.SetWindowIcon();
    if (s_.system.Version().major >= 6) {
        s_.view.SetControlsFont("Segoe UI");
    }
    c_.Label21.SetCaption(ProgramTitleAndVersion());
    c_.form.SetCaption(ProgramTitleAndVersion());
    SearchHost& host = *this;
    SearchEvents& events = *this;
    cReg = std::make_unique<cRegSearch>(s_.registry, host, events, state_.masks.KeyAccessMask);

    c_.lvwRegErrors.AddColumn({"Status", "STATUS", "Status of the Registry Value"});
    c_.lvwRegErrors.AddColumn({"RootKey", "ROOT", "The Root Registry Key"});
    c_.lvwRegErrors.AddColumn({"SubKey", "SUB", "The key under the root key."});
    c_.lvwRegErrors.AddColumn({"Value", "VALUE", "The actual Value of the registry entry"});
    c_.lvwRegBackups.AddColumn({"Backup Number", "BACKUP", "The number of the Backup File"});
    c_.lvwRegBackups.AddColumn({"Date Created", "DATE", "The date the backup file was created"});
    c_.lvwRegBackups.AddColumn({"Filesize", "FILESIZE", "The size of the backup file"});

    s_.view.BuildTaskPane(TaskPaneGroups());
    c_.Option2.SetValue(true);
    bSafeScan_ = true;
    ScreenScaling(true);
}

void frmMain::ScreenScaling(bool at_load) {
    const ScreenMetrics screen = s_.screen.Metrics();
    // At load only a screen wider than the design scales; around a scan one as wide as
    // it does too. The two have always differed so.
    const bool wide =
        at_load ? screen.width_pixels > kDesignWidth : screen.width_pixels >= kDesignWidth;
    if (!wide) {
        return;
    }
    double ratio_x = screen.width_pixels / kDesignWidth;
    double ratio_y = screen.height_pixels / kDesignHeight;
    if (screen.twips_per_pixel_x <= 10) {
        ratio_x = kDesignWidth / screen.width_pixels;
        ratio_y = kDesignHeight / screen.height_pixels;
    }
    s_.view.ScaleForm(ratio_x, ratio_y, at_load);
}

void frmMain::Form_Resize() {
    if (!c_.form.IsMinimized()) {
        s_.view.LayOut();
    }
}

void frmMain::TaskPane_ItemClick(std::string_view key) {
    if (key == kScanTask) {
        s_.view.BringToFront(MainView::Panel::kScan);
    } else if (key == kCheckAllTask) {
        mnuCheckAll_Click();
    } else if (key == kUncheckTask) {
        mnuUncheckAll_Click();
    } else if (key == kDeleteTask) {
        mnuFix_Click();
    } else if (key == kAboutTask) {
        s_.view.ShowAbout();
    } else if (key == kRestoreTask) {
        try {
            LoadBackupList();
        } catch (const std::exception& error) {
            ShowRunTimeError(s_.dialogs, state_.theme, error);
        }
        s_.view.BringToFront(MainView::Panel::kBackups);
    } else if (key == kIgnoreTask) {
        if (state_.bScanning) {
            Message("The ignore list cannot be viewed during scanning!", mb::kCritical,
                    kProductName);
        } else {
            s_.ignore.Show();
        }
    } else if (key == kLikeTask) {
        s_.shell.OpenUrl(kProjectPage);
    }
}

void frmMain::mnuCheckAll_Click() {
    for (int row = 0; row < c_.lvwRegErrors.RowCount(); ++row) {
        c_.lvwRegErrors.SetChecked(row, true);
    }
}

void frmMain::mnuUncheckAll_Click() {
    for (int row = 0; row < c_.lvwRegErrors.RowCount(); ++row) {
        c_.lvwRegErrors.SetChecked(row, false);
    }
}

bool frmMain::Form_QueryUnload(int unload_mode) {
    if (unload_mode != kUnloadFromTitleBar) {
        return false;
    }
    if (Message("Are you sure you want to quit?", mb::kYesNo | mb::kQuestion, kProductName) !=
        mb::kYes) {
        return true;
    }
    // A running scan ends the process at its next pause.
    if (cReg) {
        cReg->CloseProgram();
    }
    return false;
}

void frmMain::Form_Unload() {
    s_.ignore.Unload();
}

void frmMain::mnuExit_Click() {
    s_.view.Close();
}

void frmMain::Image1_Click() {
    ShowHelp();
}

void frmMain::Label3_Click() {
    ShowHelp();
}

void frmMain::mnuHelp2_Click() {
    ShowHelp();
}

void frmMain::mnuAbout_Click() {
    s_.view.ShowAbout();
}

void frmMain::ShowHelp() {
    const std::string path = help::HelpFilePath(state_.program_folder);
    if (!s_.shell.ShowHelp(path)) {
        Message(help::HelpNotShownMessage(path, PathExists(s_.files, path)), mb::kExclamation,
                kProductName);
    }
}

}  // namespace regvex::ui
