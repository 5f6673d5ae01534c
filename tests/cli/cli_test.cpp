#include "cli/cli.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "engine/memory_registry.h"
#include "support/registry_fixtures.h"
#include "support/temp_folder.h"

namespace regvex::cli {
namespace {

const std::string kFixtures = std::string(REGVEX_FIXTURES_DIR) + "/cli";

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// A system without a registry or drives of its own, as Linux is; or, when given one,
// a system whose live registry is `live` and whose files all exist.
class FakePlatform final : public CliPlatform {
  public:
    std::unique_ptr<Registry> OpenLiveRegistry(std::string& why_not) override {
        why_not = "no live registry here";
        return nullptr;
    }
    std::unique_ptr<FileExistence> SystemFiles() override { return nullptr; }
    const text::AnsiCodePage& AnsiCodePage() override { return code_page_; }
    AccessMask KeyAccessMask() override { return reg::kKeyAllAccess; }
    RepairPlatform* Repair(std::string& why_not) override {
        why_not = "no live registry to repair here";
        return nullptr;
    }
    bool StdoutIsTerminal() override { return false; }
    bool StderrIsTerminal() override { return false; }

  private:
    text::Windows1252CodePage code_page_;
};

struct CliRun {
    int exit_code;
    std::string out;
    std::string err;
};

CliRun RunWith(const std::vector<std::string>& args) {
    FakePlatform platform;
    std::ostringstream out;
    std::ostringstream err;
    const int exit_code = RunCli(args, out, err, platform);
    return {exit_code, out.str(), err.str()};
}

TEST(Cli, ScanListsExactlyTheMissingFilesOfTheFixtureInOrder) {
    const CliRun run =
        RunWith({"scan", "--drive", "c:", "--registry", kFixtures + "/scan_examples.reg", "--map",
                 "C:=" + kFixtures + "/drive_c"});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    EXPECT_EQ(run.out, ReadFile(kFixtures + "/scan_examples.expected"));
    EXPECT_EQ(run.err, "12 errors found\n");
}

TEST(Cli, LaterRegistryFilesApplyOnTopOfEarlierOnes) {
    testing::TempFolder folder;
    const std::string second = (folder.path() / "second.reg").string();
    std::ofstream(second, std::ios::binary)
        << "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Vexlor Fixture]\r\n"
           "\"Plain\"=-\r\n\"Added\"=\"C:\\\\added.exe\"\r\n\r\n"
           "[-HKEY_CURRENT_USER\\Software\\Vexlor Fixture\\Deeper]\r\n";
    const CliRun run =
        RunWith({"scan", "--drive", "C", "--registry", kFixtures + "/scan_examples.reg",
                 "--registry", second, "--map", "c=" + kFixtures + "/drive_c"});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    EXPECT_EQ(run.out.find("\\Plain\t"), std::string::npos);
    EXPECT_EQ(run.out.find("Deeper"), std::string::npos);
    EXPECT_NE(run.out.find("Vexlor Fixture\\Added\tC:\\added.exe\n"), std::string::npos);
    EXPECT_EQ(run.err, "11 errors found\n");
}

TEST(Cli, FieldsStayOnOneLine) {
    testing::TempFolder folder;
    const std::string file = (folder.path() / "tabs.reg").string();
    std::ofstream(file, std::ios::binary)
        << "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\K]\r\n"
           "\"v\"=\"C:\\\\a.exe\\n\tnext\"\r\n";
    const CliRun run = RunWith(
        {"scan", "--drive", "C:", "--registry", file, "--map", "C:=" + folder.path().string()});
    EXPECT_EQ(run.out, "Invalid Entry\tHKEY_CURRENT_USER\tK\\v\tC:\\a.exe  next\n");
}

TEST(Cli, BadInvocationsExplainThemselvesAndExitWithTwo) {
    const std::string reg = kFixtures + "/scan_examples.reg";
    const std::string map = "C:=" + kFixtures + "/drive_c";
    const struct {
        std::vector<std::string> args;
        const char* message;
    } cases[] = {
        {{}, "usage: regvexlor-cli scan"},
        {{"clean"}, "unknown command \"clean\""},
        {{"scan"}, "scan needs --drive"},
        {{"scan", "--drive"}, "--drive needs a value"},
        {{"scan", "--drive", "CD"}, "--drive takes a drive letter"},
        {{"scan", "--drive", "1:"}, "--drive takes a drive letter"},
        {{"scan", "--drive", "C:", "--fast"}, "unknown option \"--fast\""},
        {{"scan", "--drive", "C:", "--map", "C:"}, "--map takes a drive and a folder"},
        {{"scan", "--drive", "C:", "--map", "C:="}, "--map takes a drive and a folder"},
        {{"scan", "--drive", "C:", "--registry", reg}, "give the folder that does with --map C:="},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", "D:=" + kFixtures},
         "give the folder that does with --map C:="},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", "C:=/no/such/folder"},
         "\"/no/such/folder\" is not a folder"},
        {{"scan", "--drive", "C:", "--map", map}, "no live registry here"},
        {{"scan", "--drive", "C:", "--registry", "/no/such.reg", "--map", map}, "/no/such.reg: "},
        {{"scan", "--drive", "C:", "--registry", kFixtures + "/drive_c/Present/Here.exe", "--map",
          map},
         "Here.exe"},
    };
    for (const auto& c : cases) {
        const CliRun run = RunWith(c.args);
        EXPECT_EQ(run.exit_code, kExitUsage) << c.message;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "") << c.message;
    }
}

TEST(Cli, MalformedRegistryFileNamesTheLine) {
    testing::TempFolder folder;
    const std::string file = (folder.path() / "broken.reg").string();
    std::ofstream(file, std::ios::binary) << "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\K]\r\n"
                                             "\"v\"=dword:xyz\r\n";
    const CliRun run = RunWith(
        {"scan", "--drive", "C:", "--registry", file, "--map", "C:=" + folder.path().string()});
    EXPECT_EQ(run.exit_code, kExitUsage);
    EXPECT_NE(run.err.find("broken.reg:4: "), std::string::npos) << run.err;
}

TEST(Cli, IgnoreListLeavesOutFindingsWhosePathOrSubkeyHoldsAnEntry) {
    // \app\ twice in two cases, an empty line, "caf\xE9" in Windows-1252, and a last
    // line without its CR LF; all upper-cased on reading.
    const CliRun run =
        RunWith({"scan", "--drive", "C:", "--registry", kFixtures + "/scan_examples.reg", "--map",
                 "C:=" + kFixtures + "/drive_c", "--ignore", kFixtures + "/scan_examples.ignore"});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    EXPECT_EQ(run.out,
              "Invalid Entry\tHKEY_CURRENT_USER\tSoftware\\Vexlor Fixture\\Rundll\t"
              "rundll32.exe C:\\Win\\shell32.dll,Control_RunDLL\n"
              "Invalid Entry\tHKEY_CURRENT_USER\tSoftware\\Vexlor Fixture\\\t"
              "C:\\Default\\gone.dll\n"
              "Invalid Entry\tHKEY_CURRENT_USER\tSoftware\\Vexlor Fixture\\Multi\tC:\\first.exe\n"
              "Invalid Entry\tHKEY_LOCAL_MACHINE\tSOFTWARE\\Vexlor Fixture\\Machine\t"
              "C:\\Windows\\gone.sys\n");
    EXPECT_EQ(run.err, "4 errors found\n");
}

TEST(Cli, IgnoreEntriesMatchPathAndSubkeyByTheProgramsRules) {
    testing::TempFolder folder;
    const std::string reg = (folder.path() / "oldapp.reg").string();
    std::ofstream(reg, std::ios::binary)
        << "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\OldApp]\r\n"
           "\"InKey\"=\"C:\\\\Elsewhere\\\\b.dll\"\r\n\r\n"
           "[HKEY_CURRENT_USER\\Software\\Vendor]\r\n"
           "\"InPath\"=\"C:\\\\Program Files\\\\OldApp\\\\a.dll\"\r\n"
           "\"Neither\"=\"C:\\\\Other\\\\c.dll\"\r\n";
    const struct {
        std::string ignore_bytes;
        std::vector<std::string> listed;  // value names
    } cases[] = {
        {"", {"InKey", "InPath", "Neither"}},
        {"oldapp\r\n", {"Neither"}},
        {"SOFTWARE\\OLDAPP\r\n", {"InPath", "Neither"}},
        {"oldapp\\a\r\n", {"InKey", "Neither"}},
        // A lone empty line stays an entry, and an empty entry is in every text.
        {"\r\n", {}},
        {"ZZ\r\n\r\n", {}},
        {"\r\nZZ\r\n", {"InKey", "InPath", "Neither"}},
    };
    for (const auto& c : cases) {
        const std::string ignore = (folder.path() / "Ignore.txt").string();
        std::ofstream(ignore, std::ios::binary | std::ios::trunc) << c.ignore_bytes;
        const CliRun run = RunWith({"scan", "--drive", "C:", "--registry", reg, "--map",
                                    "C:=" + folder.path().string(), "--ignore", ignore});
        EXPECT_EQ(run.exit_code, kExitOk) << run.err;
        std::string expected;
        for (const std::string& name : c.listed) {
            const bool in_key = name == "InKey";
            expected += "Invalid Entry\tHKEY_CURRENT_USER\tSoftware\\" +
                        std::string(in_key ? "OldApp" : "Vendor") + "\\" + name + "\t" +
                        (in_key             ? "C:\\Elsewhere\\b.dll"
                         : name == "InPath" ? "C:\\Program Files\\OldApp\\a.dll"
                                            : "C:\\Other\\c.dll") +
                        "\n";
        }
        EXPECT_EQ(run.out, expected) << ::testing::PrintToString(c.ignore_bytes);
    }
}

TEST(Cli, AnIgnoreListThatCannotBeReadIsAnErrorAndIsNotCreated) {
    testing::TempFolder folder;
    const std::string reg = kFixtures + "/scan_examples.reg";
    const std::string map = "C:=" + kFixtures + "/drive_c";
    const std::string missing = (folder.path() / "Ignore.txt").string();
    const struct {
        std::vector<std::string> args;
        const char* message;
    } cases[] = {
        {{"scan", "--drive", "C:", "--registry", reg, "--map", map, "--ignore", missing},
         "cannot read the ignore list"},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", map, "--ignore",
          folder.path().string()},
         "cannot read the ignore list"},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", map, "--ignore"},
         "--ignore needs a value"},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", map, "--ignore", ""},
         "--ignore needs a file"},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", map, "--ignore", reg, "--ignore",
          reg},
         "--ignore can be given once"},
    };
    for (const auto& c : cases) {
        const CliRun run = RunWith(c.args);
        EXPECT_EQ(run.exit_code, kExitUsage) << c.message;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "") << c.message;
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST(Cli, RepairWithoutALiveRegistrySaysWhy) {
    for (const auto& args :
         {std::vector<std::string>{"fix", "--drive", "C:"}, std::vector<std::string>{"backups"}}) {
        const CliRun run = RunWith(args);
        EXPECT_EQ(run.exit_code, kExitUsage);
        EXPECT_EQ(run.err, "regvexlor-cli: no live registry to repair here\n");
    }
}

TEST(Cli, HelpGoesToStandardOutput) {
    const CliRun run = RunWith({"--help"});
    EXPECT_EQ(run.exit_code, kExitOk);
    EXPECT_NE(run.out.find("usage:"), std::string::npos);
}

}  // namespace
}  // namespace regvex::cli
