#pragma once
// Reads registry export files ("REGEDIT4" and "Windows Registry Editor Version 5.00")
// into a MemoryRegistry.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "engine/memory_registry.h"
#include "text/ansi_code_page.h"

namespace regvex {

struct RegFileError {
    std::size_t line = 0;  // 1-based; 0 when the file itself could not be read
    std::string message;
};

// Applies the file's keys, values and deletions to `registry`. Nothing is applied when
// the file is malformed: the answer then names the offending line.
std::optional<RegFileError> ImportRegText(std::string_view bytes, MemoryRegistry& registry,
                                          const text::AnsiCodePage& ansi);
std::optional<RegFileError> ImportRegFile(const std::filesystem::path& file,
                                          MemoryRegistry& registry, const text::AnsiCodePage& ansi);

}  // namespace regvex
