#pragma once
// A registry, or one key and all below it, written as the Registry Editor's Unicode
// export ("Windows Registry Editor Version 5.00", UTF-16LE with a byte-order mark, CR LF
// line ends): every key in enumeration order, each with its values in enumeration order
// and their exact types and bytes. Strings that the quoted form carries exactly are
// quoted, DWORDs of four bytes are written as dword:, everything else as hex(N): bytes.
// It is what a technician keeps before touching a disk, and how whole registries are
// compared.

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"

namespace regvex::backup {

struct ExportCount {
    std::size_t keys = 0;
    std::size_t values = 0;
    // Values the registry could not give whole, keys it could not open or list, and
    // names holding a NUL, which no export file can carry (with all below such a key).
    std::size_t values_missed = 0;
    std::size_t keys_missed = 0;
};

// Writes the header line and a blank line.
void WriteExportHeader(std::ostream& out);

// Writes `root`\`path` (path "" for the whole root) and everything below it. A root
// without keys or values writes nothing.
ExportCount WriteExportTree(Registry& registry, RootKeyHandle root, std::string_view path,
                            std::ostream& out);

struct ExportValue {
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;  // as the registry gives it: text as UTF-8
    // Its place among its key's values, kept in a comment line before it (the Registry
    // Editor skips comments) so that a restore can put it back there.
    std::optional<std::size_t> position;
};

// The comment that keeps a value's place: this prefix and the place as a decimal.
inline constexpr std::string_view kPositionComment = ";regvexlor position ";

// Writes the key line of `root`\`path`, the given values of that key and a blank line.
void WriteExportKey(std::ostream& out, RootKeyHandle root, std::string_view path,
                    const std::vector<ExportValue>& values);

}  // namespace regvex::backup
