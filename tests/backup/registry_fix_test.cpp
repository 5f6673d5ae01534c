#include "backup/registry_fix.h"

#include <gtest/gtest.h>

#include "engine/run_time_error.h"
#include "support/registry_fixtures.h"

namespace regvex::backup {
namespace {

using testing::PutString;

bool HasValue(MemoryRegistry& registry, RootKeyHandle root, std::string_view path,
              std::string_view name) {
    ScopedKey key;
    if (ScopedKey::Open(registry, root, path, reg::kKeyQueryValue, key) != reg::kSuccess) {
        return false;
    }
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    return registry.QueryValue(key.get(), name, type, data) == reg::kSuccess;
}

bool HasKey(MemoryRegistry& registry, RootKeyHandle root, std::string_view path) {
    ScopedKey key;
    return ScopedKey::Open(registry, root, path, reg::kKeyQueryValue, key) == reg::kSuccess;
}

TEST(RegistryFix, DeletesTheNamedValueOrTheDefaultValueAndNothingElse) {
    MemoryRegistry registry;
    PutString(registry, kHkeyCurrentUser, "Software\\Foo", "Bar", "C:\\bar.exe");
    PutString(registry, kHkeyCurrentUser, "Software\\Foo", "", "C:\\default.exe");
    PutString(registry, kHkeyCurrentUser, "Software\\Foo", "Keep", "C:\\keep.exe");

    DeleteRegistryValuePath(registry, kHkeyCurrentUser, "Software\\Foo\\Bar", reg::kKeyAllAccess);
    EXPECT_FALSE(HasValue(registry, kHkeyCurrentUser, "Software\\Foo", "Bar"));
    EXPECT_TRUE(HasValue(registry, kHkeyCurrentUser, "Software\\Foo", ""));

    DeleteRegistryValuePath(registry, kHkeyCurrentUser, "Software\\Foo\\", reg::kKeyAllAccess);
    EXPECT_FALSE(HasValue(registry, kHkeyCurrentUser, "Software\\Foo", ""));
    EXPECT_TRUE(HasValue(registry, kHkeyCurrentUser, "Software\\Foo", "Keep"));
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

TEST(RegistryFix, AVanishedKeyComesBackEmptyAndAnUnknownRootChangesNothing) {
    MemoryRegistry registry;
    DeleteRegistryValuePath(registry, kHkeyLocalMachine, "Software\\Gone\\Sub\\Value",
                            reg::kKeyAllAccess);
    EXPECT_TRUE(HasKey(registry, kHkeyLocalMachine, "Software\\Gone\\Sub"));

    EXPECT_NO_THROW(
        DeleteRegistryValuePath(registry, RootKeyFromName("HKEY_ALL"), "A\\b", reg::kKeyAllAccess));
    EXPECT_NO_THROW(DeleteRegistryValuePath(registry, RootKeyFromName("HKEY_NOWHERE"), "A\\b",
                                            reg::kKeyAllAccess));
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

TEST(RegistryFix, ADeletionThatMustNotCreateTheKeySaysWhyItWasRefused) {
    MemoryRegistry registry;
    PutString(registry, kHkeyCurrentUser, "Software\\Foo", "Bar", "C:\\bar.exe");
    PutString(registry, kHkeyLocalMachine, "Software\\Locked", "Bar", "C:\\bar.exe");
    PutString(registry, kHkeyLocalMachine, "Software\\Guarded", "Bar", "C:\\bar.exe");
    registry.DenyFullAccess(kHkeyLocalMachine, "Software\\Locked");
    registry.DenyValueDeletion(kHkeyLocalMachine, "Software\\Guarded");
    const struct {
        RootKeyHandle root;
        std::string path;
        std::string refused;  // empty: deleted
    } cases[] = {
        {kHkeyCurrentUser, "Software\\Foo\\Bar", ""},
        {kHkeyCurrentUser, "Software\\Foo\\Bar", "already gone"},
        {kHkeyCurrentUser, "Software\\Gone\\Bar", "key missing"},
        {kHkeyLocalMachine, "Software\\Locked\\Bar", "access denied"},
        {kHkeyLocalMachine, "Software\\Guarded\\Bar", "access denied"},
        {RootKeyFromName("HKEY_ALL"), "A\\b", "error 6"},
    };
    for (const auto& c : cases) {
        const ValueDeletion deletion =
            DeleteExistingValuePath(registry, c.root, c.path, reg::kKeyAllAccess);
        EXPECT_EQ(deletion.Deleted(), c.refused.empty()) << c.path;
        if (!deletion.Deleted()) {
            EXPECT_EQ(RefusalReason(deletion), c.refused) << c.path;
        }
    }
    EXPECT_FALSE(HasKey(registry, kHkeyCurrentUser, "Software\\Gone"));
    EXPECT_TRUE(HasValue(registry, kHkeyLocalMachine, "Software\\Locked", "Bar"));
    EXPECT_TRUE(HasValue(registry, kHkeyLocalMachine, "Software\\Guarded", "Bar"));
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

TEST(RegistryFix, APathWithoutABackslashIsARunTimeError) {
    MemoryRegistry registry;
    PutString(registry, kHkeyCurrentUser, "", "Top", "C:\\x.exe");
    EXPECT_THROW(DeleteRegistryValuePath(registry, kHkeyCurrentUser, "Top", reg::kKeyAllAccess),
                 RunTimeError);
}

}  // namespace
}  // namespace regvex::backup
