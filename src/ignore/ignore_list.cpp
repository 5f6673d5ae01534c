#include "ignore/ignore_list.h"

#include <set>

#include "text/upper_case.h"

namespace regvex::ignore {

namespace {

class EntryVector {
  public:
    explicit EntryVector(std::vector<std::string>& items) : items_(items) {}
    int ItemCount() const { return static_cast<int>(items_.size()); }
    const std::string& Item(int index) const { return items_[static_cast<std::size_t>(index)]; }
    void RemoveItem(int index) { items_.erase(items_.begin() + index); }

  private:
    std::vector<std::string>& items_;
};

}  // namespace

std::string IgnoreFilePath(std::string_view program_folder) {
    std::string path(program_folder);
    path += kIgnoreFileName;
    return path;
}

std::vector<std::string> SplitIgnoreLines(std::string_view bytes) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < bytes.size()) {
        const std::size_t cr = bytes.find('\r', start);
        if (cr == std::string_view::npos) {
            lines.emplace_back(bytes.substr(start));
            break;
        }
        lines.emplace_back(bytes.substr(start, cr - start));
        start = cr + 1;
        if (start < bytes.size() && bytes[start] == '\n') {
            ++start;
        }
    }
    return lines;
}

std::vector<std::string> ReadIgnoreLines(std::string_view file_bytes,
                                         const text::AnsiCodePage& code_page) {
    // Split before converting: CR and LF never occur inside a character of any ANSI code
    // page, double-byte ones included.
    std::vector<std::string> lines = SplitIgnoreLines(file_bytes);
    for (std::string& line : lines) {
        line = text::UpperCase(code_page.ToUtf8(line));
    }
    return lines;
}

std::vector<std::string> WithoutDuplicateEntries(std::span<const std::string> items) {
    std::vector<std::string> kept;
    std::set<std::string> keys;
    for (const std::string& item : items) {
        if (keys.insert(text::UpperCase(item)).second) {
            kept.push_back(item);
        }
    }
    return kept;
}

std::vector<std::string> LoadIgnoreEntries(std::string_view file_bytes,
                                           const text::AnsiCodePage& code_page) {
    std::vector<std::string> entries = ReadIgnoreLines(file_bytes, code_page);
    if (entries.size() > 1) {
        entries = WithoutDuplicateEntries(entries);
    }
    EntryVector list(entries);
    RemoveEmptyEntries(list);
    return entries;
}

std::string IgnoreFileBytes(std::span<const std::string> entries,
                            const text::AnsiCodePage& code_page) {
    std::string bytes;
    std::string line;
    for (const std::string& entry : entries) {
        code_page.FromUtf8(entry, line);
        bytes += line;
        bytes += "\r\n";
    }
    return bytes;
}

}  // namespace regvex::ignore
