#include "scan/finding_verdict.h"

#include <gtest/gtest.h>

#include <set>
#include <span>
#include <string>
#include <vector>

namespace regvex::scan {
namespace {

class SetOfFiles final : public FileExistence {
  public:
    explicit SetOfFiles(std::set<std::string> present) : present_(std::move(present)) {}
    int Check(const std::string& path) override {
        asked.push_back(path);
        return present_.count(path) != 0 ? 1 : 0;
    }
    std::vector<std::string> asked;

  private:
    std::set<std::string> present_;
};

TEST(FindingVerdict, ListsMissingPlainPathsThatNoRuleDrops) {
    SetOfFiles files({"C:\\PRESENT.EXE", "REJECTED"});
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
        SetOfFiles files(present ? std::set<std::string>{"Rejected"} : std::set<std::string>{});
        const FindingRules rules{"C:\\", &files, {}, false};
        EXPECT_FALSE(IsListedFinding(rules, "K\\v", "D:\\app.exe"));
        ASSERT_FALSE(files.asked.empty());
        EXPECT_EQ(files.asked.front(), "Rejected");
    }
}

TEST(FindingVerdict, SafeScanListsOnlyKnownExtensions) {
    SetOfFiles files({});
    const FindingRules rules{"C:\\", &files, {}, true};
    EXPECT_TRUE(IsListedFinding(rules, "K\\v", "C:\\a\\b.ax"));
    EXPECT_TRUE(IsListedFinding(rules, "K\\v", "C:\\a\\b.txt"));
    EXPECT_FALSE(IsListedFinding(rules, "K\\v", "C:\\a\\b.ini"));
    EXPECT_FALSE(IsListedFinding(rules, "K\\v", "C:\\a\\b.inf"));
}

TEST(FindingVerdict, StatusAndIgnoreRules) {
    EXPECT_EQ(FindingStatus(FoundKind::kKeyName), "Invalid Entry");
    EXPECT_EQ(FindingStatus(FoundKind::kValueData), "Invalid Entry");
    EXPECT_EQ(FindingStatus(FoundKind{3}), "");
    EXPECT_EQ(FindingStatus(FoundKind{-1}), "");
    // An empty entry occurs in every text.
    const std::vector<std::string> empty_entry{""};
    EXPECT_TRUE(IsIgnored(empty_entry, "C:\\A.EXE", "K"));
    const std::vector<std::string> entries{"OLDAPP\\A"};
    EXPECT_TRUE(IsIgnored(entries, "C:\\PROGRAM FILES\\OLDAPP\\A.DLL", "K"));
    EXPECT_TRUE(IsIgnored(entries, "C:\\x.dll", "software\\oldapp\\abc"));
}

}  // namespace
}  // namespace regvex::scan
