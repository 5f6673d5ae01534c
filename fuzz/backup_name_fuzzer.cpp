// The backup catalogue's reading of file names, for any names: the date text taken back
// out of one name, and the listing of a folder whose file names are the input's lines,
// with their order checked against the UTF-16 code units of every pair of neighbours.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backup/backup_catalogue.h"
#include "backup/backup_file.h"
#include "engine/run_time_error.h"
#include "system/file_system.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace {

using namespace regvex;

// A folder that holds the given names, each file as long as its name.
class NamedFiles final : public system::FileSystem {
  public:
    explicit NamedFiles(std::vector<std::string> names) : names_(std::move(names)) {}
    bool Exists(const std::string&) override { return true; }
    bool CreateFolder(const std::string&) override { return true; }
    std::vector<std::string> FileNames(const std::string&) override { return names_; }
    std::optional<std::uint64_t> FileSize(const std::string& path) override { return path.size(); }
    bool WriteFile(const std::string&, std::string_view) override { return false; }
    std::optional<std::string> ReadFile(const std::string&) override { return std::nullopt; }
    bool RemoveFile(const std::string&) override { return false; }

  private:
    std::vector<std::string> names_;
};

std::vector<std::string> Lines(std::string_view bytes) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start <= bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        lines.emplace_back(bytes.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    try {
        backup::BackupDateText(bytes);
    } catch (const RunTimeError&) {
        // A name too short to be a backup's.
    }
    // A date text of its own "-" and "." comes back as it was written.
    if (bytes.find_first_of("-.") == std::string_view::npos &&
        backup::BackupDateText(backup::BackupFileName(bytes)) != bytes) {
        __builtin_trap();
    }

    // Names are listed in the order of their UTF-16 code units, whatever their bytes.
    const std::vector<std::string> lines = Lines(bytes);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const int order = text::CompareUtf16Order(lines[i - 1], lines[i]);
        const int units = text::Utf8ToUtf16(lines[i - 1]).compare(text::Utf8ToUtf16(lines[i]));
        if ((order < 0) != (units < 0) || (order == 0) != (units == 0)) {
            __builtin_trap();
        }
    }

    NamedFiles folder(lines);
    const std::vector<std::string> names = backup::BackupFileNames(folder, "F");
    for (std::size_t i = 1; i < names.size(); ++i) {
        const int order = text::Utf8ToUtf16(text::UpperCase(names[i - 1]))
                              .compare(text::Utf8ToUtf16(text::UpperCase(names[i])));
        if (order > 0 || (order == 0 && names[i - 1] > names[i])) {
            __builtin_trap();
        }
    }
    std::vector<backup::BackupEntry> entries;
    try {
        backup::ListBackups(folder, "F", entries);
    } catch (const RunTimeError&) {
        // A name that gives no date text ends the listing.
    }
    return 0;
}
