#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "backup/backup_file.h"
#include "backup/reg_file_reader.h"
#include "cli/cli.h"
#include "engine/forwarding_registry.h"
#include "engine/memory_registry.h"
#include "support/cli_platform.h"
#include "support/system_doubles.h"

namespace regvex::cli {
namespace {

const std::string kFixtures = std::string(REGVEX_FIXTURES_DIR) + "/cli";
constexpr const char* kFolder = "C:\\Vexlor";
constexpr const char* kBackups = "C:\\Vexlor\\RegBackups";

// The fixture's registry as the live one, with a repair side in memory.
class LivePlatform final : public testing::FakeCliPlatform, public RepairPlatform {
  public:
    LivePlatform() {
        live = &registry;
        repair = this;
        const auto error =
            backup::ImportRegFile(kFixtures + "/scan_examples.reg", registry, code_page);
        if (error) {
            throw std::runtime_error(error->message);
        }
        disk.folders.insert(kFolder);
    }
    std::string ProgramFolder() override { return kFolder; }
    system::FileSystem& Disk() override { return disk; }
    system::ProcessLauncher& Processes() override { return processes; }
    system::FileSystemRedirection& Redirection() override { return redirection; }
    bool Is64BitWindows() override { return false; }
    std::string GeneralDateText() override { return "6/3/2013 4:05:06 PM"; }

    Run Scan() { return Cli({"scan", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c"}); }

    MemoryRegistry registry;
    testing::MemoryFileSystem disk;
    testing::RecordingProcesses processes;

  private:
    class NoRedirection final : public system::FileSystemRedirection {
      public:
        std::uintptr_t Disable() override { return 0; }
        void Revert(std::uintptr_t) override {}
    } redirection;
};

// HKEY_CURRENT_USER reached a second time as a key of HKEY_USERS, as on Windows: both
// names of a key answer one stored key name.
class UsersLinked final : public ForwardingRegistry {
  public:
    explicit UsersLinked(MemoryRegistry& registry) : ForwardingRegistry(registry) {
        KeyHandle key = 0;
        registry.CreateKey(kHkeyUsers, kSid, reg::kKeyAllAccess, key);
        registry.CloseKey(key);
    }
    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override {
        if (root == kHkeyUsers && path.starts_with(kSid) &&
            (path.size() == kSid.size() || path[kSid.size()] == '\\')) {
            root = kHkeyCurrentUser;
            path.remove_prefix(std::min(path.size(), kSid.size() + 1));
        }
        const RegStatus status = inner().OpenKey(root, path, access, key);
        if (status == reg::kSuccess) {
            stored_[key] =
                path.empty() ? RootKeyName(root) : RootKeyName(root) + "\\" + std::string(path);
        }
        return status;
    }
    RegStatus CloseKey(KeyHandle key) override {
        stored_.erase(key);
        return inner().CloseKey(key);
    }
    bool StoredKeyName(KeyHandle key, std::string& name) override {
        name = stored_.at(key);
        return true;
    }

  private:
    static constexpr std::string_view kSid = "S-1-5-21-1000";
    std::map<KeyHandle, std::string> stored_;
};

std::size_t LineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(CliFix, BacksUpAndDeletesEveryFindingSoThatARescanFindsNone) {
    LivePlatform live;
    const auto before = live.Scan();
    const auto fix = live.Cli({"fix", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c"});
    ASSERT_EQ(fix.exit_code, kExitOk) << fix.err;
    EXPECT_EQ(LineCount(fix.out), 12u);
    EXPECT_EQ(fix.out.substr(0, 8), "Deleted\t");
    const std::string backup_path = std::string(kBackups) + "\\Backup (6-3-2013 4.05.06 PM).reg";
    EXPECT_NE(
        fix.err.find(R"(12 values deleted, 0 refused; backup: C:\\Vexlor\\RegBackups\\Backup )"
                     R"((6-3-2013 4.05.06 PM).reg)"),
        std::string::npos);
    const std::string& backup = live.disk.files.at(backup_path);
    EXPECT_EQ(backup.substr(0, 10), "REGEDIT4\r\n");
    EXPECT_NE(
        backup.find("[HKEY_CURRENT_USER\\Software\\Vexlor Fixture]\r\n\"Plain\"=\"C:\\\\Program "
                    "Files\\\\App\\\\app.exe\"\r\n"),
        std::string::npos);
    EXPECT_NE(backup.find("@=\"C:\\\\Default\\\\gone.dll\""), std::string::npos);
    EXPECT_EQ(LineCount(before.out), 12u);
    EXPECT_EQ(live.Scan().out, "");
}

TEST(CliFix, OnlyFixesFindingsWhoseSubkeyOrValueHoldsTheText) {
    LivePlatform live;
    const auto fix = live.Cli(
        {"fix", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c", "--only", "APP.exe"});
    ASSERT_EQ(fix.exit_code, kExitOk) << fix.err;
    EXPECT_EQ(LineCount(fix.out), 3u);
    EXPECT_EQ(LineCount(live.Scan().out), 9u);

    const auto nothing = live.Cli(
        {"fix", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c", "--only", "no such"});
    EXPECT_EQ(nothing.exit_code, kExitOk);
    EXPECT_EQ(nothing.out, "");
    EXPECT_EQ(live.disk.files.size(), 1u);
}

TEST(CliFix, SaysWhichDeletionsTheRegistryRefusedAndEndsWithOne) {
    // Keys whose values the registry refuses to delete, as a machine key does when the
    // token is a standard user's or an administrator's filtered one.
    const struct {
        std::vector<std::pair<RootKeyHandle, std::string>> denied;
        bool users_linked;  // HKEY_CURRENT_USER is found again below HKEY_USERS
        int exit_code;
        std::size_t refused;
        std::string summary;
    } cases[] = {
        {{{kHkeyLocalMachine, "SOFTWARE\\Vexlor Fixture"}},
         false,
         kExitNotAllDone,
         1,
         "11 values deleted, 1 refused"},
        {{{kHkeyLocalMachine, "SOFTWARE\\Vexlor Fixture"},
          {kHkeyCurrentUser, "Software\\Vexlor Fixture\\Deeper\\Still"}},
         false,
         kExitNotAllDone,
         2,
         "10 values deleted, 2 refused"},
        // The second finding of a value deleted through the first is no refusal.
        {{}, true, kExitOk, 0, "23 values deleted, 0 refused"},
        {{{kHkeyCurrentUser, "Software\\Vexlor Fixture\\Deeper\\Still"}},
         true,
         kExitNotAllDone,
         2,
         "21 values deleted, 2 refused"},
    };
    for (const auto& c : cases) {
        LivePlatform live;
        UsersLinked linked(live.registry);
        if (c.users_linked) {
            live.live = &linked;
        }
        for (const auto& [root, path] : c.denied) {
            live.registry.DenyValueDeletion(root, path);
        }
        const auto fix =
            live.Cli({"fix", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c"});
        EXPECT_EQ(fix.exit_code, c.exit_code) << c.summary;
        EXPECT_NE(fix.err.find(c.summary + "; backup: "), std::string::npos) << fix.err;
        EXPECT_EQ(LineCount(fix.out), c.users_linked ? 23u : 12u) << fix.out;
        if (!c.denied.empty() && c.denied[0].first == kHkeyLocalMachine) {
            EXPECT_NE(fix.out.find("Refused (access denied)\tHKEY_LOCAL_MACHINE\tSOFTWARE\\\\"
                                   "Vexlor Fixture\\\\Machine\tC:\\\\Windows\\\\gone.sys\n"),
                      std::string::npos)
                << fix.out;
        }
        // What was refused is still there to be found.
        EXPECT_EQ(LineCount(live.Scan().out), c.refused);
    }
}

TEST(CliFix, ABackupThatCannotBeWrittenDeletesNothing) {
    LivePlatform live;
    live.disk.can_create_folders = false;
    const auto fix = live.Cli({"fix", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c"});
    EXPECT_EQ(fix.exit_code, kExitScanFailed);
    EXPECT_NE(fix.err.find("Nothing was deleted."), std::string::npos);
    EXPECT_EQ(LineCount(live.Scan().out), 12u);
}

TEST(CliBackups, ListsRestoresAndDeletesByCatalogueNumber) {
    LivePlatform live;
    live.disk.folders.insert(kBackups);
    live.disk.files[std::string(kBackups) + "\\Backup (9-30-2013 1.00.00 PM).reg"] = "REGEDIT4\r\n";
    live.disk.files[std::string(kBackups) + "\\Backup (10-1-2013 1.00.00 PM).reg"] =
        std::string(1536, 'x');
    EXPECT_EQ(live.Cli({"backups"}).out,
              "Backup #1\t10/1/2013 1:00:00 PM\t1.5 KB\tBackup (10-1-2013 1.00.00 PM).reg\n"
              "Backup #2\t9/30/2013 1:00:00 PM\t10 Bytes\tBackup (9-30-2013 1.00.00 PM).reg\n");

    const auto restore = live.Cli({"backups", "restore", "2"});
    EXPECT_EQ(restore.exit_code, kExitOk) << restore.err;
    EXPECT_EQ(live.processes.waited,
              (std::vector<std::string>{"regedit.exe /s \"C:\\Vexlor\\RegBackups\\Backup "
                                        "(9-30-2013 1.00.00 PM).reg\""}));

    EXPECT_EQ(live.Cli({"backups", "delete", "1"}).exit_code, kExitOk);
    EXPECT_EQ(live.disk.files.count(std::string(kBackups) + "\\Backup (10-1-2013 1.00.00 PM).reg"),
              0u);
    EXPECT_EQ(live.Cli({"backups"}).out.substr(0, 10), "Backup #1\t");
}

TEST(CliBackups, ARestoreReadsBackWhatTheRegistryEditorWrote) {
    const std::string backup = std::string(kBackups) + "\\Backup (6-3-2013 4.05.06 PM).reg";
    const struct {
        const char* name;
        bool imports;
        std::uint32_t editor_answer;
        std::string backup_text;  // empty: the fix's own
        int exit_code;
        std::size_t not_restored;
        std::string message;
    } cases[] = {
        {"imported", true, 0, "", kExitOk, 0, "12 of 12 values read back as restored"},
        {"not imported", false, 0, "", kExitNotAllDone, 12, "0 of 12 values read back"},
        {"editor failed", true, 1, "", kExitNotAllDone, 0, "the Registry Editor answered 1"},
        {"malformed", true, 0, "not a backup\r\n", kExitUsage, 0, "nothing was restored"},
    };
    for (const auto& c : cases) {
        LivePlatform live;
        ASSERT_EQ(
            live.Cli({"fix", "--drive", "C:", "--map", "C:=" + kFixtures + "/drive_c"}).exit_code,
            kExitOk);
        if (!c.backup_text.empty()) {
            live.disk.files[backup] = c.backup_text;
        }
        live.processes.exit_code = c.editor_answer;
        live.processes.on_run = [&](const std::string&) {
            if (c.imports) {
                ASSERT_FALSE(
                    backup::ImportRegText(live.disk.files.at(backup), live.registry, live.code_page)
                        .has_value());
            }
        };
        const auto restore = live.Cli({"backups", "restore", "1"});
        EXPECT_EQ(restore.exit_code, c.exit_code) << c.name << ": " << restore.err;
        EXPECT_NE(restore.err.find(c.message), std::string::npos) << c.name << ": " << restore.err;
        EXPECT_EQ(std::count(restore.out.begin(), restore.out.end(), '\n') -
                      (restore.exit_code == kExitOk ? 1 : 0),
                  static_cast<std::ptrdiff_t>(c.not_restored))
            << c.name << ": " << restore.out;
        EXPECT_EQ(restore.out.starts_with("Not restored (value missing)\tHKEY_LOCAL_MACHINE\t"
                                          "SOFTWARE\\\\Vexlor Fixture\\\\Machine\n"),
                  c.not_restored != 0)
            << c.name << ": " << restore.out;
        EXPECT_EQ(live.processes.waited.size(), c.exit_code == kExitUsage ? 0u : 1u) << c.name;
    }
}

TEST(CliBackups, BadNumbersAndActionsExplainThemselves) {
    LivePlatform live;
    const struct {
        std::vector<std::string> args;
        int exit_code;
        std::string message;
    } cases[] = {
        {{"backups", "restore", "1"}, kExitUsage, "there is no Backup #1 (0 backups)"},
        {{"backups", "restore"}, kExitUsage, "backups takes nothing"},
        {{"backups", "restore", "x1"}, kExitUsage, "backups takes nothing"},
        {{"backups", "remove", "1"}, kExitUsage, "backups takes nothing"},
        {{"backups"}, kExitOk, "There are no backups available at this time."},
        {{"fix", "--drive", "C:", "--registry", "a.reg"}, kExitUsage, "live registry only"},
        {{"fix", "--drive", "C:", "--only"}, kExitUsage, "--only needs a text"},
        {{"fix"}, kExitUsage, "scan needs --drive"},
    };
    for (const auto& c : cases) {
        const auto run = live.Cli(c.args);
        EXPECT_EQ(run.exit_code, c.exit_code) << c.args.back();
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
    }
    EXPECT_TRUE(live.processes.waited.empty());
}

// Standard output on a full disk: no write arrives.
class FullDevice final : public std::streambuf {
  protected:
    int_type overflow(int_type) override { return traits_type::eof(); }
};

TEST(CliOutput, AFailedWriteEndsEveryCommandWithOneAndSaysSo) {
    const std::string map = "C:=" + kFixtures + "/drive_c";
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"scan", "--drive", "C:", "--map", map},
             {"fix", "--drive", "C:", "--map", map},
             {"backups"},
             {"backups", "delete", "1"},
             {"scan", "--help"},
         }) {
        LivePlatform live;
        live.disk.folders.insert(kBackups);
        live.disk.files[std::string(kBackups) + "\\Backup (9-30-2013 1.00.00 PM).reg"] = "x";
        FullDevice full;
        std::ostream out(&full);
        std::ostringstream err;
        EXPECT_EQ(RunCli(args, out, err, live), kExitScanFailed) << args[0];
        EXPECT_NE(err.str().find("regvexlor-cli: could not write to standard output"),
                  std::string::npos)
            << err.str();
        if (args[0] == "fix") {
            // What was deleted is in the backup all the same.
            EXPECT_EQ(
                live.disk.files.count(std::string(kBackups) + "\\Backup (6-3-2013 4.05.06 PM).reg"),
                1u);
        }
    }
}

}  // namespace
}  // namespace regvex::cli
