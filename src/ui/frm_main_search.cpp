// The main window's search for a finding's missing file, and the repair with the file
// the user picks.

#include "backup/path_repair.h"
#include "engine/file_reference.h"
#include "text/concat.h"
#include "ui/base/program_version.h"
#include "ui/frm_main.h"

namespace regvex::ui {

namespace {

constexpr std::string_view kRepaired = "Repaired";

}  // namespace

void frmMain::mnuSearch_Click() {
    if (state_.bScanning) {
        Message("The search for a missing file cannot be used during scanning!", mb::kCritical,
                kProductName);
        return;
    }
    CheckListView& list = c_.lvwRegErrors;
    const int row = list.SelectedRow();
    if (row < 0) {
        Message("Please select the item whose missing file you would like to search for.",
                mb::kExclamation, kProductName);
        return;
    }
    const std::string old_path = ValidatePath(list.Text(row, 3), state_.ScanDrive);
    if (old_path == kRejected) {
        Message("No file path can be read from the value of this item.", mb::kExclamation,
                kProductName);
        return;
    }
    // A value that is gone or may not be written is refused before the drive is searched.
    const backup::PathRepairRequest request{
        list.Text(row, 1), list.Text(row, 2), state_.ScanDrive, old_path, {}};
    const backup::ValuePath now =
        backup::ReadValuePath(s_.registry, state_.masks.KeyAccessMask, request);
    if (now.outcome != backup::PathRepairOutcome::kRepaired) {
        Message(backup::PathRepairRefusal({now.outcome, now.status, {}, {}}), mb::kExclamation,
                kProductName);
        return;
    }
    const std::string sub_key = request.sub_key;
    s_.view.ShowSearch({now.found->path, [this, row, sub_key, old_path](const std::string& path) {
                            return UseFoundFile(row, sub_key, old_path, path);
                        }});
}

bool frmMain::UseFoundFile(int row, const std::string& sub_key, const std::string& old_path,
                           const std::string& new_path) {
    CheckListView& list = c_.lvwRegErrors;
    // The list may have changed under the window; the row must still be this finding.
    if (row >= list.RowCount() || list.Text(row, 2) != sub_key) {
        Message("The item is no longer in the list. Nothing was changed.", mb::kExclamation,
                kProductName);
        return false;
    }
    const backup::PathRepairRequest request{list.Text(row, 1), sub_key, state_.ScanDrive, old_path,
                                            new_path};
    const backup::BackupTarget backup{s_.disk, state_.program_folder, s_.clock.GeneralDateText(),
                                      s_.code_page};
    const backup::PathRepairResult result =
        backup::RepairFilePath(s_.registry, state_.masks.KeyAccessMask, backup, request);
    if (result.outcome != backup::PathRepairOutcome::kRepaired) {
        Message(backup::PathRepairRefusal(result), mb::kExclamation, kProductName);
        return false;
    }
    list.SetText(row, 0, kRepaired);
    list.SetText(row, 3, result.value_text);
    Message(text::Concat({"The item now names \"", new_path,
                          "\". The old value was saved in a backup, which the backups page "
                          "can restore."}),
            mb::kInformation, kProductName);
    return true;
}

}  // namespace regvex::ui
