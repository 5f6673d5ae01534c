#pragma once
// The parsing half of the registry export reader: turns a whole file into the list of
// changes it asks for, without touching any registry, so that a malformed file can be
// refused before anything is applied.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "backup/reg_file_reader.h"
#include "engine/root_keys.h"
#include "text/ansi_code_page.h"

namespace regvex {

struct RegFileChange {
    enum class Kind { kOpenKey, kDeleteKey, kSetValue, kDeleteValue };

    Kind kind = Kind::kOpenKey;
    std::size_t line = 0;  // where the change was written, for errors while applying it
    // Keys.
    RootKeyHandle root = kHkeyAll;
    std::string path;
    // Values; they belong to the key of the last kOpenKey before them.
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
};

using RegFileParse = std::variant<std::vector<RegFileChange>, RegFileError>;

// May throw std::bad_alloc; every fault of the input itself is answered as RegFileError.
RegFileParse ParseRegText(std::string_view bytes, const text::AnsiCodePage& ansi);

}  // namespace regvex
