#include "cli/cli.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/unexamined_count.h"
#include "cli/visible_text.h"
#include "engine/forwarding_registry.h"
#include "engine/memory_registry.h"
#include "engine/reg_search.h"
#include "support/cli_platform.h"
#include "support/registry_fixtures.h"
#include "support/search_doubles.h"
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

using CliRun = testing::FakeCliPlatform::Run;

CliRun RunWith(const std::vector<std::string>& args) {
    return testing::FakeCliPlatform().Cli(args);
}

TEST(Cli, ScanListsExactlyTheMissingFilesOfTheFixtureInOrder) {
    const CliRun run =
        RunWith({"scan", "--drive", "c:", "--registry", kFixtures + "/scan_examples.reg", "--map",
                 "C:=" + kFixtures + "/drive_c"});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    EXPECT_EQ(run.out, ReadFile(kFixtures + "/scan_examples.expected"));
    EXPECT_EQ(run.err, "12 errors found\n");
}

TEST(Cli, AnExportReadsBackToTheSameRegistryAndExportsAlike) {
    testing::TempFolder folder;
    const std::string first = (folder.path() / "first.reg").string();
    const std::string second = (folder.path() / "second.reg").string();
    const std::string source = kFixtures + "/scan_examples.reg";
    ASSERT_EQ(RunWith({"export", "--registry", source, "--out", first}).exit_code, kExitOk);
    ASSERT_EQ(RunWith({"export", "--registry", first, "--out", second}).exit_code, kExitOk);
    EXPECT_EQ(ReadFile(first), ReadFile(second));
    EXPECT_EQ(ReadFile(first).substr(0, 4), std::string("\xFF\xFEW\0", 4));

    const auto scan = [](const std::string& file) {
        return RunWith({"scan", "--drive", "C:", "--registry", file, "--map",
                        "C:=" + kFixtures + "/drive_c"})
            .out;
    };
    EXPECT_EQ(scan(first), scan(source));
}

TEST(Cli, JsonFindingsCarryTheirPartsAndEndWithTheCount) {
    const CliRun run =
        RunWith({"scan", "--drive", "C:", "--registry", kFixtures + "/scan_examples.reg", "--map",
                 "C:=" + kFixtures + "/drive_c", "--format", "json"});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    EXPECT_NE(
        run.out.find(R"({"root":"HKEY_CURRENT_USER","key":"Software\\Vexlor Fixture",)"
                     R"("value":"Plain","type":"REG_SZ","data":"C:\\Program Files\\App\\app.exe",)"
                     R"("file":"C:\\PROGRAM FILES\\APP\\APP.EXE","exists":false})"
                     "\n"),
        std::string::npos)
        << run.out;
    EXPECT_TRUE(run.out.ends_with("{\"count\":12,\"stop\":\"finished\"}\n")) << run.out;
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
    EXPECT_NE(run.out.find(R"(Vexlor Fixture\\Added)"
                           "\t"
                           R"(C:\\added.exe)"
                           "\n"),
              std::string::npos);
    EXPECT_EQ(run.err, "11 errors found\n");
}

TEST(Cli, VisibleTextEscapesWhatATerminalWouldActOn) {
    const struct {
        std::string text;
        std::string shown;
    } cases[] = {
        {R"(C:\Program Files\)", R"(C:\\Program Files\\)"},
        {"a\tb\rc\nd", R"(a\x09b\x0dc\x0ad)"},
        {"\x1b[2J\x1b]0;title\x07", R"(\x1b[2J\x1b]0;title\x07)"},
        {std::string("nul\0del\x7f", 8), R"(nul\x00del\x7f)"},
        // C1 controls, each of its two bytes shown; the characters just past them stand.
        {"\xc2\x80\xc2\x9b\xc2\xa0", R"(\xc2\x80\xc2\x9b)"
                                     "\xc2\xa0"},
        {"Caf\xc3\xa9 \xe2\x82\xac \xef\xbf\xbd \xf0\x9f\x98\x80",
         "Caf\xc3\xa9 \xe2\x82\xac \xef\xbf\xbd \xf0\x9f\x98\x80"},
        // Not UTF-8: a lone lead byte, a cut-off sequence, an overlong form, a surrogate,
        // a byte that never occurs.
        {"\xc3x", R"(\xc3x)"},
        {"\xe2\x82", R"(\xe2\x82)"},
        {"\xc0\x80", R"(\xc0\x80)"},
        {"\xed\xa0\x80", R"(\xed\xa0\x80)"},
        {"\xff", R"(\xff)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(VisibleText(c.text), c.shown) << ::testing::PrintToString(c.text);
    }
}

TEST(Cli, HostileNamesAndDataAreShownEscapedOnOneLine) {
    testing::TempFolder folder;
    const std::string file = (folder.path() / "hostile.reg").string();
    // The value's data in UTF-16: C:\a.exe, LF, tab, ESC [2J, U+009B.
    std::ofstream(file, std::ios::binary)
        << "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\K\x07]\r\n"
           "\"v\x1b]0;owned\x07\"=hex(1):43,00,3a,00,5c,00,61,00,2e,00,65,00,78,00,65,00,0a,00,"
           "09,00,1b,00,5b,00,32,00,4a,00,9b,00,00,00\r\n";
    const CliRun run = RunWith(
        {"scan", "--drive", "C:", "--registry", file, "--map", "C:=" + folder.path().string()});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    EXPECT_EQ(run.out,
              "Invalid Entry\tHKEY_CURRENT_USER\t"
              R"(K\x07\\v\x1b]0;owned\x07)"
              "\t"
              R"(C:\\a.exe\x0a\x09\x1b[2J\xc2\x9b)"
              "\n");

    // Explained, every outside text stays escaped and the mark stands under the path as
    // shown, its backslash doubled.
    const CliRun explained = RunWith({"scan", "--drive", "C:", "--registry", file, "--map",
                                      "C:=" + folder.path().string(), "--explain"});
    EXPECT_EQ(explained.exit_code, kExitOk) << explained.err;
    EXPECT_EQ(explained.out.find_first_of("\x07\x1b\t"), std::string::npos) << explained.out;
    EXPECT_NE(explained.out.find("Value:       v\\x1b]0;owned\\x07\n"
                                 "Type:        REG_SZ\n"
                                 "Data:        C:\\\\a.exe\\x0a\\x09\\x1b[2J\\xc2\\x9b\n"
                                 "             ^^^^^^^^^\n"),
              std::string::npos)
        << explained.out;
}

TEST(Cli, ExplainsFindingsOfAWinePrefixWithTheFolderThatIsItsDrive) {
    testing::TempFolder prefix;
    std::filesystem::create_directories(prefix.path() / "drive_c" / "App");
    std::filesystem::create_directories(prefix.path() / "dosdevices");
    std::error_code error;
    std::filesystem::create_directory_symlink("../drive_c",
                                              prefix.path() / "dosdevices" / "c:", error);
    if (error) {
        GTEST_SKIP() << "no symbolic link for the prefix's drive: " << error.message();
    }
    const auto write = [&](const char* name, const std::string& text) {
        std::ofstream(prefix.path() / name, std::ios::binary) << text;
    };
    const std::string header = "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\";
    write("system.reg", header +
                            "Machine\n\n#arch=win64\n\n[Software\\\\Vendor] 1\n"
                            "\"Run\"=\"\\\"C:\\\\App\\\\gone.exe\\\" /x\"\n");
    write("user.reg", header + "User\\\\S-1-5-21-0-0-0-1000\n\n");
    write("userdef.reg", header + "User\\\\.Default\n\n");
    const CliRun run =
        RunWith({"scan", "--drive", "C:", "--wine-prefix", prefix.path().string(), "--explain"});
    EXPECT_EQ(run.exit_code, kExitOk) << run.err;
    for (const std::string& line :
         std::vector<std::string>{"Key:         Software\\\\Vendor\n",
                                  "Data:        \"C:\\\\App\\\\gone.exe\" /x\n"
                                  "              ^^^^^^^^^^^^^^^^^\n",
                                  "Drive:       C:\\\\ (the folder " +
                                      VisibleText((prefix.path() / "dosdevices" / "c:").string()),
                                  "the nearest folder that exists is C:\\\\APP\\\\\n"}) {
        EXPECT_NE(run.out.find(line), std::string::npos) << line << "\n" << run.out;
    }
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
        {{"scan", "--drive", "C:", "--map", "C:="}, "--map C: needs a folder"},
        {{"scan", "--drive", "C:", "--registry", ""}, "--registry needs a file"},
        {{"scan", "--drive", "C:", "--drive", "D:"}, "--drive can be given once"},
        {{"scan", "--drive", "C:", "--\x1b[2J"}, R"(unknown option "--\x1b[2J")"},
        {{"\x1b]0;x\x07"}, R"(unknown command "\x1b]0;x\x07")"},
        {{"scan", "--drive", "C:", "--registry", reg}, "give the folder that does with --map C:="},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", "D:=" + kFixtures},
         "give the folder that does with --map C:="},
        {{"scan", "--drive", "C:", "--registry", reg, "--map", "C:=/no/such/folder"},
         "\"/no/such/folder\" is not a folder"},
        {{"scan", "--drive", "C:", "--map", map}, "no live registry here"},
        {{"scan", "--drive", "C:", "--registry", "/no/such\x1b.reg", "--map", map},
         R"(/no/such\x1b.reg: )"},
        {{"scan", "--drive", "C:", "--registry", kFixtures + "/drive_c/Present/Here.exe", "--map",
          map},
         "Here.exe"},
        {{"scan", "--drive", "C:", "--registry", reg, "--hive", "HKLM=x"},
         "--hive and --registry name two different registries"},
        {{"scan", "--drive", "C:", "--hive", "HKLM"}, "--hive takes a key and a hive file"},
        {{"scan", "--drive", "C:", "--hive", "HKEY_ALL=x"}, "--hive takes a key and a hive file"},
        {{"scan", "--drive", "C:", "--hive", "hklm=x"}, "--hive takes a key and a hive file"},
        {{"scan", "--drive", "C:", "--user", "ann"}, "--user chooses a profile"},
        {{"scan", "--drive", "C:", "--windows", kFixtures}, "is not the root of a Windows"},
        {{"scan", "--drive", "C:", "--windows", "/no/such"}, "\"/no/such\" is not a folder"},
        {{"scan", "--drive", "C:", "--format", "xml"}, "--format takes tsv or json"},
        {{"scan", "--drive", "C:", "--explain", "--format", "json"}, "--explain writes text"},
        {{"fix", "--drive", "C:", "--explain"}, "--explain belongs to scan"},
        {{"fix", "--drive", "C:", "--wine-prefix", kFixtures, "--explain"},
         "--explain belongs to scan"},
        {{"export", "--registry", reg, "--key", "HKEY_NOWHERE\\x"}, "--key starts with a root"},
        {{"export", "--registry", reg, "--key", "HKEY_CURRENT_USER\\Nothing"}, "there is no key"},
    };
    for (const auto& c : cases) {
        const CliRun run = RunWith(c.args);
        EXPECT_EQ(run.exit_code, kExitUsage) << c.message;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find('\x1b'), std::string::npos) << run.err;
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

TEST(Cli, IgnoreEntriesMatchPathAndSubkeyByTheProgramsRules) {
    testing::TempFolder folder;
    const std::string reg = (folder.path() / "oldapp.reg").string();
    std::ofstream(reg, std::ios::binary)
        << "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\OldApp]\r\n"
           "\"InKey\"=\"C:\\\\Elsewhere\\\\b.dll\"\r\n\r\n"
           "[HKEY_CURRENT_USER\\Software\\Vendor]\r\n"
           "\"InPath\"=\"C:\\\\Program Files\\\\OldApp\\\\a.dll\"\r\n"
           "\"Neither\"=\"C:\\\\Other\\\\c.dll\"\r\n";
    constexpr const char* kEmptyEntry = "holds an empty entry, which hides every finding";
    constexpr const char* kLoneLf = "ends lines with LF alone";
    const struct {
        std::string ignore_bytes;
        std::vector<std::string> listed;  // value names
        const char* warning;              // on standard error; none when empty
    } cases[] = {
        {"", {"InKey", "InPath", "Neither"}, ""},
        {"oldapp\r\n", {"Neither"}, ""},
        {"SOFTWARE\\OLDAPP\r\n", {"InPath", "Neither"}, ""},
        {"oldapp\\a\r\n", {"InKey", "Neither"}, ""},
        // A lone empty line stays an entry, and an empty entry is in every text.
        {"\r\n", {}, kEmptyEntry},
        {"ZZ\r\n\r\n", {}, kEmptyEntry},
        {"\r\nZZ\r\n", {"InKey", "InPath", "Neither"}, ""},
        // Only CR ends a line: these are one entry, "OLDAPP\nZZ\n", which matches nothing.
        {"oldapp\nzz\n", {"InKey", "InPath", "Neither"}, kLoneLf},
        {"oldapp\nzz\r\n", {"InKey", "InPath", "Neither"}, kLoneLf},
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
            expected +=
                "Invalid Entry\tHKEY_CURRENT_USER\t"
                R"(Software\\)" +
                std::string(in_key ? "OldApp" : "Vendor") + R"(\\)" + name + "\t" +
                (in_key             ? R"(C:\\Elsewhere\\b.dll)"
                 : name == "InPath" ? R"(C:\\Program Files\\OldApp\\a.dll)"
                                    : R"(C:\\Other\\c.dll)") +
                "\n";
        }
        EXPECT_EQ(run.out, expected) << ::testing::PrintToString(c.ignore_bytes);
        if (*c.warning == '\0') {
            EXPECT_EQ(run.err.find("warning"), std::string::npos) << run.err;
        } else {
            EXPECT_NE(run.err.find(c.warning), std::string::npos) << run.err;
        }
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
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"--help"},
             {"help"},
             {"scan", "--help"},
             {"scan", "--drive", "C:", "-h"},
             {"fix", "--help"},
             {"backups", "--help"},
         }) {
        const CliRun run = RunWith(args);
        EXPECT_EQ(run.exit_code, kExitOk) << args.back();
        EXPECT_EQ(run.out.substr(0, 6), "usage:") << args.back();
        EXPECT_EQ(run.err, "") << args.back();
    }
}

TEST(Cli, SaysHowMuchTheScanCouldNotExamine) {
    testing::TempFolder folder;
    const std::string long_name(300, 'n');
    const std::string value = "=\"C:\\\\gone.exe\"\r\n";
    const std::string big = "=\"C:\\\\" + std::string(5000, 'x') + "\"\r\n";
    const struct {
        std::string keys;  // the file's keys and values below HKEY_CURRENT_USER\K
        std::string err;
    } cases[] = {
        {"[HKEY_CURRENT_USER\\K]\r\n\"a\"" + value, "1 errors found\n"},
        // The values from the oversized one on are never looked at.
        {"[HKEY_CURRENT_USER\\K]\r\n\"a\"" + value + "\"b\"" + big + "\"c\"" + value + "\"d\"" +
             value,
         "1 errors found\n3 values not examined: a value too large for the scan, or with too "
         "long a name, ends its key's values\n"},
        {"[HKEY_CURRENT_USER\\K]\r\n\"" + long_name + "\"" + value,
         "0 errors found\n1 value not examined: a value too large for the scan, or with too long "
         "a name, ends its key's values\n"},
    };
    for (const auto& c : cases) {
        const std::string file = (folder.path() / "unseen.reg").string();
        std::ofstream(file, std::ios::binary | std::ios::trunc) << "REGEDIT4\r\n\r\n" << c.keys;
        const CliRun run = RunWith(
            {"scan", "--drive", "C:", "--registry", file, "--map", "C:=" + folder.path().string()});
        EXPECT_EQ(run.exit_code, kExitOk) << run.err;
        EXPECT_EQ(run.err, c.err);
    }
}

// No export file or live registry holds a key name too long for the scan's buffer (Windows
// refuses them), but a damaged hive can; a double answers for one.
class OversizedSecondSubkeyOf final : public ForwardingRegistry {
  public:
    OversizedSecondSubkeyOf(Registry& inner, std::string path)
        : ForwardingRegistry(inner), path_(std::move(path)) {}
    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override {
        const RegStatus status = ForwardingRegistry::OpenKey(root, path, access, key);
        if (status == reg::kSuccess && path == path_) {
            watched_ = key;
        }
        return status;
    }
    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override {
        return key == watched_ && index == 1 ? reg::kMoreData
                                             : ForwardingRegistry::EnumKey(key, index, name);
    }

  private:
    std::string path_;
    KeyHandle watched_ = 0;
};

TEST(UnexaminedCount, CountsTheSubkeysLeftAfterAnOversizedName) {
    MemoryRegistry registry;
    for (const char* path : {"K\\A", "K\\B", "K\\C\\Below"}) {
        testing::PutString(registry, kHkeyCurrentUser, path, "v", "C:\\x.exe");
    }
    OversizedSecondSubkeyOf oversized(registry, "K");
    UnexaminedCount count(oversized);
    QuietSearchHost host;
    testing::RecordingEvents events;
    cRegSearch search(count, host, events, reg::kKeyAllAccess);
    search.RootKey(kHkeyCurrentUser);
    search.SearchFlags(search_flags::kValueData);
    search.SearchString("C:\\");
    search.DoSearch();
    // B answers for its name; B and C go unseen, and C's subkey is not counted.
    EXPECT_EQ(count.keys(), 2u);
    EXPECT_EQ(count.values(), 0u);
}

}  // namespace
}  // namespace regvex::cli
