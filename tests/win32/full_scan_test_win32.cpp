// One whole scan as the program runs it: every root of Wine's registry walked through
// Win32Registry, every match judged against the real C: drive. Only the rows under this
// test's own key are checked; whatever else the prefix holds is left to Wine.

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "engine/file_existence_win32.h"
#include "engine/reg_search.h"
#include "engine/win32_registry_win32.h"
#include "scan/finding_verdict.h"
#include "support/walk_comparison.h"
#include "system/system_info_win32.h"
#include "win32/test_support_win32.h"

namespace regvex {
namespace {

using namespace std::string_literals;

struct Row {
    std::string root;
    std::string key;
    std::string value;
    bool operator==(const Row&) const = default;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << "{" << row.root << ", " << row.key << ", " << row.value << "}";
}

class ListingEvents final : public SearchEvents {
  public:
    explicit ListingEvents(const scan::FindingRules& rules) : rules_(rules) {}

    void SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                     FoundKind) override {
        if (scan::IsListedFinding(rules_, sKey, sValue)) {
            rows.push_back(Row{std::string(sRootKey), std::string(sKey), std::string(sValue)});
        }
    }
    void SearchFinished(FinishReason lReason) override {
        reason = static_cast<std::int32_t>(lReason);
    }

    std::vector<Row> rows;
    std::int32_t reason = -1;

  private:
    const scan::FindingRules& rules_;
};

TEST(FullScan, ListsExactlyTheMissingFilesThatTheTestKeyNames) {
    testing::TempFolder folder;
    const std::string& f = folder.path();
    if (f.find('.') != std::string::npos) {
        GTEST_SKIP() << "a dot in the temporary folder's path changes how the paths are cut: " << f;
    }
    const std::string foreign = "Dossier \xC3\xA9\xE4\xB8\xAD";  // Dossier é中
    folder.MakeFolder(foreign);
    folder.MakeFile("present.exe");
    folder.MakeFile("present.dll");
    folder.MakeFile(foreign + "\\present.exe");
    // missing.exe, gone.dll and absent.exe are never made.

    testing::TestKey test_key;
    Win32Registry registry;
    // Wine enumerates values sorted by name, Windows in creation order: the values are
    // created in name order so that both give the rows in the same order.
    const struct {
        std::string subkey;
        std::string name;
        std::uint32_t type;
        std::string data;
    } values[] = {
        {"", "icon", reg::kSz, f + "\\gone.dll,0\0"s},
        {"", "icon-present", reg::kSz, f + "\\present.dll,-101\0"s},
        {"", "quoted", reg::kSz, "\"" + f + "\\missing.exe\" /s\0"s},
        {"", "quoted-present", reg::kSz, "\"" + f + "\\present.exe\" /s\0"s},
        {"A-Shell\\open\\command", "", reg::kSz, f + "\\missing.exe \"%1\"\0"s},
        {"A-Shell\\open\\command", "rundll", reg::kSz,
         "rundll32.exe " + f + "\\gone.dll,Control_RunDLL\0"s},
        {"B-Deeper\\Still", f + "\\missing.exe", reg::kDword, "\x01\x00\x00\x00"s},
        {"B-Deeper\\Still", "dotted", reg::kSz, f + "\\missing.exe.bak\0"s},
        {"B-Deeper\\Still", "elsewhere", reg::kSz, "D:\\missing.exe\0"s},
        {"B-Deeper\\Still", "expand", reg::kExpandSz, f + "\\missing.exe\0"s},
        {"B-Deeper\\Still", "foreign", reg::kSz, f + "\\" + foreign + "\\absent.exe\0"s},
        {"B-Deeper\\Still", "foreign-present", reg::kSz, f + "\\" + foreign + "\\present.exe\0"s},
        {"B-Deeper\\Still", "multi", reg::kMultiSz, f + "\\gone.dll\0second\0\0"s},
    };
    for (const auto& v : values) {
        ScopedKey key;
        const std::string path = v.subkey.empty() ? test_key.path() : test_key.Below(v.subkey);
        ASSERT_EQ(ScopedKey::Create(registry, kHkeyCurrentUser, path, reg::kKeyAllAccess, key),
                  reg::kSuccess);
        ASSERT_EQ(registry.SetValue(key.get(), v.name, v.type,
                                    std::vector<std::uint8_t>(v.data.begin(), v.data.end())),
                  reg::kSuccess);
    }

    system::Win32SystemInfo system;
    Win32FileExistence files;
    const scan::FindingRules rules{"C:\\", &files, {}, false};
    QuietSearchHost host;
    ListingEvents events(rules);
    cRegSearch search(registry, host, events,
                      system::KeyMasksFor(system::Is64BitWindows(system)).KeyAccessMask);
    search.RootKey(kHkeyAll);
    search.SubKey("");
    search.SearchFlags(search_flags::kValueNames | search_flags::kValueData);
    search.SearchString("C:\\");
    search.DoSearch();
    EXPECT_EQ(events.reason, 0);

    const std::string k = test_key.path() + "\\";
    std::vector<Row> ours;
    for (const Row& row : events.rows) {
        if (row.root == "HKEY_CURRENT_USER" && row.key.starts_with(k)) {
            ours.push_back(row);
        }
    }
    const std::string user = "HKEY_CURRENT_USER";
    const std::vector<Row> expected{
        {user, k + "icon", f + "\\gone.dll,0"},
        {user, k + "quoted", "\"" + f + "\\missing.exe\" /s"},
        {user, k + "A-Shell\\open\\command\\", f + "\\missing.exe \"%1\""},
        {user, k + "A-Shell\\open\\command\\rundll",
         "rundll32.exe " + f + "\\gone.dll,Control_RunDLL"},
        {user, k + "B-Deeper\\Still\\foreign", f + "\\" + foreign + "\\absent.exe"},
        {user, k + "B-Deeper\\Still\\multi", f + "\\gone.dll"},
    };
    EXPECT_EQ(ours, expected);
}

// Wine's registry holds the current user twice (HKEY_CURRENT_USER and its key under
// HKEY_USERS) and the classes twice (HKEY_CLASSES_ROOT and the machine's Software\Classes):
// a scan that reads such keys' values once shows what one reading them twice
// shows, for the whole registry with a generated tree in both places.
TEST(FullScan, ReadingEachStoredKeyOnceShowsWhatAFullWalkShows) {
    testing::TestKey user_key;
    const std::string classes = "Software\\Classes\\" + testing::UniqueName("RegvexlorTest");
    struct MachineKey {
        std::wstring path;
        ~MachineKey() {
            RegDeleteTreeW(HKEY_LOCAL_MACHINE, path.c_str());
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, path.c_str());
        }
    } machine_key{text::ToWide(classes)};
    Win32Registry registry;
    const auto put = [&](RootKeyHandle root, const std::string& path, const std::string& name,
                         const std::string& data) {
        ScopedKey key;
        ASSERT_EQ(ScopedKey::Create(registry, root, path, reg::kKeyAllAccess, key), reg::kSuccess);
        ASSERT_EQ(registry.SetValue(key.get(), name, reg::kSz,
                                    std::vector<std::uint8_t>(data.begin(), data.end())),
                  reg::kSuccess);
    };
    for (int i = 0; i < 24; ++i) {
        // Built by appending: GCC 12 warns wrongly about "literal" + std::string here.
        const std::string n = std::to_string(i);
        std::string sub = "K";
        sub += std::to_string(i % 6);
        sub += "\\L";
        sub += n;
        std::string file = "C:\\file";
        file += n;
        file += ".exe";
        file.push_back('\0');
        std::string name = "C:\\name";
        name += n;
        for (const auto& [root, base] : {std::pair{kHkeyCurrentUser, user_key.path()},
                                         std::pair{kHkeyLocalMachine, classes}}) {
            const std::string path = base + "\\" + sub;
            put(root, path, "a" + n, file);
            put(root, path, name, "plain\0"s);
            put(root, path, "z", "nothing\0"s);
            if (i % 5 == 0) {
                put(root, path, "zz", "C:\\" + std::string(5000, 'x') + "\0"s);
            }
        }
    }
    system::Win32SystemInfo system;
    const AccessMask access = system::KeyMasksFor(system::Is64BitWindows(system)).KeyAccessMask;
    const testing::WalkRequest request{kHkeyAll, "", 3, "C:\\"};
    // Wine's own processes write keys of their own now and then (display devices, for
    // one): the walk that reads keys once is compared with full walks made on either side
    // of it that agree with each other, so that only the walk itself can make a difference.
    auto before = testing::WalkOnce(registry, request, false, access);
    auto saving = testing::WalkOnce(registry, request, true, access);
    auto after = testing::WalkOnce(registry, request, false, access);
    for (int tries = 1; before.lines != after.lines && tries < 4; ++tries) {
        before = std::move(after);
        saving = testing::WalkOnce(registry, request, true, access);
        after = testing::WalkOnce(registry, request, false, access);
    }
    ASSERT_EQ(before.lines, after.lines) << "the registry kept changing under the walks";
    const auto& full = after;
    const auto differs = std::mismatch(saving.lines.begin(), saving.lines.end(), full.lines.begin(),
                                       full.lines.end());
    EXPECT_EQ(saving.lines, full.lines)
        << "first difference: "
        << (differs.first != saving.lines.end() ? *differs.first : std::string("(end)")) << " | "
        << (differs.second != full.lines.end() ? *differs.second : std::string("(end)"));
    EXPECT_LT(saving.value_reads, full.value_reads);
    const std::string found = "found HKEY_CLASSES_ROOT|" + classes.substr(17) + "\\K0\\L0\\a0|";
    EXPECT_TRUE(std::any_of(saving.lines.begin(), saving.lines.end(), [&](const std::string& line) {
        return line.starts_with(found);
    })) << found;
}

}  // namespace
}  // namespace regvex
