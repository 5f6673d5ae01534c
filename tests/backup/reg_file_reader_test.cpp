#include "backup/reg_file_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backup/reg_file_lines.h"
#include "support/registry_dump.h"
#include "text/utf8.h"

namespace regvex::backup {
namespace {

using namespace std::string_literals;

const text::Windows1252CodePage kAnsi{};
const std::string kV5 = "Windows Registry Editor Version 5.00\n";

// A key path `count` levels deep.
std::string Levels(std::size_t count) {
    std::string path = "d";
    for (std::size_t i = 1; i < count; ++i) {
        path += "\\d";
    }
    return path;
}

using testing::DumpRegistry;

std::string Describe(const std::optional<RegFileError>& error) {
    return error ? "error " + std::to_string(error->line) + ": " + error->message : "";
}

std::string Import(const std::string& bytes) {
    MemoryRegistry registry;
    const std::string error = Describe(ImportRegText(bytes, registry, kAnsi));
    return error.empty() ? DumpRegistry(registry) : error;
}

std::string Utf16File(const std::string& utf8) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    }
    return bytes;
}

TEST(RegFileReader, ValueLinesStoreTheirTypeAndExactBytes) {
    const struct {
        std::string header, line, stored;
    } cases[] = {
        {kV5, R"("s"="C:\\a\"b\nc\q")", R"(s=1:C:\a"b\x0ac\q\x00)"},
        {kV5, R"("e"="")", R"(e=1:\x00)"},
        {kV5, R"(@="default")", R"(=1:default\x00)"},
        {kV5, R"("n\\a\"m" = "x")", R"(n\a"m=1:x\x00)"},
        {kV5, "\"d\"=dword:0000002a", R"(d=4:*\x00\x00\x00)"},
        {kV5, "\"d\"=dword:FfFFfffF", R"(d=4:\xff\xff\xff\xff)"},
        {kV5, "\"d\"=dword:\\\n   1", R"(d=4:\x01\x00\x00\x00)"},
        {kV5, "\"b\"=hex:", "b=3:"},
        {kV5, "\"b\"=hex: de,AD , 1,f", R"(b=3:\xde\xad\x01\x0f)"},
        {kV5, "\"b\"=hex:41,\\\n  42,\\\n\n", "b=3:AB"},
        {kV5, "\"n\"=hex(0):", "n=0:"},
        {kV5, "\"q\"=hex(b):01,00,00,00,00,00,00,80", R"(q=11:\x01\x00\x00\x00\x00\x00\x00\x80)"},
        {kV5, "\"o\"=hex(123abc):ff", R"(o=1194684:\xff)"},
        {kV5, "\"x\"=hex(2):25,00,41,00,00,00", R"(x=2:%A\x00)"},
        {kV5, "\"m\"=hex(7):61,00,00,00,e9,00,2d,4e,00,00,00,00",
         R"(m=7:a\x00\xc3\xa9\xe4\xb8\xad\x00\x00)"},
        {kV5, "\"t\"=hex(1):41,00,42", R"(t=1:AB)"},
        {"REGEDIT4\n", "\"x\"=hex(2):25,41,e9,00", R"(x=2:%A\xc3\xa9\x00)"},
        {"REGEDIT4\n", "\"m\"=hex(7):61,00,80,00,00", R"(m=7:a\x00\xe2\x82\xac\x00\x00)"},
        {"REGEDIT4\n", "\"b\"=hex:e9,00", R"(b=3:\xe9\x00)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Import(c.header + "[HKCU\\K]\n" + c.line + "\n"),
                  "HKEY_CURRENT_USER\\K\n  " + c.stored + "\n")
            << c.line;
    }
}

TEST(RegFileReader, EveryEncodingAndLineEndGivesTheSameUtf8) {
    const std::string body =
        "\n ; comment\n[HKEY_CURRENT_USER\\Caf\xC3\xA9]\n\"\xC3\xA9\"=\"\xC3\xA9t\xC3\xA9\"\n";
    const std::string expected =
        "HKEY_CURRENT_USER\\Caf\\xc3\\xa9\n  \\xc3\\xa9=1:\\xc3\\xa9t\\xc3\\xa9\\x00\n";
    for (const std::string eol : {"\n", "\r\n", "\r"}) {
        std::string file = "  " + kV5 + body;
        for (std::size_t at = 0; (at = file.find('\n', at)) != std::string::npos;) {
            file.replace(at, 1, eol);
            at += eol.size();
        }
        std::string ansi;
        ASSERT_TRUE(kAnsi.FromUtf8(file, ansi));
        EXPECT_EQ(Import(Utf16File(file)), expected) << "UTF-16, eol " << eol.size();
        EXPECT_EQ(Import("\xEF\xBB\xBF" + file), expected) << "UTF-8, eol " << eol.size();
        EXPECT_EQ(Import(ansi), expected) << "ANSI, eol " << eol.size();
        EXPECT_EQ(Import(file), expected) << "UTF-8 without a mark, eol " << eol.size();
    }
    // Without a mark, only a version 5 file that is valid UTF-8 to its end is read as UTF-8.
    const std::string ansi_reading = "HKEY_CURRENT_USER\\\\xc3\\x83\\xc2\\xa9\n";
    EXPECT_EQ(Import("REGEDIT4\n[HKCU\\\xC3\xA9]"), ansi_reading);
    EXPECT_EQ(Import(kV5 + "[HKCU\\\xC3\xA9]\n;" + std::string(100000, 'c') + "\xE9"),
              ansi_reading);
    const struct {
        std::string comment;
        bool utf8;
    } endings[] = {
        {"\xE4\xB8\xAD", true},
        {"\xF0\x9F\x98\x80", true},
        {"\xEF\xBF\xBD", true},
        {"\xC0\x80", false},
        {"\xED\xA0\x80", false},
        {"\xF4\x90\x80\x80", false},
        {"\xE4\xB8", false},
        {"\x80", false},
        {"\xF8\x88\x80\x80\x80", false},
    };
    for (const auto& e : endings) {
        EXPECT_EQ(Import(kV5 + "[HKCU\\\xC3\xA9]\n;" + e.comment),
                  e.utf8 ? "HKEY_CURRENT_USER\\\\xc3\\xa9\n" : ansi_reading)
            << testing::RenderBytes(e.comment);
    }
    EXPECT_EQ(Import(Utf16File(kV5 + "[HKCU\\\xE4\xB8\xAD]")),
              "HKEY_CURRENT_USER\\\\xe4\\xb8\\xad\n");
}

TEST(RegFileReader, KeyLinesNameEveryRootAndTolerateBlanksAndTrailingText) {
    const struct {
        std::string line, key;
    } cases[] = {
        {"[HKCR\\a]", "HKEY_CLASSES_ROOT\\a"},
        {"[HKLM\\a]", "HKEY_LOCAL_MACHINE\\a"},
        {"[HKU\\a]", "HKEY_USERS\\a"},
        {"[HKCC\\a]", "HKEY_CURRENT_CONFIG\\a"},
        {"  [HKEY_PERFORMANCE_DATA\\a\\b]  ; x",
         "HKEY_PERFORMANCE_DATA\\a\nHKEY_PERFORMANCE_DATA\\a\\b"},
        {"[HKEY_DYN_DATA\\a b\\]", "HKEY_DYN_DATA\\a b"},
        {"[HKEY_USERS\\a]b]", "HKEY_USERS\\a]b"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Import("REGEDIT4\n" + c.line), c.key + "\n") << c.line;
    }
    EXPECT_EQ(Import(kV5 + "[HKCU]\n@=dword:1"), "HKEY_CURRENT_USER\n  =4:\\x01\\x00\\x00\\x00\n");
}

TEST(RegFileReader, DeletionsRemoveKeysAndValuesAndIgnoreMissingOnes) {
    MemoryRegistry registry;
    ASSERT_EQ(Describe(ImportRegText(kV5 + "[HKCU\\A\\B\\C]\n[HKCU\\A]\n\"v\"=\"1\"\n\"w\"=\"2\"\n"
                                           "[HKCU\\D]\n\"old\"=\"1\"",
                                     registry, kAnsi)),
              "");
    ASSERT_EQ(Describe(ImportRegText(kV5 + "[-HKCU\\A\\B]\n[-HKCU\\Missing\\X]\n[HKCU\\A]\n"
                                           "\"v\"=-\n\"missing\"=-\n[-HKCU\\D]\n[HKCU\\D]\n@=\"3\"",
                                     registry, kAnsi)),
              "");
    EXPECT_EQ(DumpRegistry(registry),
              "HKEY_CURRENT_USER\\A\n  w=1:2\\x00\nHKEY_CURRENT_USER\\D\n  =1:3\\x00\n");
}

TEST(RegFileReader, MalformedFilesNameTheLineAndChangeNothing) {
    const struct {
        std::string file;
        std::size_t line;
        std::string words;
    } cases[] = {
        {"", 1, "REGEDIT4"},
        {"\n \n", 3, "REGEDIT4"},
        {"; first\nREGEDIT4\n", 1, "must start"},
        {kV5 + "\n[HKEY_FOO\\a]", 3, "unknown root key \"HKEY_FOO\""},
        {kV5 + "[hkcu\\a]", 2, "unknown root key"},
        {kV5 + "[HKEY_ALL]", 2, "unknown root key"},
        {kV5 + "[]", 2, "unknown root key \"\""},
        {kV5 + "[HKCU\\a", 2, "\"]\""},
        {kV5 + "[HKCU\\a\\\\b]", 2, "empty key name"},
        {kV5 + "[-HKCU\\]", 2, "root key cannot be deleted"},
        {kV5 + "\"a\"=\"b\"", 2, "value outside of any key"},
        {kV5 + "[-HKLM\\Keep]\n[HKCU\\a]\n\"a\"=hex:zz", 4, "not hexadecimal"},
        {kV5 + "[-HKCU\\a]\n@=-", 3, "value outside of any key"},
        {kV5 + "[HKCU\\a]\n\"a\" \"b\"", 3, "expected \"=\" after the value name"},
        {kV5 + "[HKCU\\a]\n\"a\\\"=1", 3, "closing quote"},
        {kV5 + "[HKCU\\a]\n\"a\"=\"b\\\"", 3, "unterminated string"},
        {kV5 + "[HKCU\\a]\n\"a\"=\"b\" c", 3, "after the closing quote"},
        {kV5 + "[HKCU\\a]\n\"a\"=dword:", 3, "dword needs 1 to 8 hexadecimal digits"},
        {kV5 + "[HKCU\\a]\n\"a\"=dword:123456789", 3, "dword needs"},
        {kV5 + "[HKCU\\a]\n\"a\"=hex:zz", 3, "hex byte \"zz\" is not hexadecimal"},
        {kV5 + "[HKCU\\a]\n\"a\"=hex:123", 3, "more than two digits"},
        {kV5 + "[HKCU\\a]\n\"a\"=hex:01,,02", 3, "missing"},
        {kV5 + "[HKCU\\a]\n\"a\"=hex:01,\\\n 02,\\\n  0g", 5, "\"0g\""},
        {kV5 + "[HKCU\\a]\n\"a\"=hex:0g,\\\n 02", 3, "\"0g\""},
        {kV5 + "[HKCU\\a]\n\"a\"=hex(2:01", 3, "hex(n)"},
        {kV5 + "[HKCU\\a]\n\"a\"=hex():01", 3, "hex(n)"},
        {kV5 + "[HKCU\\a]\n\"a\"=hexa:01", 3, "expected \":\""},
        {kV5 + "[HKCU\\a]\n\"a\"=word:1", 3, "value data"},
        {kV5 + "[HKCU\\a]\n\"a\"=", 3, "value data"},
        {kV5 + "[HKCU\\a]\nkey=value", 3, "expected a [key]"},
        {Utf16File(kV5 + "[HKCU\\a]\n") + "x", 3, "UTF-16"},
        {kV5 + "[HKCU\\a\0b]"s, 2, "the key name has a NUL character"},
        {kV5 + "[HKCU\\a]\n\"a\0b\"=\"c\""s, 3, "the value name has a NUL character"},
        {Utf16File(kV5 + "[HKCU\\a]\n@=\"b\"\n\"\0\"=\"c\""s), 4, "NUL character"},
        {kV5 + "[HKCU\\a\\" + std::string(256, 'k') + "]", 2, "longer than the 255 characters"},
        {kV5 + "[-HKCU\\" + Levels(513) + "]", 2, "more than 512 levels"},
        {kV5 + "[HKCU\\" + Levels(100000) + "]", 2, "more than 512 levels"},
        {kV5 + "[HKCU\\a]\n\"" + std::string(16384, 'v') + "\"=\"x\"", 3,
         "longer than the 16383 characters"},
        // Changes to what was there before, taken back.
        {kV5 + "[HKLM\\Keep]\n\"k\"=\"changed\"\n@=\"new\"\n[HKLM\\Keep\\Sub]\n\"s\"=\"1\"\n"
               "[-HKLM\\Keep]\n[HKLM\\Keep]\n\"k\"=dword:1\nx",
         10, "expected a [key]"},
        {kV5 + "[HKLM\\Keep]\n\"k\"=-\n\"a\"=hex:zz", 4, "not hexadecimal"},
        {"\xFE\xFF\0W\0i"s, 1, "not supported: UTF-16BE ("},
        {"\0W\0i"s, 1, "not supported: UTF-16BE without a byte order mark"},
        {"W\0i\0"s, 1, "not supported: UTF-16LE without a byte order mark"},
        {"\xFF\xFE\0\0W\0\0\0"s, 1, "not supported: UTF-32LE ("},
        {"\0\0\xFE\xFF\0\0\0W"s, 1, "not supported: UTF-32BE ("},
        {"W\0\0\0i\0\0\0"s, 1, "not supported: UTF-32LE without a byte order mark"},
        {"\0\0\0W\0\0\0i"s, 1, "not supported: UTF-32BE without a byte order mark"},
    };
    for (const auto& c : cases) {
        MemoryRegistry registry;
        ASSERT_EQ(Describe(ImportRegText("REGEDIT4\n[HKLM\\Keep]\n\"k\"=\"v\"", registry, kAnsi)),
                  "");
        const std::string before = DumpRegistry(registry);
        const auto error = ImportRegText(c.file, registry, kAnsi);
        ASSERT_TRUE(error.has_value()) << c.file;
        EXPECT_EQ(error->line, c.line) << c.file;
        EXPECT_NE(error->message.find(c.words), std::string::npos) << error->message;
        EXPECT_EQ(DumpRegistry(registry), before) << c.file;
    }
}

TEST(RegFileReader, NamesAndDepthsUpToTheLimitsOfWindowsAreRead) {
    for (const std::string& file :
         {kV5 + "[HKCU\\" + std::string(255, 'k') + "]",
          kV5 + "[HKCU\\" + Levels(512) + "]\n\"" + std::string(16383, 'v') + "\"=\"x\""}) {
        MemoryRegistry registry;
        EXPECT_EQ(Describe(ImportRegText(file, registry, kAnsi)), "");
    }
}

// Any piece size gives the same lines: a CR LF, a UTF-16 unit or a surrogate pair may be
// cut between two pieces. The first 64 KB are read whole to find the encoding.
TEST(RegFileReader, LinesDoNotDependOnWhereTheFileIsCutIntoPieces) {
    const std::string head = kV5 + ";" + std::string(70000, 'c') + "\r\n";
    const std::string tail = "[HKCU\\\xF0\x9F\x98\x80]\r\r\n\n\"a\"=\"\xC3\xA9\"\r";
    const std::vector<std::string> tail_lines = {"[HKCU\\\xF0\x9F\x98\x80]", "", "",
                                                 "\"a\"=\"\xC3\xA9\"",       "", "end"};
    const struct {
        std::string file;
        std::string last;  // after the tail's lines
    } cases[] = {
        {Utf16File(head + tail), "end"},
        {Utf16File(head + tail) + "x", "UTF-16 fault at 7"},
        {"\xEF\xBB\xBF" + head + tail, "end"},
        {head + tail, "end"},
    };
    for (const auto& c : cases) {
        for (const std::size_t piece :
             {std::size_t{1} << 20, std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
            MemoryByteSource source(c.file);
            RegFileLines lines(source, kAnsi, piece);
            ASSERT_FALSE(lines.Open().has_value());
            std::vector<std::string> got;
            std::string_view line;
            while (lines.Next(line)) {
                got.emplace_back(line);
            }
            got.erase(got.begin(), got.begin() + 2);  // the head
            got.push_back(lines.error() ? "UTF-16 fault at " + std::to_string(lines.line_number())
                                        : "end");
            std::vector<std::string> expected(tail_lines.begin(), tail_lines.end() - 1);
            if (c.last != "end") {
                expected.pop_back();  // a line cut by the fault is not given
            }
            expected.push_back(c.last);
            EXPECT_EQ(got, expected) << "piece " << piece << ", file size " << c.file.size();
        }
    }
}

TEST(RegFileReader, ReadsByteExactExportFiles) {
    MemoryRegistry registry;
    const std::filesystem::path dir = REGVEX_FIXTURES_DIR "/reader";
    ASSERT_EQ(Describe(ImportRegFile(dir / "export_unicode.reg", registry, kAnsi)), "");
    ASSERT_EQ(Describe(ImportRegFile(dir / "export_regedit4.reg", registry, kAnsi)), "");
    EXPECT_EQ(DumpRegistry(registry), R"(HKEY_CURRENT_USER\Software
HKEY_CURRENT_USER\Software\Vexlor Test
  =1:default\x00
  Path=1:C:\Program Files\Vexlor\vexlor.exe\x00
  Caf\xc3\xa9=1:\xe4\xb8\xad\xe6\x96\x87\x00
  Expand=2:%SystemRoot%\x00
  Multi=7:a\x00\xc3\xa9\x00\x00
HKEY_CURRENT_USER\Software\Vexlor Test\Sub \xe4\xb8\xad
  Q=11:\x01\x00\x00\x00\x00\x00\x00\x00
HKEY_LOCAL_MACHINE\SOFTWARE
HKEY_LOCAL_MACHINE\SOFTWARE\Vexlor Test
  Caf\xc3\xa9=1:na\xc3\xafve\x00
  Expand=2:%SystemRoot%\x00
  Multi=7:a\x00\xc3\xa9\x00\xe2\x82\xac\x00\x00
)");
    for (const auto& missing : {dir / "no_such_file.reg", dir}) {
        const auto error = ImportRegFile(missing, registry, kAnsi);
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->line, 0u);
    }
}

TEST(RegFileReader, ARefusingRegistryIsReportedAtTheLine) {
    MemoryRegistry registry;
    ASSERT_EQ(Describe(ImportRegText("REGEDIT4\n[HKLM\\Locked]", registry, kAnsi)), "");
    ASSERT_EQ(registry.DenyFullAccess(kHkeyLocalMachine, "Locked"), reg::kSuccess);
    EXPECT_EQ(Describe(ImportRegText("REGEDIT4\n\n[HKLM\\Locked]\n@=\"x\"", registry, kAnsi)),
              "error 3: the registry refused to create the key (error 5)");
}

}  // namespace
}  // namespace regvex::backup
