#include "engine/memory_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "support/registry_dump.h"
#include "support/registry_fixtures.h"
#include "text/concat.h"
#include "text/upper_case.h"

namespace regvex {
namespace {

using testing::PutKey;
using testing::PutString;
using testing::PutValue;
using testing::SzBytes;

std::vector<std::string> SubkeysOf(Registry& registry, RootKeyHandle root, std::string_view path) {
    ScopedKey key;
    EXPECT_EQ(ScopedKey::Open(registry, root, path, reg::kKeyRead, key), reg::kSuccess);
    std::vector<std::string> names;
    std::string name;
    for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
        names.push_back(name);
    }
    return names;
}

TEST(MemoryRegistry, SubkeysEnumerateByUpperCasedNameValuesByCreation) {
    MemoryRegistry registry;
    for (const char* name : {"beta", "Alpha", "_under", "\xC3\xA9t\xC3\xA9", "zeta", "ALPHA\\x"}) {
        PutKey(registry, kHkeyCurrentUser, std::string("K\\") + name);
    }
    EXPECT_EQ(SubkeysOf(registry, kHkeyCurrentUser, "K"),
              (std::vector<std::string>{"Alpha", "beta", "zeta", "_under", "\xC3\xA9t\xC3\xA9"}));

    PutString(registry, kHkeyCurrentUser, "K", "z", "1");
    PutString(registry, kHkeyCurrentUser, "K", "a", "2");
    PutString(registry, kHkeyCurrentUser, "K", "Z", "3");  // the same value as "z"
    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "k", reg::kKeyRead, key), 0);
    ValueSlot slot;
    std::vector<std::string> values;
    for (std::uint32_t i = 0; registry.EnumValue(key.get(), i, slot) == reg::kSuccess; ++i) {
        values.push_back(slot.name + "=" +
                         std::string(slot.data.begin(), slot.data.begin() + slot.size - 1));
    }
    EXPECT_EQ(values, (std::vector<std::string>{"z=3", "a=2"}));
}

TEST(MemoryRegistry, AnswersWithTheResultCodesOfWindows) {
    MemoryRegistry registry;
    PutString(registry, kHkeyLocalMachine, "Soft\\Key", "v", "x");
    registry.DenyFullAccess(kHkeyLocalMachine, "Soft\\Key");

    KeyHandle key = 0;
    const struct {
        const char* name;
        RootKeyHandle root;
        const char* path;
        AccessMask access;
        RegStatus status;
    } opens[] = {
        {"present", kHkeyLocalMachine, "SOFT", reg::kKeyAllAccess, reg::kSuccess},
        {"trailing separator", kHkeyLocalMachine, "Soft\\", reg::kKeyRead, reg::kSuccess},
        {"the root itself", kHkeyUsers, "", reg::kKeyAllAccess, reg::kSuccess},
        {"missing", kHkeyLocalMachine, "Soft\\Nope", reg::kKeyRead, reg::kFileNotFound},
        {"empty name inside", kHkeyLocalMachine, "Soft\\\\Key", reg::kKeyRead, reg::kFileNotFound},
        {"no such root", kHkeyAll, "Soft", reg::kKeyRead, reg::kInvalidHandle},
        {"denied, full", kHkeyLocalMachine, "Soft\\Key", reg::kKeyAllAccess, reg::kAccessDenied},
        {"denied, full 64", kHkeyLocalMachine, "Soft\\Key", 0xF013F, reg::kAccessDenied},
        {"denied, read", kHkeyLocalMachine, "Soft\\Key", reg::kKeyRead | reg::kKeyWow64_64Key,
         reg::kSuccess},
    };
    for (const auto& c : opens) {
        EXPECT_EQ(registry.OpenKey(c.root, c.path, c.access, key), c.status) << c.name;
        if (key != 0) {
            registry.CloseKey(key);
        }
    }

    ASSERT_EQ(registry.OpenKey(kHkeyLocalMachine, "Soft", reg::kKeyRead, key), 0);
    std::string name;
    EXPECT_EQ(registry.EnumKey(key, 0, name), reg::kSuccess);  // "Key"
    EXPECT_EQ(registry.EnumKey(key, 1, name), reg::kNoMoreItems);
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    EXPECT_EQ(registry.QueryValue(key, "v", type, data), reg::kFileNotFound);
    EXPECT_EQ(registry.DeleteValue(key, "v"), reg::kFileNotFound);
    registry.CloseKey(key);
    EXPECT_EQ(registry.EnumKey(key, 0, name), reg::kInvalidHandle);
    EXPECT_EQ(registry.CloseKey(key), reg::kInvalidHandle);
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

TEST(MemoryRegistry, DataLimitIsTheScanBufferAndNamesCountUtf16Units) {
    MemoryRegistry registry;
    PutValue(registry, kHkeyCurrentUser, "K", "fits", reg::kBinary,
             std::vector<std::uint8_t>(4096, 1));
    PutValue(registry, kHkeyCurrentUser, "K", "over", reg::kBinary,
             std::vector<std::uint8_t>(4097, 1));
    // 130 characters outside the BMP are 260 UTF-16 units: too long.
    std::string wide_name;
    for (int i = 0; i < 130; ++i) {
        wide_name += "\xF0\x9F\x98\x80";
    }
    PutString(registry, kHkeyCurrentUser, "L", wide_name, "x");

    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "K", reg::kKeyRead, key), 0);
    ValueSlot slot;
    EXPECT_EQ(registry.EnumValue(key.get(), 0, slot), reg::kSuccess);
    EXPECT_EQ(slot.size, 4096u);
    EXPECT_EQ(registry.EnumValue(key.get(), 1, slot), reg::kMoreData);
    // The whole data is still there for anyone who asks with a larger buffer.
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    EXPECT_EQ(registry.QueryValue(key.get(), "OVER", type, data), reg::kSuccess);
    EXPECT_EQ(data.size(), 4097u);

    ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "L", reg::kKeyRead, key), 0);
    EXPECT_EQ(registry.EnumValue(key.get(), 0, slot), reg::kMoreData);
}

TEST(MemoryRegistry, TextDataIsMeasuredInTheAnsiCodePageTerminatorIncluded) {
    auto repeat = [](const std::string& piece, std::size_t count) {
        std::string out;
        for (std::size_t i = 0; i < count; ++i) {
            out += piece;
        }
        return out;
    };
    const std::string e_acute = "\xC3\xA9";    // one byte in Windows-1252
    const std::string zhong = "\xE4\xB8\xAD";  // "?" in Windows-1252: one byte
    const std::string euro = "\xE2\x82\xAC";   // three UTF-8 bytes for one ANSI byte
    const struct {
        std::uint32_t type;
        std::string text;  // stored with its terminator
        RegStatus expected;
    } cases[] = {
        {reg::kSz, std::string(4095, 'a'), reg::kSuccess},
        {reg::kSz, std::string(4096, 'a'), reg::kMoreData},
        {reg::kSz, repeat(e_acute, 3000), reg::kSuccess},
        {reg::kExpandSz, repeat(zhong, 3000), reg::kSuccess},
        {reg::kMultiSz, repeat(euro, 4095), reg::kSuccess},
        {reg::kMultiSz, repeat(euro, 4096), reg::kMoreData},
    };
    for (const auto& c : cases) {
        MemoryRegistry registry;
        PutValue(registry, kHkeyCurrentUser, "K", "v", c.type, SzBytes(c.text));
        ScopedKey key;
        ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "K", reg::kKeyRead, key), 0);
        ValueSlot slot;
        ASSERT_EQ(registry.EnumValue(key.get(), 0, slot), c.expected) << c.text.size();
        if (c.expected == reg::kSuccess) {
            EXPECT_EQ(std::string(reinterpret_cast<const char*>(slot.data.data()), slot.size),
                      c.text + '\0');
        }
    }
}

TEST(MemoryRegistry, CreateMakesParentsAndDeletingATreeInvalidatesItsHandles) {
    MemoryRegistry registry;
    ScopedKey deep;
    ASSERT_EQ(ScopedKey::Create(registry, kHkeyCurrentUser, "A\\B\\C", reg::kKeyAllAccess, deep),
              0);
    EXPECT_EQ(SubkeysOf(registry, kHkeyCurrentUser, "A\\B"), std::vector<std::string>{"C"});

    EXPECT_EQ(registry.DeleteKeyTree(kHkeyCurrentUser, "a"), reg::kSuccess);
    std::string name;
    EXPECT_EQ(registry.EnumKey(deep.get(), 0, name), reg::kKeyDeleted);
    EXPECT_EQ(registry.SetValue(deep.get(), "v", reg::kSz, SzBytes("x")), reg::kKeyDeleted);
    deep.Close();
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
    EXPECT_TRUE(SubkeysOf(registry, kHkeyCurrentUser, "").empty());
    EXPECT_EQ(registry.DeleteKeyTree(kHkeyCurrentUser, ""), reg::kAccessDenied);
    EXPECT_EQ(registry.DeleteKeyTree(kHkeyCurrentUser, "gone"), reg::kFileNotFound);
}

TEST(MemoryRegistry, OpensInAnyOrderReachTheRightKeys) {
    MemoryRegistry registry;
    for (const char* path : {"A", "A\\B", "A\\B\\C", "A\\BB", "AB", "AB\\C", "X\\Y\\Z", "X\\Y"}) {
        PutString(registry, kHkeyCurrentUser, path, "id", path);
    }
    PutString(registry, kHkeyLocalMachine, "A\\B", "id", "machine A\\B");
    const struct {
        RootKeyHandle root;
        const char* path;
        const char* id;  // null: not found
    } opens[] = {
        {kHkeyCurrentUser, "A\\B\\C", "A\\B\\C"},
        {kHkeyCurrentUser, "A\\B", "A\\B"},
        {kHkeyCurrentUser, "A\\BB", "A\\BB"},
        {kHkeyCurrentUser, "A\\B\\C", "A\\B\\C"},
        {kHkeyCurrentUser, "AB", "AB"},
        {kHkeyCurrentUser, "AB\\C", "AB\\C"},
        {kHkeyCurrentUser, "A", "A"},
        {kHkeyCurrentUser, "a\\b\\c", "A\\B\\C"},
        {kHkeyCurrentUser, "A\\b\\C", "A\\B\\C"},
        {kHkeyLocalMachine, "A\\B", "machine A\\B"},
        {kHkeyCurrentUser, "A\\B", "A\\B"},
        {kHkeyCurrentUser, "A\\B\\", "A\\B"},
        {kHkeyCurrentUser, "A\\B\\\\", nullptr},
        {kHkeyCurrentUser, "A\\\\B", nullptr},
        {kHkeyCurrentUser, "\\A", nullptr},
        {kHkeyCurrentUser, "X\\Y\\Z", "X\\Y\\Z"},
        {kHkeyCurrentUser, "X\\Q", nullptr},
        {kHkeyCurrentUser, "X\\Y", "X\\Y"},
    };
    for (const auto& o : opens) {
        ScopedKey key;
        const RegStatus status = ScopedKey::Open(registry, o.root, o.path, reg::kKeyRead, key);
        if (o.id == nullptr) {
            EXPECT_EQ(status, reg::kFileNotFound) << o.path;
            continue;
        }
        ASSERT_EQ(status, reg::kSuccess) << o.path;
        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        ASSERT_EQ(registry.QueryValue(key.get(), "id", type, data), reg::kSuccess) << o.path;
        EXPECT_EQ(std::string(data.begin(), data.end() - 1), o.id) << o.path;
    }

    ASSERT_EQ(registry.DeleteKeyTree(kHkeyCurrentUser, "X\\Y"), reg::kSuccess);
    ScopedKey gone;
    EXPECT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "X\\Y\\Z", reg::kKeyRead, gone),
              reg::kFileNotFound);
    EXPECT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "X", reg::kKeyRead, gone), 0);
}

using testing::DumpRegistry;

std::string Levels(std::size_t count) {
    std::string path = "d";
    for (std::size_t i = 1; i < count; ++i) {
        path += "\\d";
    }
    return path;
}

TEST(MemoryRegistry, RefusesNamesAndDepthsThatWindowsRefusesAndThenCreatesNothing) {
    std::string wide_name;  // 128 characters outside the BMP: 256 UTF-16 units
    for (int i = 0; i < 128; ++i) {
        wide_name += "\xF0\x9F\x98\x80";
    }
    const struct {
        std::string path;
        RegStatus status;
    } creates[] = {
        {text::Concat({"A\\", std::string(255, 'k')}), reg::kSuccess},
        {text::Concat({"B\\", std::string(256, 'k')}), reg::kInvalidParameter},
        {text::Concat({"C\\", wide_name}), reg::kInvalidParameter},
        {Levels(512), reg::kSuccess},
        {Levels(513), reg::kNoSystemResources},
        {text::Concat({"E\\", Levels(512)}), reg::kNoSystemResources},
        {text::Concat({"F\\", std::string(256, 'k'), "\\G"}), reg::kInvalidParameter},
        {"H\\\\I", reg::kFileNotFound},
    };
    MemoryRegistry registry;
    for (const auto& c : creates) {
        ScopedKey key;
        EXPECT_EQ(ScopedKey::Create(registry, kHkeyCurrentUser, c.path, reg::kKeyAllAccess, key),
                  c.status)
            << c.path.size();
    }
    EXPECT_EQ(SubkeysOf(registry, kHkeyCurrentUser, ""), (std::vector<std::string>{"A", "d"}));

    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, Levels(512), reg::kKeyAllAccess, key), 0);
    const std::vector<std::uint8_t> data{1};
    EXPECT_EQ(registry.SetValue(key.get(), std::string(16383, 'v'), reg::kBinary, data),
              reg::kSuccess);
    EXPECT_EQ(registry.SetValue(key.get(), std::string(16384, 'v'), reg::kBinary, data),
              reg::kInvalidParameter);
    key.Close();
    EXPECT_EQ(registry.DeleteKeyTree(kHkeyCurrentUser, "d"), reg::kSuccess);
}

TEST(MemoryRegistry, ManySubkeysAndValuesInAnyOrderAreFoundAndListedInOrder) {
    MemoryRegistry registry;
    const int kCount = 300;
    const auto scrambled = [&](int i) { return (i * 7919) % kCount; };
    for (int i = 0; i < kCount; ++i) {
        PutKey(registry, kHkeyCurrentUser, text::Concat({"P\\Key", std::to_string(scrambled(i))}));
        PutString(registry, kHkeyCurrentUser, "P",
                  text::Concat({"v", std::to_string(scrambled(i))}), "first");
    }
    std::vector<std::string> kept_keys;
    for (int i = 0; i < kCount; ++i) {
        const std::string name = std::to_string(i);
        if (i % 3 == 0) {
            EXPECT_EQ(registry.DeleteKeyTree(kHkeyCurrentUser, text::Concat({"p\\KEY", name})),
                      reg::kSuccess);
        } else {
            kept_keys.push_back(text::Concat({"Key", name}));
        }
    }
    // Plain ASCII names: ordered as their upper-cased bytes.
    std::sort(kept_keys.begin(), kept_keys.end(), [](const std::string& a, const std::string& b) {
        return text::UpperCase(a) < text::UpperCase(b);
    });
    EXPECT_EQ(SubkeysOf(registry, kHkeyCurrentUser, "P"), kept_keys);

    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "P", reg::kKeyAllAccess, key), 0);
    const std::vector<std::uint8_t> second{'2', 0};
    std::vector<std::string> expected_values;
    for (int i = 0; i < kCount; ++i) {
        const std::string name = text::Concat({"v", std::to_string(scrambled(i))});
        if (scrambled(i) % 4 == 0) {
            EXPECT_EQ(registry.DeleteValue(key.get(), text::Concat({"V", name.substr(1)})),
                      reg::kSuccess);
        } else {
            EXPECT_EQ(
                registry.SetValue(key.get(), text::Concat({"V", name.substr(1)}), reg::kSz, second),
                0);
            expected_values.push_back(text::Concat({name, "=2"}));
        }
    }
    ASSERT_EQ(registry.SetValue(key.get(), "v0", reg::kSz, second), reg::kSuccess);
    expected_values.push_back("v0=2");  // deleted and set again: now the newest
    std::vector<std::string> values;
    ValueSlot slot;
    for (std::uint32_t i = 0; registry.EnumValue(key.get(), i, slot) == reg::kSuccess; ++i) {
        values.push_back(slot.name + "=" + std::string(1, static_cast<char>(slot.data[0])));
    }
    EXPECT_EQ(values, expected_values);
}

// Changes of every kind, to keys that were there before and to keys made on the way.
void ChangeEverything(MemoryRegistry& registry) {
    const auto set = [&](RootKeyHandle root, const char* path, const char* name, const char* text) {
        PutString(registry, root, path, name, text);
    };
    const auto remove_value = [&](const char* path, const char* name) {
        ScopedKey key;
        ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, path, reg::kKeyAllAccess, key), 0);
        ASSERT_EQ(registry.DeleteValue(key.get(), name), reg::kSuccess);
    };
    const auto remove_key = [&](RootKeyHandle root, const char* path) {
        ASSERT_EQ(registry.DeleteKeyTree(root, path), reg::kSuccess) << path;
    };
    set(kHkeyCurrentUser, "Big", "v03", "changed");
    remove_value("Big", "V07");
    remove_value("Big", "v10");
    set(kHkeyCurrentUser, "Big", "v07", "back, last");
    set(kHkeyCurrentUser, "Big", "new", "1");
    remove_key(kHkeyCurrentUser, "Big\\k05");
    remove_key(kHkeyCurrentUser, "big\\K19");
    PutKey(registry, kHkeyCurrentUser, "Big\\k05");
    set(kHkeyCurrentUser, "Big\\a new\\below\\it", "n", "1");
    remove_key(kHkeyCurrentUser, "Big\\a new\\below");
    set(kHkeyCurrentUser, "Big\\k02", "n", "1");
    remove_key(kHkeyCurrentUser, "Big\\k02");
    remove_key(kHkeyLocalMachine, "Old");
    set(kHkeyLocalMachine, "Old\\Deep", "x", "2");
    PutKey(registry, kHkeyUsers, "Fresh\\Root");
    remove_key(kHkeyUsers, "Fresh");
    PutKey(registry, kHkeyUsers, "Fresh\\Again");
}

TEST(MemoryRegistry, AnUndoScopeTakesBackEveryChangeUnlessKept) {
    const auto build = [](MemoryRegistry& registry) {
        for (int i = 0; i < 20; ++i) {
            const std::string number = text::Concat({i < 10 ? "0" : "", std::to_string(i)});
            PutString(registry, kHkeyCurrentUser, text::Concat({"Big\\k", number}), "v", number);
            PutString(registry, kHkeyCurrentUser, "Big", text::Concat({"v", number}), number);
        }
        PutString(registry, kHkeyLocalMachine, "Old\\Deep\\Er", "x", "1");
    };
    MemoryRegistry plain;
    build(plain);
    const std::string before = DumpRegistry(plain);
    ChangeEverything(plain);
    const std::string after = DumpRegistry(plain);
    ASSERT_NE(after, before);

    // Listing the keys puts them in order again, so the undone registry is also changed
    // before anything lists it.
    for (const bool list_first : {true, false}) {
        MemoryRegistry registry;
        build(registry);
        ScopedKey open_before;
        ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "Big", reg::kKeyRead, open_before),
                  0);
        {
            MemoryRegistry::UndoScope undo(registry);
            ChangeEverything(registry);
            EXPECT_EQ(DumpRegistry(registry), after);
        }
        if (list_first) {
            EXPECT_EQ(DumpRegistry(registry), before);
            std::string name;
            EXPECT_EQ(registry.EnumKey(open_before.get(), 0, name), reg::kSuccess);
        }
        // What the undoing restored takes the same changes again.
        ChangeEverything(registry);
        EXPECT_EQ(DumpRegistry(registry), after);
    }

    MemoryRegistry kept;
    build(kept);
    {
        MemoryRegistry::UndoScope undo(kept);
        ChangeEverything(kept);
        undo.Keep();
    }
    EXPECT_EQ(DumpRegistry(kept), after);
}

}  // namespace
}  // namespace regvex
