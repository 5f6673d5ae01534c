#pragma once
// The ignore file and the rules that turn it into the list of entries: the same for the
// editor window, which keeps the list in its list box, and for the command line, which
// keeps it in a vector.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/ansi_code_page.h"

namespace regvex::ignore {

// Appended as it stands to the program folder, which never ends in a backslash.
inline constexpr std::string_view kIgnoreFileName = "\\Ignore.txt";

std::string IgnoreFilePath(std::string_view program_folder);

// The lines of the file as line-by-line reading sees them: a line ends at CR or at
// CR LF, and a lone LF is part of the line. A last line without an end still counts;
// an empty file has no lines.
std::vector<std::string> SplitIgnoreLines(std::string_view bytes);

// Every line of the file, in UTF-8 and upper-cased, in file order.
std::vector<std::string> ReadIgnoreLines(std::string_view file_bytes,
                                         const text::AnsiCodePage& code_page);

// The items kept when each is added to a collection keyed by itself, where keys compare
// without regard to case: the first of each group of equal items, in their order.
std::vector<std::string> WithoutDuplicateEntries(std::span<const std::string> items);

// The sweep over empty entries, kept as the program has always run it: the last item is
// never looked at, and the item after a removed one is skipped. Once a removal carries
// the index past the end there is nothing left to look at and the sweep ends. `List`
// has ItemCount(), Item(i) and RemoveItem(i).
template <typename List>
void RemoveEmptyEntries(List& list) {
    if (list.ItemCount() == 0) {
        return;
    }
    int i = 0;
    while (i != list.ItemCount() - 1) {
        if (i >= list.ItemCount()) {
            return;
        }
        if (list.Item(i).empty()) {
            list.RemoveItem(i);
            i = i + 1;
        }
        i = i + 1;
    }
}

// The whole load: lines, duplicates (only when there are two or more), empty entries.
std::vector<std::string> LoadIgnoreEntries(std::string_view file_bytes,
                                           const text::AnsiCodePage& code_page);

// The file as "Apply Changes" writes it: every entry followed by CR LF, in the ANSI code
// page (a character it lacks becomes '?').
std::string IgnoreFileBytes(std::span<const std::string> entries,
                            const text::AnsiCodePage& code_page);

}  // namespace regvex::ignore
