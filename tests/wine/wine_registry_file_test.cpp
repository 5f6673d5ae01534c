#include "wine/wine_registry_file.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/registry_dump.h"

namespace regvex::wine {
namespace {

using testing::RenderBytes;

constexpr const char* kHeader =
    "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n";

struct Read {
    WineKey top;
    WineFileContents contents;
    std::optional<std::string> refused;
};

std::unique_ptr<Read> ReadText(const std::string& text) {
    auto read = std::make_unique<Read>();
    std::istringstream in(text);
    read->refused = ReadWineRegistryFile(in, "Default", read->top, read->contents);
    read->top.Finish();
    return read;
}

const WineKey* KeyAt(const Read& read, std::string_view path) {
    return ResolveWinePath(read.top, path);
}

struct ValueCase {
    const char* line;
    std::uint32_t type;
    std::string data;  // UTF-8 for the text types
};

TEST(WineRegistryFile, ReadsEveryEscapeAndFormOfData) {
    using namespace std::string_literals;
    const ValueCase cases[] = {
        {R"("v"="plain")", reg::kSz, "plain\0"s},
        {R"("v"="q\"b\\c")", reg::kSz, "q\"b\\c\0"s},
        {R"("v"="\a\b\e\f\n\r\t\v")", reg::kSz, "\a\b\x1b\f\n\r\t\v\0"s},
        {R"("v"="\101\1012\0")", reg::kSz, "AA2\0\0"s},
        {R"("v"="\x41\x00e9\xd83c\xdf0e\x10000")", reg::kSz,
         "A\xC3\xA9\xF0\x9F\x8C\x8E\xE1\x80\x80"
         "0\0"s},
        {R"("v"="\xg\q\[")", reg::kSz, "xgq[\0"s},
        {"\"v\"=\"caf\xC3\xA9\"", reg::kSz, "caf\xC3\xA9\0"s},
        {R"("v"=str:"s")", reg::kSz, "s\0"s},
        {R"("v"=str(2):"%SystemRoot%\\x.dll")", reg::kExpandSz, "%SystemRoot%\\x.dll\0"s},
        {R"("v"=str(7):"one\0two\0")", reg::kMultiSz, "one\0two\0\0"s},
        {R"("v"=dword:0000002a)", reg::kDword, "\x2a\0\0\0"s},
        {R"("v"=dword:ffffffff)", reg::kDword, "\xff\xff\xff\xff"s},
        {R"("v"=hex:01,ff,0)", reg::kBinary, "\x01\xff\x00"s},
        {R"("v"=hex:)", reg::kBinary, ""},
        {R"("v"=hex(2):43,00,3a,00,5c,00,00,00)", reg::kExpandSz, "C:\\\0"s},
        {R"("v"=hex(7):41,00,00,00,00,00)", reg::kMultiSz, "A\0\0"s},
        {R"("v"=hex(1):41,00,42)", reg::kSz, "AB"},
        {R"("v"=hex(b):01,02,03,04,05,06,07,08)", reg::kQword, "\x01\x02\x03\x04\x05\x06\x07\x08"},
        {"\"v\"=hex:01,\\\n  02,03,\\\n  04", reg::kBinary, "\x01\x02\x03\x04"},
        {R"("\"odd\\name\x00e9"=dword:1)", reg::kDword, "\x01\0\0\0"s},
        {R"(@="default")", reg::kSz, "default\0"s},
    };
    for (const ValueCase& c : cases) {
        SCOPED_TRACE(c.line);
        const auto read = ReadText(std::string(kHeader) + "[Key] 1\n#time=1d\n" + c.line + "\n");
        ASSERT_FALSE(read->refused);
        EXPECT_TRUE(read->contents.bad_lines.empty());
        const WineKey* key = KeyAt(*read, "Machine\\Key");
        ASSERT_NE(key, nullptr);
        ASSERT_EQ(key->values.size(), 1u);
        const WineValue& value = key->values[0];
        EXPECT_EQ(value.type, c.type);
        EXPECT_EQ(
            RenderBytes({reinterpret_cast<const char*>(value.data.data()), value.data.size()}),
            RenderBytes(c.data));
    }
}

TEST(WineRegistryFile, KeyNamesUnescapeAndSplitBelowTheFilesRoot) {
    const auto read = ReadText(
        "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\User\\\\S-1-5-21-0-0-0-1000\n"
        "#arch=win64\n\n[Software\\\\A\\[1\\]\\\\\\x00e9] 1795390907\n\"v\"=\"1\"\n"
        "[] 1795390907\n\"in root\"=\"2\"\n");
    ASSERT_FALSE(read->refused);
    EXPECT_EQ(read->contents.root, "User\\S-1-5-21-0-0-0-1000");
    const WineKey* key = KeyAt(*read, "User\\S-1-5-21-0-0-0-1000\\Software\\A[1]\\\xC3\xA9");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->values.size(), 1u);
    EXPECT_EQ(KeyAt(*read, "User\\S-1-5-21-0-0-0-1000")->values.size(), 1u);
}

TEST(WineRegistryFile, SkipsBadLinesAsWineDoesAndNamesThem) {
    struct Case {
        const char* line;
        const char* message;
    };
    const Case cases[] = {
        {R"("v"="unterminated)", "no closing quote"},
        {R"("v"=dword:xyz)", "needs hexadecimal digits"},
        {R"("v"=dword:123456789)", "more than 8"},
        {R"("v" "w")", "expected \"=\""},
        {R"("v"=qword:1)", "unknown kind of data"},
        {R"("v"=hex:01,zz)", "expected a hexadecimal byte"},
        {R"("v"=hex:01 02)", "expected \",\""},
        {R"("v"="x" trailing)", "unexpected text"},
        {"garbage", "neither a key"},
        {"[Unclosed", "no closing \"]\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const auto read = ReadText(std::string(kHeader) + "[Key] 1\n\"before\"=\"1\"\n" + c.line +
                                   "\n[Next] 1\n\"after\"=\"2\"\n");
        ASSERT_FALSE(read->refused);
        ASSERT_EQ(read->contents.bad_lines.size(), 1u);
        EXPECT_EQ(read->contents.bad_lines[0].line, 6u);
        EXPECT_NE(read->contents.bad_lines[0].message.find(c.message), std::string::npos)
            << read->contents.bad_lines[0].message;
        ASSERT_NE(KeyAt(*read, "Machine\\Next"), nullptr);
        EXPECT_EQ(KeyAt(*read, "Machine\\Next")->values.size(), 1u);
    }
    // Values after a key line that could not be read belong to no key; their continued
    // lines go with them.
    const auto orphans =
        ReadText(std::string(kHeader) + "[Broken\n\"a\"=\"1\"\n\"b\"=hex:01,\\\n  02\n");
    EXPECT_EQ(orphans->contents.bad_lines.size(), 3u);
}

TEST(WineRegistryFile, RefusesWhatIsNotAWineRegistryFile) {
    for (const char* text :
         {"", "REGEDIT4\n[HKEY_CURRENT_USER\\x]\n", "Windows Registry Editor Version 5.00\n",
          "WINE REGISTRY Version 1\n"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(ReadText(text)->refused);
    }
}

TEST(WineRegistryFile, KeepsKeysAndValuesInWinesOrderWhateverTheFileOrder) {
    // Wine's server compares names lower-cased, so "_" and "[" sort before letters, unlike
    // Windows; a value set twice keeps its first spelling and its last data.
    const auto read =
        ReadText(std::string(kHeader) +
                 "[K\\\\b] 1\n[K\\\\A] 1\n[K\\\\_k] 1\n[K\\\\\\[k] 1\n[K\\\\aa] 1\n"
                 "[K] 1\n\"b\"=\"1\"\n\"_\"=\"2\"\n\"A\"=\"3\"\n\"a\"=\"4\"\n\"\"=\"5\"\n");
    const WineKey* key = KeyAt(*read, "Machine\\K");
    ASSERT_NE(key, nullptr);
    std::vector<std::string> keys;
    for (const WineKey* child : key->ordered) {
        keys.push_back(child->name);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"[k", "_k", "A", "aa", "b"}));
    std::string values;
    for (const WineValue& value : key->values) {
        values += value.name + "=" + reinterpret_cast<const char*>(value.data.data()) + " ";
    }
    EXPECT_EQ(values, "=5 _=2 A=4 b=1 ");
}

}  // namespace
}  // namespace regvex::wine
