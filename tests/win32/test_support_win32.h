#pragma once
// What the tests under Wine share: a registry key and a folder of their own, made fresh
// for each test and removed with everything in them afterwards, so that runs in the same
// prefix never see each other's leftovers.

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"

namespace regvex::testing {

// Unique within the prefix: several test programs may share one.
inline std::string UniqueName(const std::string& prefix) {
    static unsigned counter = 0;
    return prefix + "-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(GetTickCount64()) + "-" + std::to_string(++counter);
}

inline std::vector<std::uint8_t> Bytes(const std::string& text) {
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

// The bytes that a wide text occupies in the registry.
inline std::string WideBytes(const std::wstring& wide) {
    return std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t));
}

class UniqueHkey {
  public:
    UniqueHkey() = default;
    ~UniqueHkey() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }
    UniqueHkey(const UniqueHkey&) = delete;
    UniqueHkey& operator=(const UniqueHkey&) = delete;

    HKEY get() const { return key_; }
    HKEY* put() { return &key_; }

  private:
    HKEY key_ = nullptr;
};

// HKEY_CURRENT_USER\Software\RegvexlorTest-..., deleted with its tree at the end.
class TestKey {
  public:
    TestKey() : path_("Software\\" + UniqueName("RegvexlorTest")) {
        UniqueHkey key;
        const LSTATUS status =
            RegCreateKeyExW(HKEY_CURRENT_USER, text::ToWide(path_).c_str(), 0, nullptr,
                            REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
        EXPECT_EQ(status, ERROR_SUCCESS) << path_;
    }
    ~TestKey() {
        const std::wstring wide = text::ToWide(path_);
        RegDeleteTreeW(HKEY_CURRENT_USER, wide.c_str());
        RegDeleteKeyW(HKEY_CURRENT_USER, wide.c_str());
    }
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;

    // Below HKEY_CURRENT_USER, without a trailing backslash.
    const std::string& path() const { return path_; }
    std::string Below(const std::string& subkey) const { return path_ + "\\" + subkey; }

  private:
    std::string path_;
};

// A fresh folder in the temporary folder. Files and folders made through it go again
// at the end, the newest first.
class TempFolder {
  public:
    TempFolder() {
        wchar_t temp[MAX_PATH + 1] = {};
        const DWORD length = GetTempPathW(MAX_PATH + 1, temp);
        path_ = text::FromWide(std::wstring_view(temp, length)) + UniqueName("RegvexlorScan");
        EXPECT_TRUE(CreateDirectoryW(text::ToWide(path_).c_str(), nullptr)) << path_;
    }
    ~TempFolder() {
        for (auto it = made_.rbegin(); it != made_.rend(); ++it) {
            const std::wstring wide = text::ToWide(it->path);
            if (it->folder) {
                RemoveDirectoryW(wide.c_str());
            } else {
                DeleteFileW(wide.c_str());
            }
        }
        RemoveDirectoryW(text::ToWide(path_).c_str());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // Without a trailing backslash.
    const std::string& path() const { return path_; }

    std::string MakeFolder(const std::string& name) {
        const std::string full = path_ + "\\" + name;
        EXPECT_TRUE(CreateDirectoryW(text::ToWide(full).c_str(), nullptr)) << full;
        made_.push_back({full, true});
        return full;
    }

    // `name` may lie in a folder made before.
    std::string MakeFile(const std::string& name) {
        const std::string full = path_ + "\\" + name;
        const handles::UniqueHandle file(CreateFileW(text::ToWide(full).c_str(), GENERIC_WRITE, 0,
                                                     nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                                     nullptr));
        EXPECT_TRUE(file) << full;
        made_.push_back({full, false});
        return full;
    }

  private:
    struct Made {
        std::string path;
        bool folder;
    };
    std::string path_;
    std::vector<Made> made_;
};

}  // namespace regvex::testing
