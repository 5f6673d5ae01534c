// Changing hive files offline: the command line's fix and restore over copies of the real
// hives, the refusals that leave a file as it was, and a change ended at every step.

#include <gtest/gtest.h>
#include <hivex.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "hive/base_block.h"
#include "hive/hive_edit.h"
#include "hive/hive_file.h"
#include "hive/hive_listing.h"
#include "shared_hives.h"
#include "text/utf8.h"

namespace regvex::hive {
namespace {

namespace fs = std::filesystem;

// Runs the command line with its output in files of `folder`; answers the exit code.
int RunCli(const fs::path& folder, const std::string& args) {
    const std::string command = "'" REGVEX_CLI "' " + args + " > '" + (folder / "out").string() +
                                "' 2> '" + (folder / "err").string() + "'";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ReadText(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// An export's logical lines (wrapped hex joined), as UTF-8.
std::multiset<std::string> ExportLines(const fs::path& file) {
    const std::string bytes = ReadText(file);
    std::u16string units;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        units.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                              static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    const std::string wrapped = text::Utf16ToUtf8(units);
    std::string text;
    for (std::size_t start = 0; start < wrapped.size();) {
        const std::size_t at = wrapped.find("\\\r\n  ", start);
        text.append(wrapped, start, at - start);
        start = at == std::string::npos ? wrapped.size() : at + 5;
    }
    std::multiset<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find("\r\n", start);
        lines.insert(text.substr(start, end - start));
        start = end == std::string::npos ? text.size() : end + 2;
    }
    return lines;
}

std::size_t LineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

class RoundTrip : public ::testing::TestWithParam<const char*> {};

// Exports the hive; 1 is allowed, for the names no export file can carry (as a NUL).
bool Export(const fs::path& folder, const std::string& source, const char* name) {
    return RunCli(folder, "export " + source + " --out '" + (folder / name).string() + "'") <= 1;
}

bool Dirty(const fs::path& hive) {
    std::vector<std::uint8_t> bytes = testing::ReadBytes(hive);
    bytes.resize(4096);
    return BaseBlock(bytes).Dirty();
}

// Every reference is made missing (drive C: is an empty folder), so that fix takes out all
// that the scan finds. Two of the real hives were saved dirty: those are refused whole.
TEST_P(RoundTrip, FixDeletesExactlyTheFindingsAndRestorePutsThemBack) {
    REGVEX_REQUIRE_HIVE(shared, GetParam());
    const fs::path folder = testing::ScratchFolder(std::string("round-trip-") + GetParam());
    const fs::path hive = folder / "HIVE";
    fs::copy_file(shared, hive);
    fs::create_directory(folder / "drive");
    const std::string source = "--hive HKCU='" + hive.string() + "'";
    const std::string scan_args = "--drive C: --map C:='" + (folder / "drive").string() + "' ";
    const std::string backups = " --backups '" + (folder / "backups").string() + "'";

    if (Dirty(hive)) {
        const std::vector<std::uint8_t> bytes = testing::ReadBytes(hive);
        EXPECT_EQ(RunCli(folder, "fix " + scan_args + source + backups), 2);
        EXPECT_NE(ReadText(folder / "err").find("not written cleanly"), std::string::npos);
        EXPECT_EQ(testing::ReadBytes(hive), bytes);
        EXPECT_FALSE(fs::exists(folder / "backups"));
        std::cout << "[ figures  ] " << GetParam() << ": dirty, refused\n";
        return;
    }
    ASSERT_TRUE(Export(folder, source, "before.reg")) << ReadText(folder / "err");
    ASSERT_EQ(RunCli(folder, "fix " + scan_args + source + " --dry-run"), 0);
    const std::size_t planned = LineCount(ReadText(folder / "out"));
    ASSERT_EQ(RunCli(folder, "fix " + scan_args + source + backups), 0) << ReadText(folder / "err");
    const std::size_t deleted = LineCount(ReadText(folder / "out"));
    EXPECT_EQ(deleted, planned);
    if (deleted != 0) {
        EXPECT_TRUE(fs::exists(PreviousFile(hive)));
    }

    hive_h* reopened = hivex_open(hive.c_str(), 0);
    EXPECT_NE(reopened, nullptr);
    if (reopened != nullptr) {
        hivex_close(reopened);
    }
    EXPECT_EQ(std::system(("reglookup '" + hive.string() + "' > /dev/null 2>&1").c_str()), 0);

    ASSERT_TRUE(Export(folder, source, "after.reg"));
    const auto before = ExportLines(folder / "before.reg");
    const auto after = ExportLines(folder / "after.reg");
    std::vector<std::string> gone;
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                        std::back_inserter(gone));
    EXPECT_EQ(gone.size(), deleted);
    EXPECT_EQ(before.size() - after.size(), deleted) << "the fix added or changed lines";

    std::size_t restored = 0;
    if (deleted != 0) {
        ASSERT_EQ(RunCli(folder, "backups restore 1 " + source + backups), 0)
            << ReadText(folder / "err");
        restored = deleted;
        ASSERT_TRUE(Export(folder, source, "restored.reg"));
        EXPECT_EQ(ReadText(folder / "restored.reg"), ReadText(folder / "before.reg"));
    }
    std::cout << "[ figures  ] " << GetParam() << ": " << deleted << " values deleted, " << restored
              << " restored\n";
}

INSTANTIATE_TEST_SUITE_P(SharedHives, RoundTrip,
                         ::testing::Values("hivex-minimal", "hivex-special",
                                           "plaso-NTUSER-CCLEANER.DAT", "plaso-NTUSER-WIN7.DAT",
                                           "plaso-NTUSER.DAT", "plaso-regf_UsrClass.dat",
                                           "regipy-NTUSER_with_winscp.DAT", "regipy-SYSTEM",
                                           "regipy-UsrClass.dat", "regipy-ntuser_software_partial"),
                         [](const auto& param_info) {
                             std::string name = param_info.param;
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return !std::isalnum(c); },
                                 '_');
                             return name;
                         });

// The first value of the hive, to be deleted.
ValueChange FirstValue(const fs::path& hive) {
    OpenedHive opened = OpenHiveFile(hive, [](std::string_view) {});
    HiveListing listing;
    std::string error;
    EXPECT_TRUE(opened.registry && ListHive(*opened.registry, listing, error)) << error;
    for (const ListedKey& key : listing) {
        if (!key.values.empty()) {
            return {key.path, key.values.front().name, true, 0, {}, {}};
        }
    }
    return {};
}

struct Refusal {
    const char* name;
    void (*spoil)(const fs::path& hive);
    std::uint64_t free_bytes;
    const char* message;
};

TEST(HiveRefusals, LeaveTheFileAsItWas) {
    REGVEX_REQUIRE_HIVE(shared, "plaso-NTUSER.DAT");
    const Refusal cases[] = {
        {"dirty",
         [](const fs::path& hive) {
             std::vector<std::uint8_t> bytes = testing::ReadBytes(hive);
             bytes[4] += 1;  // the primary sequence number
             testing::WriteBytes(hive, bytes);
         },
         ~0ULL, "start that Windows once"},
        {"damaged",
         [](const fs::path& hive) {
             std::vector<std::uint8_t> bytes = testing::ReadBytes(hive);
             std::fill(bytes.begin() + 4096, bytes.begin() + 8192, 0xAB);
             testing::WriteBytes(hive, bytes);
         },
         ~0ULL, "damaged"},
        {"read-only", [](const fs::path& hive) { fs::permissions(hive, fs::perms::owner_read); },
         ~0ULL, "read-only"},
        {"hibernated",
         [](const fs::path& hive) {
             std::ofstream(hive.parent_path() / "hiberfil.sys") << "HIBR and the rest";
         },
         ~0ULL, "hibernated"},
        {"no space", [](const fs::path&) {}, 4096, "no room"},
    };
    for (const Refusal& refusal : cases) {
        SCOPED_TRACE(refusal.name);
        const fs::path folder = testing::ScratchFolder(std::string("refusal-") + refusal.name);
        const fs::path hive = folder / "NTUSER.DAT";
        fs::copy_file(shared, hive);
        const ValueChange change = FirstValue(hive);
        refusal.spoil(hive);
        const std::vector<std::uint8_t> bytes = testing::ReadBytes(hive);
        struct stat before {};
        stat(hive.c_str(), &before);

        EditHooks hooks;
        hooks.free_bytes = [&](const fs::path&) { return refusal.free_bytes; };
        const EditResult result = EditHiveFile(hive, {change}, hooks);
        EXPECT_EQ(result.outcome, EditOutcome::kRefused);
        EXPECT_NE(result.message.find(refusal.message), std::string::npos) << result.message;

        struct stat after {};
        stat(hive.c_str(), &after);
        EXPECT_EQ(testing::ReadBytes(hive), bytes);
        EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
        EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()),
                  refusal.name == std::string("hibernated") ? 2 : 1)
            << "something was written beside the hive";
    }
}

// A file system mounted read-only, where this machine lets the test mount one.
TEST(HiveRefusals, ReadOnlyMount) {
    REGVEX_REQUIRE_HIVE(shared, "plaso-NTUSER.DAT");
    const fs::path mount_point = testing::ScratchFolder("refusal-read-only-mount");
    const std::string at = "'" + mount_point.string() + "'";
    if (std::system(("mount -t tmpfs -o size=16m tmpfs " + at + " 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    const fs::path hive = mount_point / "NTUSER.DAT";
    fs::copy_file(shared, hive);
    const ValueChange change = FirstValue(hive);
    ASSERT_EQ(std::system(("mount -o remount,ro " + at).c_str()), 0);
    const EditResult result = EditHiveFile(hive, {change});
    std::system(("umount " + at).c_str());
    EXPECT_EQ(result.outcome, EditOutcome::kRefused);
    EXPECT_NE(result.message.find("mounted read-only"), std::string::npos) << result.message;
}

TEST(HiveRefusals, TheCommandLineAnswersTwoAndWritesNoBackup) {
    REGVEX_REQUIRE_HIVE(shared, "plaso-NTUSER.DAT");
    const fs::path folder = testing::ScratchFolder("refusal-command-line");
    const fs::path hive = folder / "NTUSER.DAT";
    fs::copy_file(shared, hive);
    fs::permissions(hive, fs::perms::owner_read);
    fs::create_directory(folder / "drive");
    EXPECT_EQ(RunCli(folder, "fix --drive C: --map C:='" + (folder / "drive").string() +
                                 "' --hive HKCU='" + hive.string() + "' --backups '" +
                                 (folder / "backups").string() + "'"),
              2);
    EXPECT_NE(ReadText(folder / "err").find("read-only"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "backups"));
}

// A change ended (as by a power loss) after each of its steps leaves the file whole: the
// old hive up to the rename, the new one after it.
TEST(HiveEdit, EndedAtAnyStepLeavesAWholeHive) {
    REGVEX_REQUIRE_HIVE(shared, "plaso-NTUSER.DAT");
    for (const char* step : {"written", "flushed", "verified", "linked", "renamed"}) {
        SCOPED_TRACE(step);
        const fs::path folder = testing::ScratchFolder(std::string("ended-") + step);
        const fs::path hive = folder / "NTUSER.DAT";
        fs::copy_file(shared, hive);
        const ValueChange change = FirstValue(hive);
        const std::vector<std::uint8_t> old_bytes = testing::ReadBytes(hive);

        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            EditHooks hooks;
            hooks.after_step = [step](std::string_view done) {
                if (done == step) {
                    _exit(86);
                }
            };
            EditHiveFile(hive, {change}, hooks);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 86);

        OpenedHive opened =
            OpenHiveFile(hive, [](std::string_view warning) { ADD_FAILURE() << warning; });
        ASSERT_TRUE(opened.registry) << opened.error;
        HiveListing listing;
        std::string error;
        ASSERT_TRUE(ListHive(*opened.registry, listing, error)) << error;
        const bool renamed = std::string(step) == "renamed";
        EXPECT_EQ(testing::ReadBytes(hive) == old_bytes, !renamed);
        const auto key = std::find_if(listing.begin(), listing.end(), [&](const ListedKey& each) {
            return each.path == change.key_path;
        });
        ASSERT_NE(key, listing.end());
        EXPECT_EQ(FindListedValue(key->values, change.name) == key->values.size(), renamed);
    }
}

}  // namespace
}  // namespace regvex::hive
