#include <gtest/gtest.h>

#include "support/registry_fixtures.h"
#include "ui/main_window_fakes.h"

namespace regvex::ui {
namespace {

using namespace regvex::testing;

constexpr const char* kFolder = "C:\\App\\RegBackups";

void AddBackupFile(MainWindowRig& rig, const std::string& name, std::size_t size = 100) {
    rig.disk.folders.insert(kFolder);
    rig.disk.files[std::string(kFolder) + "\\" + name] = std::string(size, 'x');
}

TEST(Fix, BacksUpThenDeletesCheckedValuesAndReportsTheRowsNotChecked) {
    LoadedMainWindowRig rig;
    PutString(rig.registry, kHkeyCurrentUser, "Software\\Foo", "A", "C:\\a.exe");
    PutString(rig.registry, kHkeyCurrentUser, "Software\\Foo", "B", "C:\\b.exe");
    PutString(rig.registry, kHkeyCurrentUser, "Software\\Foo", "", "C:\\d.exe");
    rig.AddFinding("HKEY_CURRENT_USER", "Software\\Foo\\A", "C:\\a.exe", true);
    rig.AddFinding("HKEY_CURRENT_USER", "Software\\Foo\\B", "C:\\b.exe", false);
    rig.AddFinding("HKEY_CURRENT_USER", "Software\\Foo\\", "C:\\d.exe", true);

    rig.main.mnuFix_Click();

    EXPECT_EQ(rig.disk.files.at(std::string(kFolder) + "\\Backup (6-3-2013 4.05.06 PM).reg"),
              "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Foo]\r\n\"A\"=\"C:\\\\a.exe\"\r\n"
              "@=\"C:\\\\d.exe\"\r\n");
    EXPECT_EQ(rig.status.Caption(), "Registry Backup Created");
    EXPECT_EQ(rig.Rows()[0][0], "Deleted");
    EXPECT_EQ(rig.Rows()[1][0], "Invalid Entry");
    EXPECT_EQ(rig.Rows()[2][0], "Deleted");
    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(rig.registry, kHkeyCurrentUser, "Software\\Foo", reg::kKeyRead, key),
              reg::kSuccess);
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    EXPECT_EQ(rig.registry.QueryValue(key.get(), "A", type, data), reg::kFileNotFound);
    EXPECT_EQ(rig.registry.QueryValue(key.get(), "B", type, data), reg::kSuccess);
    EXPECT_EQ(rig.registry.QueryValue(key.get(), "", type, data), reg::kFileNotFound);
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].prompt,
              "Registry Vexlor has successfully fixed your registry. There were 1 registry "
              "values that were NOT removed.");
    EXPECT_EQ(rig.dialogs.shown[0].style, mb::kInformation);
    EXPECT_TRUE(rig.dialogs.shown[0].coloured);
}

TEST(Fix, ReportsTheRowsNotCheckedWhateverTheRegistrySaid) {
    const struct {
        std::vector<bool> checked;
        std::string not_removed;
    } cases[] = {{{false, false, false}, "3"}, {{true, true, true}, "0"}, {{}, "0"}};
    for (const auto& c : cases) {
        LoadedMainWindowRig rig;
        for (const bool checked : c.checked) {
            // Unknown roots and values long gone are "deleted" all the same.
            rig.AddFinding("HKEY_ALL", "Gone\\Value", "C:\\x", checked);
        }
        rig.main.mnuFix_Click();
        ASSERT_EQ(rig.dialogs.shown.size(), 1u);
        EXPECT_NE(rig.dialogs.shown[0].prompt.find("There were " + c.not_removed + " registry"),
                  std::string::npos);
        EXPECT_EQ(rig.disk.files.size(), 1u);
    }
}

TEST(Fix, ASubkeyWithoutBackslashEndsTheCommandWithoutAReport) {
    LoadedMainWindowRig rig;
    PutString(rig.registry, kHkeyCurrentUser, "K", "v", "C:\\x");
    rig.AddFinding("HKEY_CURRENT_USER", "K\\v", "C:\\x", true);
    rig.AddFinding("HKEY_CURRENT_USER", "NoBackslash", "C:\\y", true);
    rig.AddFinding("HKEY_CURRENT_USER", "K\\w", "C:\\z", true);
    rig.main.mnuFix_Click();
    EXPECT_EQ(rig.Rows()[0][0], "Deleted");
    EXPECT_EQ(rig.Rows()[1][0], "Invalid Entry");
    EXPECT_EQ(rig.Rows()[2][0], "Invalid Entry");
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST(Fix, ABackupThatCannotBeWrittenDeletesNothing) {
    LoadedMainWindowRig rig;
    rig.disk.can_create_folders = false;
    PutString(rig.registry, kHkeyCurrentUser, "K", "v", "C:\\x");
    rig.AddFinding("HKEY_CURRENT_USER", "K\\v", "C:\\x", true);
    rig.main.mnuFix_Click();
    EXPECT_EQ(rig.status.Caption(), "Creating Registry Backup...");
    EXPECT_EQ(rig.Rows()[0][0], "Invalid Entry");
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST(BackupList, NumbersDatesAndSizesTheBackupsAndTagsTheirNames) {
    LoadedMainWindowRig rig;
    AddBackupFile(rig, "Backup (9-30-2013 1.00.00 PM).reg", 1023);
    AddBackupFile(rig, "Backup (10-1-2013 2.30.00 PM).reg", 1536);
    rig.main.TaskPane_ItemClick(kRestoreTask);
    ASSERT_EQ(rig.backups.rows.size(), 2u);
    EXPECT_EQ(rig.backups.rows[0].texts,
              (std::vector<std::string>{"Backup #1", "10/1/2013 2:30:00 PM", "1.5 KB"}));
    EXPECT_EQ(rig.backups.rows[1].texts,
              (std::vector<std::string>{"Backup #2", "9/30/2013 1:00:00 PM", "1023 Bytes"}));
    EXPECT_EQ(rig.backups.rows[1].tag, "Backup (9-30-2013 1.00.00 PM).reg");
    EXPECT_TRUE(rig.dialogs.shown.empty());
    EXPECT_EQ(rig.view.calls.back(), "front backups");
}

TEST(BackupList, AnEmptyOrMissingFolderIsCreatedAndSaysSo) {
    LoadedMainWindowRig rig;
    rig.backups.AddRow({"stale", "", ""});
    rig.main.LoadBackupList();
    EXPECT_TRUE(rig.disk.folders.count(kFolder));
    EXPECT_TRUE(rig.backups.rows.empty());
    EXPECT_EQ(rig.dialogs.Prompts(),
              (std::vector<std::string>{"There are no backups available at this time."}));
}

TEST(Restore, AsksForEachCheckedBackupAndStopsAtTheFirstNo) {
    const struct {
        std::vector<int> answers;
        std::vector<std::string> prompts;
        std::size_t imports;
    } cases[] = {
        {{mb::kYes, mb::kOk, mb::kNo},
         {"Are you sure you want to restore this backup:  1/1/2020",
          "The backup was successfully restored.",
          "Are you sure you want to restore this backup:  1/2/2020"},
         1},
        {{mb::kNo}, {"Are you sure you want to restore this backup:  1/1/2020"}, 0},
    };
    for (const auto& c : cases) {
        LoadedMainWindowRig rig;
        AddBackupFile(rig, "Backup (1-1-2020).reg");
        AddBackupFile(rig, "Backup (1-2-2020).reg");
        AddBackupFile(rig, "Backup (1-3-2020).reg");
        rig.main.LoadBackupList();
        rig.backups.rows[0].checked = rig.backups.rows[1].checked = true;
        rig.dialogs.answers.assign(c.answers.begin(), c.answers.end());
        rig.main.Command1_Click();
        EXPECT_EQ(rig.dialogs.Prompts(), c.prompts);
        ASSERT_EQ(rig.processes.waited.size(), c.imports);
        if (c.imports > 0) {
            EXPECT_EQ(rig.processes.waited[0],
                      "regedit.exe /s \"C:\\App\\RegBackups\\Backup (1-1-2020).reg\"");
        }
    }
}

TEST(Restore, NothingCheckedOrAScanRunningGetsItsOwnMessage) {
    LoadedMainWindowRig rig;
    AddBackupFile(rig, "Backup (1-1-2020).reg");
    rig.main.LoadBackupList();
    rig.main.Command1_Click();
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].prompt,
              "Please click the checkbox(es) next to the item you would like to restore.");
    EXPECT_EQ(rig.dialogs.shown[0].title, "None Checked");
    EXPECT_EQ(rig.dialogs.shown[0].style, mb::kExclamation);

    rig.dialogs.shown.clear();
    rig.backups.rows[0].checked = true;
    rig.state.bScanning = true;
    rig.main.Command1_Click();
    EXPECT_EQ(rig.dialogs.Prompts(),
              (std::vector<std::string>{"This feature cannot be viewed during scanning!"}));
    EXPECT_TRUE(rig.processes.waited.empty());
}

TEST(Restore, OnSixtyFourBitWindowsTheImportRunsWithRedirectionOff) {
    LoadedMainWindowRig rig;
    rig.system.version = {5, 2};
    rig.system.architecture = system::kProcessorArchitectureAmd64;
    AddBackupFile(rig, "Backup (1-1-2020).reg");
    rig.main.LoadBackupList();
    rig.backups.rows[0].checked = true;
    rig.processes.on_run = [&](const std::string&) { rig.redirection.calls.push_back("run"); };
    rig.main.Command1_Click();
    EXPECT_EQ(rig.redirection.calls, (std::vector<std::string>{"disable", "run", "revert 171"}));
}

TEST(DeleteBackups, TheMessagesFollowWhatWasInTheList) {
    const struct {
        int files;
        std::vector<int> checked;
        std::vector<std::string> prompts;
        std::size_t left;
    } cases[] = {
        {0, {}, {"There are no backups to remove."}, 0},
        {2, {}, {"There are no items selected."}, 2},
        {2,
         {1},
         {"Are you sure you want to delete this backup:  1/2/2020",
          "Selected backups have been removed."},
         1},
        // The rebuild finds nothing and says so before the removal message.
        {2,
         {0, 1},
         {"Are you sure you want to delete this backup:  1/1/2020",
          "Are you sure you want to delete this backup:  1/2/2020",
          "There are no backups available at this time.", "Selected backups have been removed."},
         0},
    };
    for (const auto& c : cases) {
        LoadedMainWindowRig rig;
        rig.disk.folders.insert(kFolder);
        for (int i = 1; i <= c.files; ++i) {
            AddBackupFile(rig, "Backup (1-" + std::to_string(i) + "-2020).reg");
        }
        if (c.files > 0) {
            rig.main.LoadBackupList();
        }
        for (const int row : c.checked) {
            rig.backups.rows[static_cast<std::size_t>(row)].checked = true;
        }
        rig.main.Command2_Click();
        EXPECT_EQ(rig.dialogs.Prompts(), c.prompts);
        EXPECT_EQ(rig.disk.files.size(), c.left);
        EXPECT_EQ(rig.backups.rows.size(), c.left);
    }
}

TEST(DeleteBackups, ALockedFileCountsAsDeletedAndANoEndsTheCommand) {
    LoadedMainWindowRig rig;
    AddBackupFile(rig, "Backup (1-1-2020).reg");
    AddBackupFile(rig, "Backup (1-2-2020).reg");
    rig.main.LoadBackupList();
    rig.disk.locked.insert(std::string(kFolder) + "\\Backup (1-1-2020).reg");
    rig.backups.rows[0].checked = true;
    rig.main.Command2_Click();
    EXPECT_EQ(rig.dialogs.Prompts().back(), "Selected backups have been removed.");

    rig.dialogs.shown.clear();
    rig.disk.locked.clear();
    rig.main.LoadBackupList();
    rig.backups.rows[0].checked = rig.backups.rows[1].checked = true;
    rig.dialogs.answers = {mb::kNo};
    rig.main.Command2_Click();
    EXPECT_EQ(rig.dialogs.Prompts().size(), 1u);
    EXPECT_EQ(rig.disk.files.size(), 2u);
}

TEST(ViewBackup, StartsNotepadWithTheUnquotedPathOfTheSelectedRow) {
    LoadedMainWindowRig rig;
    AddBackupFile(rig, "Backup (1-1-2020 1.00.00 PM).reg");
    rig.main.LoadBackupList();
    rig.main.View_Backup_Click();
    EXPECT_TRUE(rig.processes.started.empty());
    EXPECT_EQ(rig.dialogs.shown.size(), 1u);

    rig.backups.selected = 0;
    rig.main.View_Backup_Click();
    EXPECT_EQ(rig.processes.started,
              (std::vector<std::string>{
                  "notepad.exe C:\\App\\RegBackups\\Backup (1-1-2020 1.00.00 PM).reg"}));

    rig.disk.files.clear();
    rig.main.View_Backup_Click();
    EXPECT_EQ(rig.processes.started.size(), 1u);
    EXPECT_EQ(rig.backups.rows.size(), 1u);
}

TEST(RegeditView, LastKeyIsThePathWithoutItsLastElement) {
    const struct {
        std::uint32_t major;
        std::string_view sub_key;
        std::string_view last_key;
    } cases[] = {
        {6, "SOFTWARE\\Foo\\Bar", "Computer\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Foo"},
        {10, "SOFTWARE\\Foo\\Bar", "Computer\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Foo"},
        {5, "SOFTWARE\\Foo\\Bar", "My Computer\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Foo"},
        {6, "SOFTWARE\\Foo\\", "Computer\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Foo"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(RegeditLastKey(c.major, "HKEY_LOCAL_MACHINE", c.sub_key), c.last_key);
    }
}

constexpr std::string_view kRegeditKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";

std::optional<std::string> LastKey(MemoryRegistry& registry) {
    ScopedKey key;
    if (ScopedKey::Open(registry, kHkeyCurrentUser, kRegeditKey, reg::kKeyRead, key) !=
        reg::kSuccess) {
        return std::nullopt;
    }
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    if (registry.QueryValue(key.get(), "LastKey", type, data) != reg::kSuccess) {
        return std::nullopt;
    }
    return std::string(data.begin(), data.end());
}

TEST(RegeditView, WritesLastKeyAndStartsTheEditorOnlyOnSixtyFourBitWindows) {
    const struct {
        system::OsVersion version;
        std::uint16_t architecture;
        std::vector<std::string> started;
    } cases[] = {
        {{6, 1}, system::kProcessorArchitectureAmd64, {"regedit.exe"}},
        {{6, 1}, 0, {}},
        // Version 10 compares below "5.1" as text and is taken for a 32-bit system.
        {{10, 0}, system::kProcessorArchitectureAmd64, {}},
    };
    for (const auto& c : cases) {
        LoadedMainWindowRig rig;
        rig.system.version = c.version;
        rig.system.architecture = c.architecture;
        PutKey(rig.registry, kHkeyCurrentUser, kRegeditKey);
        rig.AddFinding("HKEY_CURRENT_USER", "Software\\Foo\\Bar", "C:\\x", false);
        rig.errors.selected = 0;
        rig.main.Regedit_View_Click();
        EXPECT_EQ(LastKey(rig.registry), "Computer\\HKEY_CURRENT_USER\\Software\\Foo");
        EXPECT_EQ(rig.processes.started, c.started);
        EXPECT_TRUE(rig.dialogs.shown.empty());
    }
}

TEST(RegeditView, NeverCreatesTheEditorsKeyAndExplainsWhatItCannotDo) {
    LoadedMainWindowRig rig;
    rig.AddFinding("HKEY_CURRENT_USER", "Software\\Foo\\Bar", "C:\\x", false);
    rig.errors.selected = 0;
    rig.main.Regedit_View_Click();
    EXPECT_EQ(LastKey(rig.registry), std::nullopt);

    const struct {
        bool scanning;
        system::OsVersion version;
        int selected;
        std::string prompt;
        int style;
    } cases[] = {
        {true, {6, 1}, 0, "This feature cannot be viewed during scanning!", mb::kCritical},
        {false,
         {4, 0},
         0,
         "This feature is only available on Windows 2000 or higher.",
         mb::kExclamation},
        {false, {6, 1}, -1, "There was no key selected to view.", mb::kExclamation},
    };
    for (const auto& c : cases) {
        rig.dialogs.shown.clear();
        rig.state.bScanning = c.scanning;
        rig.system.version = c.version;
        rig.errors.selected = c.selected;
        rig.main.Regedit_View_Click();
        ASSERT_EQ(rig.dialogs.shown.size(), 1u);
        EXPECT_EQ(rig.dialogs.shown[0].prompt, c.prompt);
        EXPECT_EQ(rig.dialogs.shown[0].style, c.style);
    }
}

}  // namespace
}  // namespace regvex::ui
