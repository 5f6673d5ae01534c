// The ignore file on any bytes: loaded as the program loads it, written back as "Apply
// Changes" writes it, and matched as the scan matches it.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ignore/ignore_list.h"
#include "scan/finding_verdict.h"
#include "text/upper_case.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace regvex;
    static const text::Windows1252CodePage ansi;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> entries = ignore::LoadIgnoreEntries(bytes, ansi);
    for (const std::string& entry : entries) {
        // Entries are held upper-case, and a line never holds a line end.
        if (text::UpperCase(entry) != entry || entry.find('\r') != std::string::npos) {
            __builtin_trap();
        }
    }
    // The file written holds exactly the entries, one a line.
    const std::string written = ignore::IgnoreFileBytes(entries, ansi);
    if (ignore::SplitIgnoreLines(written).size() != entries.size()) {
        __builtin_trap();
    }
    ignore::LoadIgnoreEntries(written, ansi);
    scan::IsIgnored(entries, "C:\\PROGRAM FILES\\APP\\APP.EXE", "SOFTWARE\\VENDOR\\APP\\VALUE");
    return 0;
}
