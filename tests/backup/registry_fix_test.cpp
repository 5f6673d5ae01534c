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

TEST(RegistryFix, APathWithoutABackslashIsARunTimeError) {
    MemoryRegistry registry;
    PutString(registry, kHkeyCurrentUser, "", "Top", "C:\\x.exe");
    EXPECT_THROW(DeleteRegistryValuePath(registry, kHkeyCurrentUser, "Top", reg::kKeyAllAccess),
                 RunTimeError);
}

}  // namespace
}  // namespace regvex::backup
