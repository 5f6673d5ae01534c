#pragma once
// Reads registry export files ("REGEDIT4" and "Windows Registry Editor Version 5.00")
// into a MemoryRegistry. A file is read and applied line by line, so that neither time
// nor memory grows faster than the file; see reg_file_lines.h for the encodings read.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "engine/memory_registry.h"
#include "text/ansi_code_page.h"

namespace regvex::backup {

struct RegFileError {
    std::size_t line = 0;  // 1-based; 0 when the file itself could not be read
    std::string message;
};

// Applies the file's keys, values and deletions to `registry`. Nothing is applied when
// the file is malformed: the answer then names the offending line.
std::optional<RegFileError> ImportRegText(std::string_view bytes, MemoryRegistry& registry,
                                          const text::AnsiCodePage& ansi);
// The same for a file, which may also be a pipe or a device; a folder is refused.
std::optional<RegFileError> ImportRegFile(const std::filesystem::path& file,
                                          MemoryRegistry& registry, const text::AnsiCodePage& ansi);

}  // namespace regvex::backup
