#pragma once
// Reading one registry value as text, the way the About box finds System Information.

#include <cstddef>
#include <string>
#include <string_view>

#include "engine/registry.h"

namespace regvex::ui::about {

// What one read can hold. Text counts in UTF-16 code units, as Windows counts characters;
// every other type counts in bytes. A value that does not fit is not read at all.
inline constexpr std::size_t kKeyValueBufferChars = 1024;

// Opens KeyName below KeyRoot with `access` (the program's all-access mask) and reads the
// value SubKeyRef. False, with KeyVal emptied, when the key cannot be opened or the value
// cannot be read.
//
// REG_SZ gives its text, less one terminating NUL. REG_DWORD appends the hexadecimal form
// of each byte, last byte first and each without leading zeros, to KeyVal and then reads
// the whole as one hexadecimal number: the bytes 10 00 00 00 give "16", but 01 02 00 00
// give "33", not "513". That reading is how the value has always been taken and is kept.
// Every other type leaves KeyVal as it was and still answers true.
//
// Throws RunTimeError (13, type mismatch) when the digits do not make a hexadecimal number
// and (6, overflow) when it does not fit in 32 bits; KeyVal is then left as it was.
bool GetKeyValue(Registry& registry, AccessMask access, RootKeyHandle KeyRoot,
                 std::string_view KeyName, std::string_view SubKeyRef, std::string& KeyVal);

}  // namespace regvex::ui::about
