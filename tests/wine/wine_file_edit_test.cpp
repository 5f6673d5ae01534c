#include "wine/wine_file_edit.h"

#include <gtest/gtest.h>

#include "engine/registry.h"
#include "support/registry_dump.h"
#include "wine/wine_registry_file.h"

namespace regvex::wine {
namespace {

using namespace std::string_literals;
using testing::RenderBytes;

// Wine's own layout; "Path" of Software\A is repeated in a second section of the key, as
// only a hand-edited file has it.
const std::string kFile = R"(WINE REGISTRY Version 2
;; All keys relative to \\Machine
#arch=win64

[] 1700000000
#time=1da0000000000000
"InRoot"=dword:00000001

[Software\\A] 1700000000
#time=1da0000000000000
@="default"
"Bin"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,16,\
  17,18
"Path"="C:\\x.exe"
"q\"b\\c\x00e9"="odd"

[Software\\B] 1700000000
#time=1da0000000000000
"Path"="C:\\y.exe"

[Software\\Empty] 1700000000
#time=1da0000000000000

[Software\\A] 1700000001
"path"="again"
"Zed"="z"
)";

ValueChange Delete(std::string key, std::string name) {
    ValueChange change;
    change.key_path = std::move(key);
    change.name = std::move(name);
    return change;
}

ValueChange Set(std::string key, std::string name, std::uint32_t type, std::string_view data) {
    ValueChange change = Delete(std::move(key), std::move(name));
    change.remove = false;
    change.type = type;
    change.data.assign(data.begin(), data.end());
    return change;
}

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string WithCrLf(std::string text) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
        text.insert(at, 1, '\r');
    }
    return text;
}

struct EditCase {
    const char* what;
    std::vector<ValueChange> changes;
    std::vector<std::pair<std::string, std::string>> replaced;  // in kFile, to expect
};

TEST(WineFileEdit, ChangesExactlyTheLinesOfTheChangedValuesInEitherLineEnd) {
    const EditCase cases[] = {
        {"every line of the name in the key, named in another case; B's own stays",
         {Delete("software\\a", "PATH")},
         {{"\"Path\"=\"C:\\\\x.exe\"\n", ""}, {"\"path\"=\"again\"\n", ""}}},
        {"default value", {Delete("Software\\A", "")}, {{"@=\"default\"\n", ""}}},
        {"continued lines",
         {Delete("Software\\A", "Bin")},
         {{"\"Bin\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,16,\\\n"
           "  17,18\n",
           ""}}},
        {"escaped name",
         {Delete("Software\\A", "q\"b\\c\xC3\xA9")},
         {{"\"q\\\"b\\\\c\\x00e9\"=\"odd\"\n", ""}}},
        {"the root", {Delete("", "InRoot")}, {{"\"InRoot\"=dword:00000001\n", ""}}},
        {"replace",
         {Set("Software\\B", "Path", reg::kSz, "C:\\z.exe\0"s)},
         {{"C:\\\\y.exe", "C:\\\\z.exe"}}},
        {"replace a repeated name: the first line, in its spelling; the others go",
         {Set("Software\\A", "PATH", reg::kSz, "new\0"s)},
         {{"\"Path\"=\"C:\\\\x.exe\"", "\"Path\"=\"new\""}, {"\"path\"=\"again\"\n", ""}}},
        {"add before and after in order",
         {Set("Software\\B", "Zzz", reg::kBinary, ""),
          Set("Software\\B", "aaa", reg::kDword, "\1\0\0\0"s)},
         {{"\"Path\"=\"C:\\\\y.exe\"\n",
           "\"aaa\"=dword:00000001\n\"Path\"=\"C:\\\\y.exe\"\n\"Zzz\"=hex:\n"}}},
        {"add to the key's last section",
         {Set("Software\\A", "Other", reg::kSz, "o\0"s)},
         {{"\"path\"=\"again\"", "\"Other\"=\"o\"\n\"path\"=\"again\""}}},
        {"add to a key without values",
         {Set("Software\\Empty", "New", reg::kExpandSz, "%n%\0"s)},
         {{"0000\n\n[Software\\\\A] 1700000001",
           "0000\n\"New\"=str(2):\"%n%\"\n\n[Software\\\\A] 1700000001"}}},
        {"add to a key that only its subkeys' sections name, in a section of its own",
         {Set("Software", "New", reg::kSz, "n\0"s), Set("software", "Also", reg::kSz, "a\0"s)},
         {{"[Software\\\\A] 1700000000",
           "[Software] 1700000000\n\"Also\"=\"a\"\n\"New\"=\"n\"\n\n[Software\\\\A] 1700000000"}}},
        {"deleted and put back",
         {Delete("Software\\B", "Path"), Set("Software\\B", "Path", reg::kSz, "C:\\y.exe\0"s)},
         {}},
        {"set, then deleted",
         {Set("Software\\B", "New", reg::kSz, "n\0"s), Delete("Software\\B", "new")},
         {}},
    };
    for (const bool crlf : {false, true}) {
        const std::string original = crlf ? WithCrLf(kFile) : kFile;
        for (const EditCase& c : cases) {
            SCOPED_TRACE(std::string(c.what) + (crlf ? ", CR LF" : ""));
            std::string expected = kFile;
            for (const auto& [from, to] : c.replaced) {
                expected = Replaced(expected, from, to);
            }
            std::string error;
            const auto edited = EditWineRegistryText(original, c.changes, error);
            ASSERT_TRUE(edited) << error;
            EXPECT_EQ(*edited, crlf ? WithCrLf(expected) : expected);
            EXPECT_EQ(CheckWineRegistryEdit(original, *edited, c.changes), "");
        }
    }
}

TEST(WineFileEdit, RefusesChangesItCannotMakeAndNamesTheFirst) {
    const std::pair<std::vector<ValueChange>, std::string> cases[] = {
        {{Set("Software\\Nope", "v", reg::kSz, "\0"s)},
         "cannot set value \"v\" in [Software\\Nope]: the key is not in the file"},
        {{Delete("Software", "v")},
         "cannot delete value \"v\" in [Software]: the value is not in the key"},
        {{Delete("Software\\B", "Path"), Delete("Software\\B", "Path")},
         "cannot delete value \"Path\" in [Software\\B]: the value is not in the key"},
        {{Delete("Software\\B", "")},
         "cannot delete the default value in [Software\\B]: the value is not in the key"},
    };
    for (const auto& [changes, message] : cases) {
        std::string error;
        EXPECT_FALSE(EditWineRegistryText(kFile, changes, error));
        EXPECT_EQ(error, message);
    }
    std::string error;
    EXPECT_FALSE(EditWineRegistryText("REGEDIT4\n", {}, error));
    EXPECT_NE(error.find("not a Wine registry file"), std::string::npos) << error;
}

TEST(WineFileEdit, CheckFindsEveryDifferenceButTheChanges) {
    const std::vector<ValueChange> changes = {Delete("Software\\B", "Path")};
    const std::string edited = Replaced(kFile, "\"Path\"=\"C:\\\\y.exe\"\n", "");
    const struct {
        std::pair<std::string, std::string> replaced;
        const char* message;
    } cases[] = {
        {{"=dword:00000001", "=dword:00000002"},
         "value \"InRoot\" of [] has other data in the edited file"},
        {{"\"Zed\"=\"z\"\n", ""}, "value \"Zed\" of [Software\\A] is missing from the edited file"},
        {{"\"Zed\"=\"z\"", "\"Zed\"=str(2):\"z\""},
         "value \"Zed\" of [Software\\A] has another type in the edited file"},
        {{"\"Zed\"", "\"ZED\""},
         "value \"Zed\" of [Software\\A] is spelled \"ZED\" in the edited file"},
        {{"0000\n\n[Software\\\\A] 1700000001", "0000\n\"x\"=\"1\"\n\n[Software\\\\A] 1700000001"},
         "value \"x\" of [Software\\Empty] appeared in the edited file"},
        {{"#time=1da0000000000000\n\n[Software\\\\Empty]",
          "#time=1da0000000000000\n\"Path\"=\"C:\\\\y.exe\"\n\n[Software\\\\Empty]"},
         "value \"Path\" of [Software\\B] appeared in the edited file"},
        {{"[Software\\\\B]", "[Software\\\\C]"},
         "key [Software\\B] is missing from the edited file"},
        {{"[Software\\\\Empty]", "[Software\\\\EMPTY]"},
         "key [Software\\Empty] is spelled \"EMPTY\" in the edited file"},
        {{"0000\n\n[Software\\\\A] 1700000001", "0000\n#link\n\n[Software\\\\A] 1700000001"},
         "key [Software\\Empty] is a link in only one of the files"},
        {{"#arch=win64\n", "#arch=win64\ngarbage\n"},
         "lines that Wine would skip: 1 in the edited file, 0 in the original"},
    };
    EXPECT_EQ(CheckWineRegistryEdit(kFile, edited, changes), "");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        EXPECT_EQ(CheckWineRegistryEdit(
                      kFile, Replaced(edited, c.replaced.first, c.replaced.second), changes),
                  c.message);
    }
}

TEST(WineFileEdit, WritesValuesAsWinesServerAndReadsThemBack) {
    const struct {
        const char* name;
        std::uint32_t type;
        std::string data;
        const char* text;
    } cases[] = {
        {"", reg::kSz, "C:\\x.exe\0"s, R"(@="C:\\x.exe")"},
        {"q\"b\\\xC3\xA9", reg::kSz,
         "a\t\x01"
         "7\x1b\x01\xC3\xA9"
         "f\xC3\xA9z\0"s,
         R"("q\"b\\\xe9"="a\t\0017\e\1\x00e9f\xe9z")"},
        {"n", reg::kExpandSz, "%SystemRoot%\0"s, R"("n"=str(2):"%SystemRoot%")"},
        {"n", reg::kMultiSz, "a\0b\0\0"s, R"("n"=str(7):"a\0b\0")"},
        {"n", reg::kSz, "ab", R"("n"=hex(1):61,00,62,00)"},
        {"n", reg::kSz, "", R"("n"=hex(1):)"},
        {"n", reg::kDword, "\x2a\0\0\x80"s, R"("n"=dword:8000002a)"},
        {"n", reg::kDword, "\1\2\3", R"("n"=hex(4):01,02,03)"},
        {"n", reg::kQword, "\1\2\3\4\5\6\7\x08", R"("n"=hex(b):01,02,03,04,05,06,07,08)"},
        {"n", 0x20000, "\xff", R"("n"=hex(20000):ff)"},
        {"Bin", reg::kBinary, std::string(49, '\xab'),
         "\"Bin\"=hex:ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\r\n"
         "  ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\r\n"
         "  ab"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const std::vector<std::uint8_t> data(c.data.begin(), c.data.end());
        const std::string text = WineValueText(c.name, c.type, data, "\r\n");
        EXPECT_EQ(text, c.text);
        WineKey top;
        WineFileContents contents;
        ASSERT_FALSE(ReadWineRegistryText("WINE REGISTRY Version 2\r\n[K]\r\n" + text + "\r\n",
                                          "Machine", top, contents));
        top.Finish();
        const WineKey* key = FindWineSubkey(top, "Machine\\K");
        ASSERT_TRUE(key != nullptr && key->values.size() == 1 && contents.bad_lines.empty());
        EXPECT_EQ(key->values[0].name, c.name);
        EXPECT_EQ(key->values[0].type, c.type);
        EXPECT_EQ(RenderBytes({reinterpret_cast<const char*>(key->values[0].data.data()),
                               key->values[0].data.size()}),
                  RenderBytes(c.data));
    }
}

}  // namespace
}  // namespace regvex::wine
