// The main window's repair and backup commands: Fix, the backups list, and restoring,
// deleting and viewing backups.

#include <exception>

#include "backup/backup_catalogue.h"
#include "backup/backup_file.h"
#include "backup/registry_fix.h"
#include "text/concat.h"
#include "ui/base/list_rows.h"
#include "ui/base/program_version.h"
#include "ui/frm_main.h"

namespace regvex::ui {

namespace {

// These commands go on past every failure: a name without a date shows none.
std::string DateTextOrNothing(std::string_view file_name) {
    try {
        return backup::BackupDateText(file_name);
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace

bool frmMain::EnsureBackupsFolder() {
    const std::string folder = backup::BackupsFolder(state_.program_folder);
    return s_.disk.Exists(folder) || s_.disk.CreateFolder(folder);
}

void frmMain::CreateRegistryBackup() {
    CheckListView& list = c_.lvwRegErrors;
    const int count = CountOfRows(list.RowCount());
    std::vector<backup::BackupRow> rows;
    for (int row = 0; row < count; ++row) {
        if (list.Checked(row)) {
            rows.push_back({list.Text(row, 1), list.Text(row, 2), list.Text(row, 3)});
        }
    }
    backup::CreateBackupFile(s_.disk, state_.program_folder, s_.clock.GeneralDateText(), rows,
                             s_.code_page);
}

void frmMain::mnuFix_Click() {
    CheckListView& list = c_.lvwRegErrors;
    // A failure ends the command where it stands: what was deleted stays deleted, and
    // no report follows.
    try {
        c_.lblStatus.SetCaption("Creating Registry Backup...");
        CreateRegistryBackup();
        c_.lblStatus.SetCaption("Registry Backup Created");
        int deleted = 0;
        for (int row = 0; row < list.RowCount(); ++row) {
            if (!list.Checked(row)) {
                continue;
            }
            backup::DeleteRegistryValuePath(s_.registry, RootKeyFromName(list.Text(row, 1)),
                                            list.Text(row, 2), state_.masks.KeyAccessMask);
            list.SetText(row, 0, "Deleted");
            ++deleted;
        }
        const int n = list.RowCount();
        Message(
            text::Concat({"Registry Vexlor has successfully fixed your registry. There were ",
                          std::to_string(n - deleted), " registry values that were NOT removed."}),
            mb::kInformation, kProductName);
    } catch (const std::exception&) {
    }
}

void frmMain::LoadBackupList() {
    CheckListView& list = c_.lvwRegBackups;
    list.Clear();
    EnsureBackupsFolder();
    std::vector<backup::BackupEntry> entries;
    const auto add_rows = [&] {
        for (const backup::BackupEntry& entry : entries) {
            list.AddRow({entry.number_text, entry.date_text, entry.size_text});
            list.SetTag(list.RowCount() - 1, entry.file_name);
        }
    };
    try {
        backup::ListBackups(s_.disk, backup::BackupsFolder(state_.program_folder), entries);
    } catch (...) {
        add_rows();
        throw;
    }
    add_rows();
    if (list.RowCount() == 0) {
        Message("There are no backups available at this time.", mb::kInformation, kProductName);
    }
}

void frmMain::Command1_Click() {
    if (state_.bScanning) {
        Message("This feature cannot be viewed during scanning!", mb::kCritical, kProductName);
        return;
    }
    EnsureBackupsFolder();
    CheckListView& list = c_.lvwRegBackups;
    int restored = 0;
    for (int row = 0; row < list.RowCount(); ++row) {
        if (!list.Checked(row)) {
            continue;
        }
        const std::string file_name = list.Tag(row);
        const std::string date_text = DateTextOrNothing(file_name);
        if (Message(text::Concat({"Are you sure you want to restore this backup:  ", date_text}),
                    mb::kYesNo | mb::kQuestion, kProductName) != mb::kYes) {
            return;
        }
        {
            const system::RedirectionOff redirection(s_.redirection,
                                                     system::Is64BitWindows(s_.system));
            s_.processes.RunAndWait(backup::RestoreCommandLine(state_.program_folder, file_name));
        }
        Message("The backup was successfully restored.", mb::kOkOnly, kProductName);
        ++restored;
    }
    if (restored == 0) {
        Message("Please click the checkbox(es) next to the item you would like to restore.",
                mb::kExclamation, "None Checked");
    }
}

void frmMain::Command2_Click() {
    EnsureBackupsFolder();
    CheckListView& list = c_.lvwRegBackups;
    const std::string folder = backup::BackupsFolder(state_.program_folder);
    int deleted = 0;
    for (int row = 0; row < list.RowCount(); ++row) {
        if (!list.Checked(row)) {
            continue;
        }
        const std::string file_name = list.Tag(row);
        const std::string date_text = DateTextOrNothing(file_name);
        if (Message(text::Concat({"Are you sure you want to delete this backup:  ", date_text}),
                    mb::kYesNo | mb::kQuestion, kProductName) != mb::kYes) {
            return;
        }
        // A file that is locked or already gone counts as deleted all the same.
        s_.disk.RemoveFile(text::Concat({folder, "\\", file_name}));
        ++deleted;
    }
    if (list.RowCount() == 0) {
        Message("There are no backups to remove.", mb::kInformation, kProductName);
    } else if (deleted > 0) {
        list.Clear();
        try {
            LoadBackupList();
        } catch (const std::exception&) {
        }
        list.Refresh();
        Message("Selected backups have been removed.", mb::kInformation, kProductName);
    } else {
        Message("There are no items selected.", mb::kExclamation, "None Checked");
    }
}

void frmMain::View_Backup_Click() {
    CheckListView& list = c_.lvwRegBackups;
    const int row = list.SelectedRow();
    if (row < 0) {
        Message("Please select the backup you would like to view.", mb::kExclamation, kProductName);
        return;
    }
    const std::string file_name = list.Tag(row);
    const std::string path =
        text::Concat({backup::BackupsFolder(state_.program_folder), "\\", file_name});
    if (!s_.disk.Exists(path)) {
        Message(text::Concat({"The backup file \"", path, "\" cannot be found."}), mb::kExclamation,
                kProductName);
        return;
    }
    if (!s_.processes.Start(backup::ViewCommandLine(state_.program_folder, file_name))) {
        Message("Notepad could not be started to show the backup.", mb::kExclamation, kProductName);
    }
}

}  // namespace regvex::ui
