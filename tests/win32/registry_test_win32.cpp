// Win32Registry against Wine's registry. Besides what the engine sees, several tests read
// the stored bytes back through the W API directly: a backend that wrote UTF-8 and read
// it back unchanged would otherwise pass every round trip.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/win32_registry_win32.h"
#include "win32/test_support_win32.h"

namespace regvex {
namespace {

using namespace std::string_literals;
using testing::Bytes;
using testing::TestKey;
using testing::UniqueHkey;
using testing::WideBytes;

class Win32RegistryTest : public ::testing::Test {
  protected:
    ScopedKey Create(const std::string& subkey) {
        ScopedKey key;
        EXPECT_EQ(ScopedKey::Create(registry_, kHkeyCurrentUser, test_key_.Below(subkey),
                                    reg::kKeyAllAccess, key),
                  reg::kSuccess)
            << subkey;
        return key;
    }

    void Set(const ScopedKey& key, const std::string& name, std::uint32_t type,
             const std::string& data) {
        EXPECT_EQ(registry_.SetValue(key.get(), name, type, Bytes(data)), reg::kSuccess) << name;
    }

    std::string SlotData(const ValueSlot& slot) const {
        return std::string(reinterpret_cast<const char*>(slot.data.data()), slot.size);
    }

    // The stored bytes, read past Win32Registry.
    static std::string RawData(const ScopedKey& key, const std::wstring& name) {
        std::vector<BYTE> data(64 * 1024);
        DWORD size = static_cast<DWORD>(data.size());
        const LSTATUS status = RegQueryValueExW(reinterpret_cast<HKEY>(key.get()), name.c_str(),
                                                nullptr, nullptr, data.data(), &size);
        EXPECT_EQ(status, ERROR_SUCCESS);
        return std::string(reinterpret_cast<const char*>(data.data()), size);
    }

    TestKey test_key_;
    Win32Registry registry_;
};

TEST_F(Win32RegistryTest, RootsReachTheirOwnPredefinedKeys) {
    // Each row names a key that exists in one root only, so a swapped or mis-extended root
    // handle shows as a wrong status.
    const TestKey& own = test_key_;
    const struct {
        RootKeyHandle root;
        std::string path;
        RegStatus expected;
    } cases[] = {
        {kHkeyCurrentUser, own.path(), reg::kSuccess},
        {kHkeyLocalMachine, own.path(), reg::kFileNotFound},
        {kHkeyLocalMachine, "System\\CurrentControlSet", reg::kSuccess},
        {kHkeyCurrentUser, "System\\CurrentControlSet", reg::kFileNotFound},
        {kHkeyUsers, ".Default", reg::kSuccess},
        {kHkeyCurrentUser, ".Default", reg::kFileNotFound},
        {kHkeyClassesRoot, "CLSID", reg::kSuccess},
        {kHkeyLocalMachine, "CLSID", reg::kFileNotFound},
        {kHkeyCurrentConfig, "System", reg::kSuccess},
        {kHkeyCurrentUser, "", reg::kSuccess},
        {kHkeyAll, "", reg::kInvalidHandle},
        {kHkeyAll, "Software", reg::kInvalidHandle},
        {0x80000007, "", reg::kInvalidHandle},
        {0x7FFFFFFF, "", reg::kInvalidHandle},
        {1, "Software", reg::kInvalidHandle},
    };
    for (const auto& c : cases) {
        ScopedKey key;
        EXPECT_EQ(ScopedKey::Open(registry_, c.root, c.path, reg::kKeyRead, key), c.expected)
            << std::hex << c.root << " " << c.path;
        EXPECT_EQ(static_cast<bool>(key), c.expected == reg::kSuccess) << c.path;
    }
}

TEST_F(Win32RegistryTest, ARootOpensAsThePredefinedHandleItself) {
    // Opening a predefined key's own path hands back that very handle. Wine reads only the
    // low 32 bits of a predefined handle, so this is where a handle that was not
    // sign-extended on 64-bit Windows shows under Wine.
    const struct {
        RootKeyHandle root;
        HKEY predefined;
    } cases[] = {
        {kHkeyClassesRoot, HKEY_CLASSES_ROOT},     {kHkeyCurrentUser, HKEY_CURRENT_USER},
        {kHkeyLocalMachine, HKEY_LOCAL_MACHINE},   {kHkeyUsers, HKEY_USERS},
        {kHkeyCurrentConfig, HKEY_CURRENT_CONFIG},
    };
    for (const auto& c : cases) {
        ScopedKey key;
        ASSERT_EQ(ScopedKey::Open(registry_, c.root, "", reg::kKeyRead, key), reg::kSuccess)
            << std::hex << c.root;
        EXPECT_EQ(key.get(), reinterpret_cast<KeyHandle>(c.predefined)) << std::hex << c.root;
    }
}

TEST_F(Win32RegistryTest, CreateKeyMakesMissingParentsAndOpensExistingKeys) {
    ScopedKey deep = Create("one\\two\\three");
    Set(deep, "kept", reg::kDword, "\x01\x02\x03\x04"s);
    deep.Close();

    for (const char* path : {"one", "one\\two", "ONE\\Two\\three", "one\\two\\three\\"}) {
        ScopedKey key;
        EXPECT_EQ(
            ScopedKey::Open(registry_, kHkeyCurrentUser, test_key_.Below(path), reg::kKeyRead, key),
            reg::kSuccess)
            << path;
    }
    // Creating an existing key opens it as it is.
    ScopedKey again = Create("one\\two\\three");
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    ASSERT_EQ(registry_.QueryValue(again.get(), "kept", type, data), reg::kSuccess);
    EXPECT_EQ(type, reg::kDword);
    EXPECT_EQ(data, Bytes("\x01\x02\x03\x04"s));

    ScopedKey missing;
    EXPECT_EQ(ScopedKey::Open(registry_, kHkeyCurrentUser, test_key_.Below("one\\nothing"),
                              reg::kKeyRead, missing),
              reg::kFileNotFound);
    EXPECT_FALSE(missing);
}

TEST_F(Win32RegistryTest, SubkeysEnumerateInTheRegistrysOrderThenAnswerNoMoreItems) {
    for (const char* name : {"b", "A", "c", "Cl\xC3\xA9-\xE4\xB8\xAD-\xF0\x9F\x98\x80"}) {
        Create(std::string("parent\\") + name);
    }
    ScopedKey parent = Create("parent");
    std::vector<std::string> names;
    std::string name;
    std::uint32_t index = 0;
    RegStatus status = reg::kSuccess;
    while ((status = registry_.EnumKey(parent.get(), index, name)) == reg::kSuccess) {
        names.push_back(name);
        ++index;
    }
    EXPECT_EQ(status, reg::kNoMoreItems);
    // Wine, like Windows, sorts subkeys without regard to case.
    const std::vector<std::string> expected{"A", "b", "c",
                                            "Cl\xC3\xA9-\xE4\xB8\xAD-\xF0\x9F\x98\x80"};
    EXPECT_EQ(names, expected);
    EXPECT_EQ(registry_.EnumKey(parent.get(), 100, name), reg::kNoMoreItems);

    // The non-ASCII name was stored as its UTF-16 form, not as UTF-8 bytes.
    UniqueHkey raw;
    const std::wstring wide_path =
        text::ToWide(test_key_.Below("parent\\")) + L"Cl\u00E9-\u4E2D-\U0001F600";
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, wide_path.c_str(), 0, KEY_READ, raw.put()),
              ERROR_SUCCESS);
}

TEST_F(Win32RegistryTest, ValuesComeBackAsStoredWithTextInUtf8) {
    // Wine keeps values sorted by name (Windows keeps them in creation order), so the
    // names are chosen to sort in the order they are created. Every text is terminated:
    // Wine adds a terminator to an unterminated one when the memory after it holds one.
    const struct {
        std::string name;
        std::uint32_t type;
        std::string data;  // as the engine sees it
        std::wstring name_w;
        std::string stored;  // as the registry holds it
    } cases[] = {
        {"a-sz", reg::kSz, "hello\0"s, L"a-sz", WideBytes(L"hello\0"s)},
        {"b-multi", reg::kMultiSz, "one\0two\0\0"s, L"b-multi", WideBytes(L"one\0two\0\0"s)},
        {"c-expand", reg::kExpandSz, "%TEMP%\\x.exe\0"s, L"c-expand",
         WideBytes(L"%TEMP%\\x.exe\0"s)},
        {"d-unicode", reg::kSz, "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80\0"s, L"d-unicode",
         WideBytes(L"\u00E9\u4E2D\U0001F600\0"s)},
        {"f-empty-sz", reg::kSz, "", L"f-empty-sz", ""},
        {"g-dword", reg::kDword, "\x78\x56\x34\x12", L"g-dword", "\x78\x56\x34\x12"},
        {"h-qword", reg::kQword, "\x01\x02\x03\x04\x05\x06\x07\x08", L"h-qword",
         "\x01\x02\x03\x04\x05\x06\x07\x08"},
        {"i-binary", reg::kBinary, "\x00\xFF\x10"s, L"i-binary", "\x00\xFF\x10"s},
        {"j-none", reg::kNone, "", L"j-none", ""},
        {"k-\xC3\xA9\xE4\xB8\xAD", reg::kSz, "x\0"s, L"k-\u00E9\u4E2D", WideBytes(L"x\0"s)},
    };
    ScopedKey key = Create("values");
    for (const auto& c : cases) {
        Set(key, c.name, c.type, c.data);
    }

    ValueSlot slot;
    std::uint32_t index = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(registry_.EnumValue(key.get(), index++, slot), reg::kSuccess);
        EXPECT_EQ(slot.name, c.name);
        EXPECT_EQ(slot.type, c.type);
        EXPECT_EQ(SlotData(slot), c.data);
        EXPECT_EQ(RawData(key, c.name_w), c.stored);

        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        ASSERT_EQ(registry_.QueryValue(key.get(), c.name, type, data), reg::kSuccess);
        EXPECT_EQ(type, c.type);
        EXPECT_EQ(data, Bytes(c.data));
    }
    EXPECT_EQ(registry_.EnumValue(key.get(), index, slot), reg::kNoMoreItems);
}

TEST_F(Win32RegistryTest, AnOddTrailingByteOfTextIsDropped) {
    ScopedKey key = Create("odd");
    const std::string stored = WideBytes(L"ab") + "c";
    ASSERT_EQ(RegSetValueExW(reinterpret_cast<HKEY>(key.get()), L"odd", 0, REG_SZ,
                             reinterpret_cast<const BYTE*>(stored.data()),
                             static_cast<DWORD>(stored.size())),
              ERROR_SUCCESS);
    ValueSlot slot;
    ASSERT_EQ(registry_.EnumValue(key.get(), 0, slot), reg::kSuccess);
    EXPECT_EQ(SlotData(slot), "ab");
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    ASSERT_EQ(registry_.QueryValue(key.get(), "odd", type, data), reg::kSuccess);
    EXPECT_EQ(data, Bytes("ab"));
}

TEST_F(Win32RegistryTest, TextBeyondTheScanBufferAnswersMoreDataMeasuredInTheAnsiCodePage) {
    const std::string e_acute = "\xC3\xA9";    // one byte in Windows-1252
    const std::string zhong = "\xE4\xB8\xAD";  // "?" in Windows-1252, one byte
    auto repeat = [](const std::string& piece, std::size_t count) {
        std::string out;
        for (std::size_t i = 0; i < count; ++i) {
            out += piece;
        }
        return out;
    };
    const struct {
        const char* label;
        std::uint32_t type;
        std::string data;
        RegStatus expected;
    } cases[] = {
        {"binary 4096", reg::kBinary, std::string(4096, '\x5A'), reg::kSuccess},
        {"binary 4097", reg::kBinary, std::string(4097, '\x5A'), reg::kMoreData},
        {"binary 5000", reg::kBinary, std::string(5000, '\x5A'), reg::kMoreData},
        {"4095 ascii", reg::kSz, std::string(4095, 'a') + '\0', reg::kSuccess},
        {"4096 ascii", reg::kSz, std::string(4096, 'a') + '\0', reg::kMoreData},
        {"3000 e-acute", reg::kSz, repeat(e_acute, 3000) + '\0', reg::kSuccess},
        {"4095 e-acute", reg::kSz, repeat(e_acute, 4095) + '\0', reg::kSuccess},
        {"4096 e-acute", reg::kSz, repeat(e_acute, 4096) + '\0', reg::kMoreData},
        {"3000 zhong", reg::kExpandSz, repeat(zhong, 3000) + '\0', reg::kSuccess},
        {"4096 zhong", reg::kExpandSz, repeat(zhong, 4096) + '\0', reg::kMoreData},
        {"multi 4096", reg::kMultiSz, std::string(4094, 'm') + "\0\0"s, reg::kSuccess},
        {"multi 4097", reg::kMultiSz, std::string(4095, 'm') + "\0\0"s, reg::kMoreData},
    };
    int row = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        // A key each, so that the value is index 0 whatever the sort order.
        ScopedKey key = Create("size" + std::to_string(row++));
        Set(key, "v", c.type, c.data);
        ValueSlot slot;
        ASSERT_EQ(registry_.EnumValue(key.get(), 0, slot), c.expected);
        if (c.expected == reg::kSuccess) {
            EXPECT_EQ(slot.size, c.data.size());
            EXPECT_EQ(SlotData(slot), c.data);
        }
        // Reading one value is not bound by the scan's buffer.
        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        ASSERT_EQ(registry_.QueryValue(key.get(), "v", type, data), reg::kSuccess);
        EXPECT_EQ(data, Bytes(c.data));
    }
}

TEST_F(Win32RegistryTest, AValueNameBeyondTheNameBufferAnswersMoreData) {
    const struct {
        std::size_t length;
        RegStatus expected;
    } cases[] = {{259, reg::kSuccess}, {260, reg::kMoreData}, {1000, reg::kMoreData}};
    for (const auto& c : cases) {
        ScopedKey key = Create("name" + std::to_string(c.length));
        const std::string name(c.length, 'n');
        Set(key, name, reg::kDword, "\x01\x00\x00\x00"s);
        ValueSlot slot;
        EXPECT_EQ(registry_.EnumValue(key.get(), 0, slot), c.expected) << c.length;
        if (c.expected == reg::kSuccess) {
            EXPECT_EQ(slot.name, name);
        }
    }
}

TEST_F(Win32RegistryTest, DeleteValueRemovesTheDefaultValueToo) {
    ScopedKey key = Create("delete");
    Set(key, "", reg::kSz, "default\0"s);
    Set(key, "named", reg::kSz, "named\0"s);

    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    ASSERT_EQ(registry_.QueryValue(key.get(), "", type, data), reg::kSuccess);
    EXPECT_EQ(data, Bytes("default\0"s));

    EXPECT_EQ(registry_.DeleteValue(key.get(), ""), reg::kSuccess);
    EXPECT_EQ(registry_.QueryValue(key.get(), "", type, data), reg::kFileNotFound);
    EXPECT_EQ(registry_.DeleteValue(key.get(), ""), reg::kFileNotFound);
    EXPECT_EQ(registry_.QueryValue(key.get(), "NAMED", type, data), reg::kSuccess);
    EXPECT_EQ(registry_.QueryValue(key.get(), "missing", type, data), reg::kFileNotFound);
}

TEST_F(Win32RegistryTest, OtherFailuresPassThroughAndNoHandleIsNotAKey) {
    Create("readonly");
    ScopedKey read_only;
    ASSERT_EQ(ScopedKey::Open(registry_, kHkeyCurrentUser, test_key_.Below("readonly"),
                              reg::kKeyRead, read_only),
              reg::kSuccess);
    EXPECT_EQ(registry_.SetValue(read_only.get(), "v", reg::kDword, Bytes("\0\0\0\0"s)),
              reg::kAccessDenied);

    std::string name;
    ValueSlot slot;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    EXPECT_EQ(registry_.EnumKey(0, 0, name), reg::kInvalidHandle);
    EXPECT_EQ(registry_.EnumValue(0, 0, slot), reg::kInvalidHandle);
    EXPECT_EQ(registry_.QueryValue(0, "", type, data), reg::kInvalidHandle);
    EXPECT_EQ(registry_.SetValue(0, "", reg::kSz, {}), reg::kInvalidHandle);
    EXPECT_EQ(registry_.DeleteValue(0, ""), reg::kInvalidHandle);
    EXPECT_EQ(registry_.CloseKey(0), reg::kInvalidHandle);
}

}  // namespace
}  // namespace regvex

namespace regvex {
namespace {

class ReopeningTest : public Win32RegistryTest {
  protected:
    // The value names of a key opened the way the scan opens keys.
    std::vector<std::string> ValuesOf(const std::string& path, KeyHandle* handle = nullptr) {
        ScopedKey key;
        EXPECT_EQ(ScopedKey::Open(registry_, kHkeyCurrentUser, path, reg::kKeyAllAccess, key),
                  reg::kSuccess);
        if (handle != nullptr) {
            *handle = key.get();
        }
        std::vector<std::string> names;
        ValueSlot slot;
        for (std::uint32_t i = 0; registry_.EnumValue(key.get(), i, slot) == reg::kSuccess; ++i) {
            names.push_back(slot.name);
        }
        return names;
    }
};

TEST_F(ReopeningTest, TheKeyClosedLastComesBackAndSeesChangesMadeThroughTheRegistry) {
    ScopedKey writer = Create("k");
    Set(writer, "a", reg::kSz, std::string("1", 2));
    const std::string path = test_key_.Below("k");
    KeyHandle first = 0;
    KeyHandle again = 0;
    EXPECT_EQ(ValuesOf(path, &first), std::vector<std::string>{"a"});

    Set(writer, "b", reg::kSz, std::string("2", 2));
    EXPECT_EQ(ValuesOf(path, &again), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(again, first);

    // Another key, or the same key with other rights, is opened afresh.
    Create("other");
    KeyHandle other = 0;
    ValuesOf(test_key_.Below("other"), &other);
    EXPECT_NE(other, first);
    ScopedKey read_only;
    ASSERT_EQ(ScopedKey::Open(registry_, kHkeyCurrentUser, test_key_.Below("other"), reg::kKeyRead,
                              read_only),
              reg::kSuccess);
    EXPECT_NE(read_only.get(), other);
}

TEST_F(ReopeningTest, CountsEndEnumerationsWhereTheRegistryWould) {
    ScopedKey parent = Create("p");
    for (const char* name : {"x", "y", "z"}) {
        Create(std::string("p\\") + name);
        Set(parent, name, reg::kDword, std::string(4, '\0'));
    }
    ScopedKey key;
    ASSERT_EQ(
        ScopedKey::Open(registry_, kHkeyCurrentUser, test_key_.Below("p"), reg::kKeyAllAccess, key),
        reg::kSuccess);
    ValueSlot slot;
    std::string name;
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(registry_.EnumValue(key.get(), i, slot), reg::kSuccess) << i;
        EXPECT_EQ(registry_.EnumKey(key.get(), i, name), reg::kSuccess) << i;
    }
    EXPECT_EQ(registry_.EnumValue(key.get(), 3, slot), reg::kNoMoreItems);
    EXPECT_EQ(registry_.EnumKey(key.get(), 3, name), reg::kNoMoreItems);
}

}  // namespace
}  // namespace regvex
