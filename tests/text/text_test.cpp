#include <gtest/gtest.h>

#include <string>

#include "text/ansi_code_page.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::text {
namespace {

TEST(UpperCase, MapsTheCommonAlphabetsOneToOne) {
    const struct {
        const char* in;
        const char* out;
    } cases[] = {
        {"c:\\program files\\app.exe", "C:\\PROGRAM FILES\\APP.EXE"},
        {"\xC3\xA9t\xC3\xA9", "\xC3\x89T\xC3\x89"},                // été
        {"\xC3\xBF", "\xC5\xB8"},                                  // ÿ -> Ÿ
        {"\xC3\x9F", "\xC3\x9F"},                                  // sharp s stays
        {"\xC3\xB7", "\xC3\xB7"},                                  // division sign stays
        {"\xC5\xBE", "\xC5\xBD"},                                  // ž -> Ž
        {"\xCF\x82\xCE\xB1", "\xCE\xA3\xCE\x91"},                  // ςα -> ΣΑ
        {"\xD0\xBF\xD1\x80\xD0\xB8\xD1\x91\xD0\xBC",               // приём
         "\xD0\x9F\xD0\xA0\xD0\x98\xD0\x81\xD0\x9C"},              // ПРИЁМ
        {"\xC7\x86\xC7\x85", "\xC7\x84\xC7\x84"},                  // dž Dž -> DŽ DŽ
        {"\xEF\xBD\x81", "\xEF\xBC\xA1"},                          // full-width a
        {"\xE4\xB8\xAD\xE6\x96\x87", "\xE4\xB8\xAD\xE6\x96\x87"},  // 中文 unchanged
        {"bad \xFF byte", "BAD \xFF BYTE"},                        // malformed bytes kept
    };
    for (const auto& c : cases) {
        EXPECT_EQ(UpperCase(c.in), c.out) << c.in;
    }
}

TEST(UpperCase, MappingIsIdempotentAndReachesAsciiOnlyThroughTheListedLetters) {
    for (char32_t c = 0x80; c < 0x110000; ++c) {
        const char32_t upper = UpperCaseCodePoint(c);
        ASSERT_EQ(UpperCaseCodePoint(upper), upper) << static_cast<unsigned>(c);
        if (upper < 0x80) {
            ASSERT_NE(kAsciiImagesOfNonAscii.find(static_cast<char>(upper)), std::string::npos)
                << static_cast<unsigned>(c);
        }
    }
}

TEST(UpperCase, AnUpperNeedleIsFoundInAnyCase) {
    std::string scratch;
    const struct {
        const char* text;
        const char* needle;
        bool found;
    } cases[] = {
        {"\"c:\\app\\a.exe\" /s", "C:\\", true},
        {"rundll32 c:\\x.dll", "C:\\", true},
        {"d:\\app.exe", "C:\\", false},
        {"C:", "C:\\", false},
        {"", "C:\\", false},
        {"anything", "", true},
        {"\xC3\xA9t\xC3\xA9 c:\\x", "C:\\", true},
        {"caf\xC3\xA9", "CAF\xC3\x89", true},
        {"\xC4\xB1ni", "INI", true},                // dotless i upper-cases to I
        {"\xC5\xBF\xC3\xA9t", "S\xC3\x89T", true},  // long s to S
        {"\xC3\xA9\xC3\xA9", "\xC3\x89", true},
        {"\xC3\xA9 d:\\", "C:\\", false},
        {"d:c:e:\\C:\\", "C:\\", true},  // near misses before the match, match at the end
        {"x:\\", "C:\\", false},
        {"C:", "C:", true},
        {":C", "C:", false},
        {"abcABCab", "CAB", true},  // a needle of letters only
        {"abAB", "ABC", false},
        {"\\\\server", "\\\\SERVER", true},
        {"short", "LONGER NEEDLE", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(UpperNeedle(c.needle).FoundIn(c.text, scratch), c.found) << c.text;
    }
}

TEST(UpperCase, CompareUtf16OrderSortsAsWindowsSortsKeyNames) {
    EXPECT_LT(CompareUtf16Order("A", "B"), 0);
    EXPECT_LT(CompareUtf16Order("A", "AB"), 0);
    EXPECT_EQ(CompareUtf16Order("ABC", "ABC"), 0);
    EXPECT_LT(CompareUtf16Order("_", "a"), 0);
    // U+FF21 (BMP, above the surrogates) sorts after U+1F600 (a surrogate pair).
    EXPECT_GT(CompareUtf16Order("\xEF\xBC\xA1", "\xF0\x9F\x98\x80"), 0);
    EXPECT_LT(CompareUtf16Order("\xED\x9F\xBF", "\xF0\x9F\x98\x80"), 0);  // U+D7FF first
    // Malformed bytes read as U+FFFD, after U+07CF and U+00E9 that share their bytes.
    EXPECT_GT(CompareUtf16Order("\xDF", "\xDF\x8F"), 0);
    EXPECT_GT(CompareUtf16Order("\xC3\x41", "\xC3\xA9"), 0);  // U+FFFD A after U+00E9
    EXPECT_EQ(CompareUtf16Order("\xC3", "\xC4"), 0);
}

TEST(Utf8, RoundTripsThroughUtf16AndCountsUnits) {
    const std::string text = "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";  // a é 中 😀
    const std::u16string wide = Utf8ToUtf16(text);
    EXPECT_EQ(wide.size(), 5u);
    EXPECT_EQ(Utf16ToUtf8(wide), text);
    EXPECT_EQ(Utf16Length(text), 5u);
    EXPECT_EQ(LeftChars(text, 2), "a\xC3\xA9");
    EXPECT_EQ(LeftChars("ab", 5), "ab");
}

TEST(Utf8, ReverseTextKeepsCharactersWhole) {
    EXPECT_EQ(ReverseText(""), "");
    EXPECT_EQ(ReverseText("abc"), "cba");
    EXPECT_EQ(ReverseText("a\xC3\xA9\xE6\x97\xA5z"),
              "z\xE6\x97\xA5\xC3\xA9"
              "a");
}

TEST(Utf8, MalformedInputBecomesReplacementCharacters) {
    EXPECT_EQ(Utf8ToUtf16("\xFF"), std::u16string(1, u'\xFFFD'));
    EXPECT_EQ(Utf8ToUtf16("\xC3"), std::u16string(1, u'\xFFFD'));          // cut short
    EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), std::u16string(2, u'\xFFFD'));      // overlong
    EXPECT_EQ(Utf16ToUtf8(std::u16string(1, u'\xD800')), "\xEF\xBF\xBD");  // lone surrogate
}

TEST(Windows1252, ConvertsBothWaysAndReportsLoss) {
    const Windows1252CodePage cp;
    EXPECT_EQ(cp.ToUtf8("caf\xE9 \x80 \x81"), "caf\xC3\xA9 \xE2\x82\xAC \xC2\x81");

    std::string ansi;
    EXPECT_TRUE(cp.FromUtf8("caf\xC3\xA9 \xE2\x82\xAC \xC5\xB8", ansi));
    EXPECT_EQ(ansi, "caf\xE9 \x80 \x9F");

    EXPECT_FALSE(cp.FromUtf8("\xE4\xB8\xAD x", ansi));  // 中 has no ANSI form
    EXPECT_EQ(ansi, "? x");
}

}  // namespace
}  // namespace regvex::text
