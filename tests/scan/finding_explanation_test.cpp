#include "scan/finding_explanation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/memory_registry.h"
#include "support/registry_fixtures.h"
#include "support/system_doubles.h"

namespace regvex::scan {
namespace {

using testing::PutString;
using testing::PutValue;
using testing::SetOfFiles;

constexpr std::string_view kKey = "Software\\Vendor";

std::string Explain(MemoryRegistry& registry, SetOfFiles& files, std::string_view name,
                    const std::vector<std::string>& ignore, std::string listed = "as listed") {
    ValueToExplain value = ReadValueToExplain(registry, reg::kKeyQueryValue, "HKEY_CURRENT_USER",
                                              std::string(kKey), std::string(name), listed);
    const ExplainContext context{"C:\\", &files, ignore, ""};
    return ExplanationText(ExplainFinding(std::move(value), context), ControlsMadeVisible);
}

TEST(FindingExplanation, ShowsEveryStepWithThePathMarkedUnderTheData) {
    MemoryRegistry registry;
    SetOfFiles files;
    files.present = {"C:\\", "C:\\PROGRAM FILES"};
    // A tab shows as four characters; the mark moves with it.
    const std::string data = "\t\"C:\\Program Files\\Foo\\bar.exe\" /x";
    PutString(registry, kHkeyCurrentUser, kKey, "Run", data);
    const std::string text = Explain(registry, files, "Run", {"OTHER"}, data);
    EXPECT_EQ(text,
              "Root key:    HKEY_CURRENT_USER\n"
              "Key:         Software\\Vendor\n"
              "Value:       Run\n"
              "Type:        REG_SZ\n"
              "Data:        \\x09\"C:\\Program Files\\Foo\\bar.exe\" /x\n"
              "                  ^^^^^^^^^^^^^^^^^^^^^^^^^^^^\n"
              "File:        C:\\PROGRAM FILES\\FOO\\BAR.EXE\n"
              "             read from the part of the data marked ^, upper-cased\n"
              "Drive:       C:\\\n"
              "Existence:   C:\\PROGRAM FILES\\FOO\\BAR.EXE was not found;\n"
              "             the nearest folder that exists is C:\\PROGRAM FILES\\\n"
              "Ignore list: none of its 1 entry occurs in the file path or the key\n"
              "             \"Add Value To Ignore List\" would add "
              "\"\\x09\"C:\\PROGRAM FILES\\FOO\\BAR.EXE\" /X\",\n"
              "             which would not hide it: entries are looked for in the path and "
              "the key\n"
              "             \"Add Subkey To Ignore List\" would add \"SOFTWARE\\VENDOR\\RUN\",\n"
              "             which would hide it and every value whose key or path holds that "
              "text\n"
              "Verdict:     listed as \"Invalid Entry\": the file is missing and no ignore entry "
              "covers it\n");
}

TEST(FindingExplanation, SaysWhyAValueIsOrIsNotListed) {
    MemoryRegistry registry;
    SetOfFiles files;
    files.present = {"C:\\THERE.EXE"};
    PutString(registry, kHkeyCurrentUser, kKey, "there", "C:\\there.exe");
    PutString(registry, kHkeyCurrentUser, kKey, "ignored", "C:\\OldApp\\a.dll");
    PutString(registry, kHkeyCurrentUser, kKey, "other drive", "D:\\a.exe");
    PutString(registry, kHkeyCurrentUser, kKey, "two paths", "C:\\Win\\run.exe C:\\Win\\x.dll");
    PutString(registry, kHkeyCurrentUser, kKey, "nowhere", "C:\\a\\b.exe");
    PutValue(registry, kHkeyCurrentUser, kKey, "multi", reg::kMultiSz,
             testing::Bytes(std::string("C:\\a.exe\0C:\\b.exe\0\0", 20)));
    const struct {
        const char* name;
        std::vector<std::string> lines;
    } cases[] = {
        {"there",
         {"Existence:   C:\\THERE.EXE exists", "Verdict:     not listed: the file exists"}},
        {"ignored",
         {"Ignore list: the entry \"OLDAPP\" occurs in the file path",
          "Verdict:     not listed: an ignore entry covers it"}},
        {"other drive",
         {"File:        none: the data do not name the drive C:\\",
          "Existence:   not asked for: there is no file path"}},
        {"two paths",
         {"the data read \"C:\\WIN\\RUN.EXE\",", "make \"C:\\WIN\\RUN.EXE C:\\WIN\\X.DLL\".",
          "Verdict:     not listed: no file path could be read from the data"}},
        {"nowhere", {"and not even the drive C:\\ was found"}},
        {"there", {"(the data changed since the scan, which listed \"as listed\")"}},
        {"multi",
         {"Type:        REG_MULTI_SZ",
          "(only the first string is read; the value also holds \"C:\\b.exe\")"}},
        {"gone",
         {"Type:        unknown: the value could not be read again (error 2: it is no longer "
          "there)",
          "Data:        as listed",
          "Verdict:     by the data the scan saw, not listed: no file path could be read"}},
    };
    for (const auto& c : cases) {
        const std::string text = Explain(registry, files, c.name, {"OLDAPP"});
        for (const std::string& line : c.lines) {
            EXPECT_NE(text.find(line), std::string::npos) << c.name << ": " << line << "\n" << text;
        }
    }
}

TEST(FindingExplanation, PartsAFoundKeyWhereTheWalkEndedItsKey) {
    const struct {
        const char* found;
        const char* key_path;
        const char* key;
        const char* name;
    } cases[] = {
        {"Software\\A\\v", "Software\\A", "Software\\A", "v"},
        {"Software\\A\\x\\y", "Software\\A", "Software\\A", "x\\y"},  // a name with a backslash
        {"Software\\A\\x\\y", "", "Software\\A\\x", "y"},             // unknown: as Fix parts it
        {"Software\\A\\", "Software\\A", "Software\\A", ""},          // the default value
        {"Software\\B\\v", "Software\\A", "Software\\B", "v"},        // a hint that does not fit
    };
    for (const auto& c : cases) {
        std::string key;
        std::string name;
        SplitFoundKey(c.found, c.key_path, key, name);
        EXPECT_EQ(key, c.key) << c.found;
        EXPECT_EQ(name, c.name) << c.found;
    }
}

}  // namespace
}  // namespace regvex::scan
