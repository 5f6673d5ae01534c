#include "system/system_version.h"

#include <gtest/gtest.h>

namespace regvex::system {
namespace {

class FakeSystem final : public SystemInfo {
  public:
    FakeSystem(OsVersion version, std::uint16_t architecture)
        : version_(version), architecture_(architecture) {}
    OsVersion Version() override { return version_; }
    std::uint16_t NativeProcessorArchitecture() override {
        ++architecture_asked;
        return architecture_;
    }
    int architecture_asked = 0;

  private:
    OsVersion version_;
    std::uint16_t architecture_;
};

TEST(SystemVersion, VersionTestComparesTextSoTenLooksOlderThanXP) {
    const struct {
        OsVersion version;
        std::uint16_t architecture;
        bool xp_or_later;
        bool is_64;
        bool architecture_asked;
    } cases[] = {
        {{5, 0}, 9, false, false, false},
        {{5, 1}, 0, true, false, true},  // x86
        {{5, 2}, 9, true, true, true},
        {{6, 1}, 9, true, true, true},
        {{6, 1}, 6, true, true, true},    // Itanium
        {{6, 1}, 12, true, false, true},  // ARM64 is not among the 64-bit answers
        {{10, 0}, 9, false, false, false},
        {{5, 10}, 9, true, true, true},  // "5.10" starts with "5.1" and is longer
    };
    for (const auto& c : cases) {
        FakeSystem system(c.version, c.architecture);
        const std::string text = VersionText(c.version);
        EXPECT_EQ(IsWindowsXPOrLater(system), c.xp_or_later) << text;
        system.architecture_asked = 0;
        EXPECT_EQ(Is64BitWindows(system), c.is_64) << text;
        EXPECT_EQ(system.architecture_asked != 0, c.architecture_asked) << text;
    }
}

TEST(SystemVersion, SixtyFourBitMasksAskForTheSixtyFourBitView) {
    const KeyMasks narrow = KeyMasksFor(false);
    EXPECT_EQ(narrow.KeyQueryMask, 1u);
    EXPECT_EQ(narrow.KeySetMask, 2u);
    EXPECT_EQ(narrow.KeyAccessMask, 0xF003Fu);
    const KeyMasks wide = KeyMasksFor(true);
    EXPECT_EQ(wide.KeyQueryMask, 257u);
    EXPECT_EQ(wide.KeySetMask, 258u);
    EXPECT_EQ(wide.KeyAccessMask, 0xF013Fu);
}

}  // namespace
}  // namespace regvex::system
