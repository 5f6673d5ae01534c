#include "scan/finding_verdict.h"

#include <gtest/gtest.h>

#include <set>
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
    const FindingRules rules{"C:\\", &files, ignore, false};
    const struct {
        const char* key;
        const char* value;
        bool listed;
    } cases[] = {
        {"Software\\App\\v", "C:\\missing.exe", true},
        {"Software\\App\\v", "C:\\present.exe", false},
        {"Software\\App\\v", "C:\\App\\page.html", false},  // rejected
        {"Software\\App", "*", false},                      // a key-name match
        {"Software\\App\\v", "C:\\Program Files\\OldApp\\a.dll", false},
        {"Software\\OldApp\\v", "C:\\other.dll", false},  // the key holds the entry
        {"Software\\Skip\\v", "C:\\other.dll", false},
        {"Software\\App\\v", "C:\\lower\\x.dll", true},   // lower-case entries match nothing
        {"Software\\App\\v", "C:\\App\\data.ini", true},  // safe scan off: any extension
    };
    for (const auto& c : cases) {
        EXPECT_EQ(IsListedFinding(rules, c.key, c.value), c.listed) << c.value;
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
    EXPECT_EQ(FindingStatus(0), "Invalid Entry");
    EXPECT_EQ(FindingStatus(2), "Invalid Entry");
    EXPECT_EQ(FindingStatus(3), "");
    EXPECT_EQ(FindingStatus(-1), "");
    // An empty entry occurs in every text.
    const std::vector<std::string> empty_entry{""};
    EXPECT_TRUE(IsIgnored(empty_entry, "C:\\A.EXE", "K"));
    const std::vector<std::string> entries{"OLDAPP\\A"};
    EXPECT_TRUE(IsIgnored(entries, "C:\\PROGRAM FILES\\OLDAPP\\A.DLL", "K"));
    EXPECT_TRUE(IsIgnored(entries, "C:\\x.dll", "software\\oldapp\\abc"));
}

}  // namespace
}  // namespace regvex::scan
