#include "ignore/ignore_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scan/finding_verdict.h"
#include "support/memory_controls.h"

namespace regvex::ignore {
namespace {

using Lines = std::vector<std::string>;

const text::Windows1252CodePage kCp1252;

TEST(IgnoreFile, LinesEndAtCrOrCrLfAndALoneLfStaysInTheLine) {
    const struct {
        std::string bytes;
        Lines lines;
    } cases[] = {
        {"", {}},
        {"abc", {"abc"}},
        {"abc\r\n", {"abc"}},
        {"abc\r\ndef", {"abc", "def"}},
        {"abc\rdef\r", {"abc", "def"}},
        {"abc\ndef\n", {"abc\ndef\n"}},
        {"abc\n\r\ndef", {"abc\n", "def"}},
        {"abc\r\n\ndef", {"abc", "\ndef"}},
        {"\r\n", {""}},
        {"\r", {""}},
        {"\r\n\r\n", {"", ""}},
        {"a\r\r\nb", {"a", "", "b"}},
        {"\n", {"\n"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SplitIgnoreLines(c.bytes), c.lines) << ::testing::PrintToString(c.bytes);
    }
}

TEST(IgnoreFile, LoadsUpperCasedWithoutDuplicatesOrSweptEmptyEntries) {
    const struct {
        std::string bytes;
        Lines entries;
    } cases[] = {
        // Case folded, the duplicate dropped, a one-letter line kept.
        {"abc\r\nABC\r\nx\r\n", {"ABC", "X"}},
        {"", {}},
        // One empty line stays: too few items for the duplicate step, and the sweep
        // never looks at the last item.
        {"\r\n", {""}},
        {"\r\n\r\n", {""}},
        {"A\r\n\r\n", {"A", ""}},
        {"\r\nA\r\n", {"A"}},
        {"A\r\n\r\nB\r\n", {"A", "B"}},
        {"Temp\r\nC:\\Old App\r\ntemp\r\nc:\\old app\r\n", {"TEMP", "C:\\OLD APP"}},
        {"one\ntwo\r\n", {"ONE\nTWO"}},
        // ANSI bytes: é is 0xE9 in Windows-1252 and upper-cases to É.
        {"caf\xE9\r\nCAF\xC9\r\n", {"CAF\xC3\x89"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(LoadIgnoreEntries(c.bytes, kCp1252), c.entries)
            << ::testing::PrintToString(c.bytes);
    }
}

TEST(IgnoreFile, EmptyEntrySweepSkipsTheLastItemAndTheOneAfterARemoval) {
    const struct {
        Lines before;
        Lines after;
    } cases[] = {
        {{}, {}},
        {{""}, {""}},
        {{"A", ""}, {"A", ""}},
        {{"", "A"}, {"A"}},
        {{"A", "", "B"}, {"A", "B"}},
        // The second of two empty entries in a row is skipped.
        {{"", "", "A", "B"}, {"", "A", "B"}},
        {{"A", "", "", "B", "C"}, {"A", "", "B", "C"}},
        // A removal that carries the index past the end ends the sweep.
        {{"", "A", "", "B", "", "C"}, {"A", "", "B", "C"}},
        {{"A", "B", "", "C"}, {"A", "B", "C"}},
        {{"A", "B", "C", ""}, {"A", "B", "C", ""}},
    };
    for (const auto& c : cases) {
        testing::MemoryListBox list;
        list.items = c.before;
        RemoveEmptyEntries(list);
        EXPECT_EQ(list.items, c.after) << ::testing::PrintToString(c.before);
    }
}

TEST(IgnoreFile, WrittenOneEntryALineEachEndingInCrLfInTheAnsiCodePage) {
    EXPECT_EQ(IgnoreFileBytes(Lines{"ABC", "CAF\xC3\x89", "  ", ""}, kCp1252),
              "ABC\r\nCAF\xC9\r\n  \r\n\r\n");
    EXPECT_EQ(IgnoreFileBytes(Lines{}, kCp1252), "");
    // A character the code page lacks cannot be kept.
    EXPECT_EQ(IgnoreFileBytes(Lines{"\xE2\x82\xAC\xE2\x98\x83"}, kCp1252), "\x80?\r\n");
}

TEST(IgnoreMatching, AnEntryInThePathOrTheSubkeyDropsTheFinding) {
    const Lines loaded = LoadIgnoreEntries("oldapp\r\n", kCp1252);
    const Lines as_typed{"oldapp"};
    const Lines substring = LoadIgnoreEntries("OldApp\\A\r\n", kCp1252);
    const Lines one_empty_line = LoadIgnoreEntries("\r\n", kCp1252);
    const struct {
        const Lines* entries;
        const char* path;
        const char* key;
        bool ignored;
    } cases[] = {
        {&loaded, "C:\\PROGRAM FILES\\OLDAPP\\A.DLL", "Software\\Vendor\\v", true},
        {&loaded, "c:\\program files\\oldapp\\a.dll", "Software\\Vendor\\v", true},
        {&loaded, "C:\\Other\\b.dll", "SOFTWARE\\OLDAPP\\v", true},
        {&loaded, "C:\\Other\\b.dll", "Software\\OldApp\\Settings\\v", true},
        {&loaded, "C:\\Other\\b.dll", "Software\\Vendor\\v", false},
        {&substring, "C:\\Program Files\\OldApp\\a.dll", "Software\\Vendor\\v", true},
        {&substring, "C:\\Program Files\\OldApp\\b.dll", "Software\\Vendor\\v", false},
        // Only the path and key are upper-cased: an entry in lower case matches nothing.
        {&as_typed, "C:\\PROGRAM FILES\\OLDAPP\\A.DLL", "SOFTWARE\\OLDAPP\\v", false},
        {&as_typed, "c:\\oldapp\\a.dll", "software\\oldapp", false},
        // The empty entry that a file of one empty line leaves is in every text.
        {&one_empty_line, "C:\\ANY\\FILE.EXE", "Software\\Any", true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(scan::IsIgnored(*c.entries, c.path, c.key), c.ignored)
            << c.path << " | " << c.key;
    }
}

}  // namespace
}  // namespace regvex::ignore
