#include "scan/finding_verdict.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "support/system_doubles.h"

namespace regvex::scan {
namespace {

using testing::SetOfFiles;

TEST(FindingVerdict, ListsMissingPlainPathsThatNoRuleDrops) {
    SetOfFiles files;
    files.present = {"C:\\PRESENT.EXE", "REJECTED"};
    const std::vector<std::string> ignore{"OLDAPP", "lower", "SOFTWARE\\SKIP"};
    // The list is read only once the file is known to be missing.
    int reads = 0;
    const FindingRules rules{"C:\\", &files,
                             [&] {
                                 ++reads;
                                 return std::span<const std::string>(ignore);
                             },
                             false};
    const struct {
        const char* key;
        const char* value;
        bool listed;
        int reads;
    } cases[] = {
        {"Software\\App\\v", "C:\\missing.exe", true, 1},
        {"Software\\App\\v", "C:\\present.exe", false, 0},
        {"Software\\App\\v", "C:\\App\\page.html", false, 1},  // rejected
        {"Software\\App", "*", false, 1},                      // a key-name match
        {"Software\\App\\v", "C:\\Program Files\\OldApp\\a.dll", false, 1},
        {"Software\\OldApp\\v", "C:\\other.dll", false, 1},  // the key holds the entry
        {"Software\\Skip\\v", "C:\\other.dll", false, 1},
        {"Software\\App\\v", "C:\\lower\\x.dll", true, 1},   // lower-case entries match nothing
        {"Software\\App\\v", "C:\\App\\data.ini", true, 1},  // safe scan off: any extension
    };
    for (const auto& c : cases) {
        reads = 0;
        EXPECT_EQ(IsListedFinding(rules, c.key, c.value), c.listed) << c.value;
        EXPECT_EQ(reads, c.reads) << c.value;
    }
}

TEST(FindingVerdict, RejectedTextsAreStillLookedUpAndNeverListed) {
    // A file called "Rejected" in the current folder changes nothing either way.
    for (const bool present : {false, true}) {
        SetOfFiles files;
        if (present) {
            files.present.insert("Rejected");
        }
        const FindingRules rules{"C:\\", &files, {}, false};
        EXPECT_FALSE(IsListedFinding(rules, "K\\v", "D:\\app.exe"));
        ASSERT_FALSE(files.asked.empty());
        EXPECT_EQ(files.asked.front(), "Rejected");
    }
}

TEST(FindingVerdict, SafeScanListsOnlyKnownExtensionsAndOnlyTwoKindsHaveAStatus) {
    SetOfFiles files;
    const FindingRules rules{"C:\\", &files, {}, true};
    for (const char* known : {"C:\\a\\b.ax", "C:\\a\\b.txt"}) {
        EXPECT_TRUE(IsListedFinding(rules, "K\\v", known)) << known;
    }
    for (const char* other : {"C:\\a\\b.ini", "C:\\a\\b.inf"}) {
        EXPECT_FALSE(IsListedFinding(rules, "K\\v", other)) << other;
    }
    EXPECT_EQ(FindingStatus(FoundKind::kKeyName), "Invalid Entry");
    EXPECT_EQ(FindingStatus(FoundKind::kValueData), "Invalid Entry");
    EXPECT_EQ(FindingStatus(FoundKind{3}), "");
}

}  // namespace
}  // namespace regvex::scan
