#include "engine/win32_registry_win32.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "text/ansi_code_page_win32.h"
#include "text/wide_text_win32.h"

namespace regvex {

namespace {

// The predefined handles are negative 32-bit numbers that the system sign-extends on
// 64-bit Windows; only its own macros spell them right on both.
HKEY PredefinedKey(RootKeyHandle root) {
    switch (root) {
        case kHkeyClassesRoot:
            return HKEY_CLASSES_ROOT;
        case kHkeyCurrentUser:
            return HKEY_CURRENT_USER;
        case kHkeyLocalMachine:
            return HKEY_LOCAL_MACHINE;
        case kHkeyUsers:
            return HKEY_USERS;
        case kHkeyPerformanceData:
            return HKEY_PERFORMANCE_DATA;
        case kHkeyCurrentConfig:
            return HKEY_CURRENT_CONFIG;
        case kHkeyDynData:
            return HKEY_DYN_DATA;
        default:
            return nullptr;
    }
}

HKEY ToHkey(KeyHandle key) {
    return reinterpret_cast<HKEY>(key);
}

KeyHandle ToKeyHandle(HKEY key) {
    return reinterpret_cast<KeyHandle>(key);
}

RegStatus Status(LSTATUS status) {
    return static_cast<RegStatus>(status);
}

// Text data as UTF-16 bytes to UTF-8 bytes. A stray odd byte at the end is no part of any
// character and is dropped.
std::string WideBytesToUtf8(const wchar_t* data, std::size_t bytes) {
    return text::FromWide(std::wstring_view(data, bytes / sizeof(wchar_t)));
}

std::wstring Utf8BytesToWide(std::span<const std::uint8_t> data) {
    return text::ToWide(std::string_view(reinterpret_cast<const char*>(data.data()), data.size()));
}

// A 64-bit program sees the 64-bit registry already, so asking for that view changes
// nothing on Windows; Wine, though, answers every such request below HKEY_CLASSES_ROOT
// by opening a fresh copy of that root, which it never closes. A 32-bit program needs
// the flag to reach the 64-bit registry and keeps it.
REGSAM EffectiveAccess(AccessMask access) {
    if constexpr (sizeof(void*) == 8) {
        access &= ~static_cast<AccessMask>(KEY_WOW64_64KEY);
    }
    return static_cast<REGSAM>(access);
}

}  // namespace

Win32Registry::~Win32Registry() {
    if (parked_) {
        RegCloseKey(ToHkey(parked_->handle));
    }
}

RegStatus Win32Registry::OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                 KeyHandle& key) {
    key = 0;
    if (parked_ && parked_->root == root && parked_->access == access && parked_->path == path) {
        key = parked_->handle;
        opened_.push_back(std::move(*parked_));
        parked_.reset();
        return reg::kSuccess;
    }
    const HKEY parent = PredefinedKey(root);
    if (parent == nullptr) {
        return reg::kInvalidHandle;
    }
    HKEY opened = nullptr;
    const LSTATUS status =
        RegOpenKeyExW(parent, text::ToWide(path).c_str(), 0, EffectiveAccess(access), &opened);
    if (status != ERROR_SUCCESS) {
        return Status(status);
    }
    key = ToKeyHandle(opened);
    opened_.push_back(OpenedKey{key, root, std::string(path), access});
    return reg::kSuccess;
}

RegStatus Win32Registry::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                   KeyHandle& key) {
    key = 0;
    ForgetCounts();
    const HKEY parent = PredefinedKey(root);
    if (parent == nullptr) {
        return reg::kInvalidHandle;
    }
    HKEY opened = nullptr;
    const LSTATUS status =
        RegCreateKeyExW(parent, text::ToWide(path).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        EffectiveAccess(access), nullptr, &opened, nullptr);
    if (status != ERROR_SUCCESS) {
        return Status(status);
    }
    key = ToKeyHandle(opened);
    return reg::kSuccess;
}

bool Win32Registry::KnownToBePastTheEnd(KeyHandle key, std::uint32_t index, bool of_values) {
    auto it = std::find_if(opened_.rbegin(), opened_.rend(),
                           [key](const OpenedKey& opened) { return opened.handle == key; });
    if (it == opened_.rend()) {
        return false;
    }
    if (it->counts == OpenedKey::Counts::kNotAsked) {
        DWORD subkeys = 0;
        DWORD values = 0;
        const LSTATUS status =
            RegQueryInfoKeyW(ToHkey(key), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                             &values, nullptr, nullptr, nullptr, nullptr);
        it->counts =
            status == ERROR_SUCCESS ? OpenedKey::Counts::kKnown : OpenedKey::Counts::kUnavailable;
        it->subkeys = subkeys;
        it->values = values;
    }
    return it->counts == OpenedKey::Counts::kKnown &&
           index >= (of_values ? it->values : it->subkeys);
}

void Win32Registry::ForgetCounts() {
    for (OpenedKey& opened : opened_) {
        opened.counts = OpenedKey::Counts::kNotAsked;
    }
    if (parked_) {
        parked_->counts = OpenedKey::Counts::kNotAsked;
    }
}

RegStatus Win32Registry::CloseKey(KeyHandle key) {
    if (key == 0) {
        return reg::kInvalidHandle;
    }
    for (auto it = opened_.rbegin(); it != opened_.rend(); ++it) {
        if (it->handle == key) {
            if (parked_) {
                RegCloseKey(ToHkey(parked_->handle));
            }
            parked_ = std::move(*it);
            opened_.erase(std::next(it).base());
            return reg::kSuccess;
        }
    }
    return Status(RegCloseKey(ToHkey(key)));
}

RegStatus Win32Registry::EnumKey(KeyHandle key, std::uint32_t index, std::string& name) {
    if (key == 0) {
        return reg::kInvalidHandle;
    }
    if (KnownToBePastTheEnd(key, index, false)) {
        return reg::kNoMoreItems;
    }
    DWORD length = static_cast<DWORD>(name_buffer_.size());
    const LSTATUS status = RegEnumKeyExW(ToHkey(key), index, name_buffer_.data(), &length, nullptr,
                                         nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) {
        return Status(status);
    }
    name = text::FromWide(std::wstring_view(name_buffer_.data(), length));
    return reg::kSuccess;
}

RegStatus Win32Registry::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    if (key == 0) {
        return reg::kInvalidHandle;
    }
    if (KnownToBePastTheEnd(key, index, true)) {
        return reg::kNoMoreItems;
    }
    DWORD name_length = static_cast<DWORD>(name_buffer_.size());
    DWORD type = REG_NONE;
    DWORD size = static_cast<DWORD>(sizeof(data_buffer_));
    const LSTATUS status =
        RegEnumValueW(ToHkey(key), index, name_buffer_.data(), &name_length, nullptr, &type,
                      reinterpret_cast<BYTE*>(data_buffer_.data()), &size);
    if (status != ERROR_SUCCESS) {
        return Status(status);
    }
    if (reg::IsTextType(type)) {
        const std::wstring_view wide(data_buffer_.data(), size / sizeof(wchar_t));
        if (text::SystemAnsiCodePage::AnsiLength(wide) > reg::kDataBufferBytes) {
            return reg::kMoreData;
        }
        const std::string utf8 = text::FromWide(wide);
        if (utf8.size() > value.data.size()) {
            return reg::kMoreData;
        }
        std::memcpy(value.data.data(), utf8.data(), utf8.size());
        value.size = static_cast<std::uint32_t>(utf8.size());
    } else {
        if (size > reg::kDataBufferBytes) {
            return reg::kMoreData;
        }
        std::memcpy(value.data.data(), data_buffer_.data(), size);
        value.size = static_cast<std::uint32_t>(size);
    }
    value.name = text::FromWide(std::wstring_view(name_buffer_.data(), name_length));
    value.type = static_cast<std::uint32_t>(type);
    return reg::kSuccess;
}

RegStatus Win32Registry::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                    std::vector<std::uint8_t>& data) {
    if (key == 0) {
        return reg::kInvalidHandle;
    }
    const std::wstring wide_name = text::ToWide(name);
    DWORD value_type = REG_NONE;
    DWORD size = 0;
    LSTATUS status =
        RegQueryValueExW(ToHkey(key), wide_name.c_str(), nullptr, &value_type, nullptr, &size);
    if (status != ERROR_SUCCESS) {
        return Status(status);
    }
    // Whole wide units keep the buffer aligned for the text types; the value can also
    // grow between asking for its size and reading it, so the read is asked again then.
    std::vector<wchar_t> buffer;
    do {
        buffer.assign(size / sizeof(wchar_t) + 1, L'\0');
        size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
        status = RegQueryValueExW(ToHkey(key), wide_name.c_str(), nullptr, &value_type,
                                  reinterpret_cast<BYTE*>(buffer.data()), &size);
    } while (status == ERROR_MORE_DATA);
    if (status != ERROR_SUCCESS) {
        return Status(status);
    }
    type = static_cast<std::uint32_t>(value_type);
    if (reg::IsTextType(value_type)) {
        const std::string utf8 = WideBytesToUtf8(buffer.data(), size);
        data.assign(utf8.begin(), utf8.end());
    } else {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(buffer.data());
        data.assign(bytes, bytes + size);
    }
    return reg::kSuccess;
}

RegStatus Win32Registry::SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                                  std::span<const std::uint8_t> data) {
    if (key == 0) {
        return reg::kInvalidHandle;
    }
    ForgetCounts();
    const std::wstring wide_name = text::ToWide(name);
    if (reg::IsTextType(type)) {
        const std::wstring wide = Utf8BytesToWide(data);
        return Status(RegSetValueExW(ToHkey(key), wide_name.c_str(), 0, type,
                                     reinterpret_cast<const BYTE*>(wide.data()),
                                     static_cast<DWORD>(wide.size() * sizeof(wchar_t))));
    }
    return Status(RegSetValueExW(ToHkey(key), wide_name.c_str(), 0, type, data.data(),
                                 static_cast<DWORD>(data.size())));
}

RegStatus Win32Registry::DeleteValue(KeyHandle key, std::string_view name) {
    if (key == 0) {
        return reg::kInvalidHandle;
    }
    ForgetCounts();
    return Status(RegDeleteValueW(ToHkey(key), text::ToWide(name).c_str()));
}

}  // namespace regvex

namespace regvex {

namespace {

// ntdll's NtQueryKey and what it answers for KeyNameInformation. ntdll has no import
// library in every toolchain, and the call is not part of the documented registry API, so
// it is looked up at run time; without it, keys cannot be named.
using NtQueryKeyCall = LONG(WINAPI*)(HANDLE key, int information_class, void* information,
                                     ULONG length, ULONG* result_length);
constexpr int kKeyNameInformation = 3;
constexpr LONG kStatusBufferOverflow = static_cast<LONG>(0x80000005);
constexpr LONG kStatusBufferTooSmall = static_cast<LONG>(0xC0000023);

NtQueryKeyCall FindNtQueryKey() {
    // ntdll is mapped into every process for its whole life; this handle is not owned.
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    if (ntdll == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<NtQueryKeyCall>(
        reinterpret_cast<void*>(GetProcAddress(ntdll, "NtQueryKey")));
}

}  // namespace

bool Win32Registry::StoredKeyName(KeyHandle key, std::string& name) {
    static const NtQueryKeyCall query = FindNtQueryKey();
    if (query == nullptr || key == 0) {
        return false;
    }
    if (key_name_buffer_.size() < 1024) {
        key_name_buffer_.resize(1024);
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        ULONG needed = 0;
        const LONG status = query(ToHkey(key), kKeyNameInformation, key_name_buffer_.data(),
                                  static_cast<ULONG>(key_name_buffer_.size()), &needed);
        if ((status == kStatusBufferOverflow || status == kStatusBufferTooSmall) &&
            needed > key_name_buffer_.size()) {
            key_name_buffer_.resize(needed);
            continue;
        }
        if (status < 0 || needed < sizeof(ULONG)) {
            return false;
        }
        // KEY_NAME_INFORMATION: the name's length in bytes, then the name in UTF-16.
        ULONG bytes = 0;
        std::memcpy(&bytes, key_name_buffer_.data(), sizeof bytes);
        if (bytes > key_name_buffer_.size() - sizeof bytes) {
            return false;
        }
        std::wstring wide(bytes / sizeof(wchar_t), L'\0');
        std::memcpy(wide.data(), key_name_buffer_.data() + sizeof bytes,
                    wide.size() * sizeof(wchar_t));
        name = text::FromWide(wide);
        return true;
    }
    return false;
}

}  // namespace regvex
