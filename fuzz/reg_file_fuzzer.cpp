// The export-file reader on any bytes, then the program's scan over what it read: a file
// is either refused with a message, or gives a registry that the scan walks to its end.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "backup/reg_file_reader.h"
#include "engine/memory_registry.h"
#include "engine/path_exists.h"
#include "engine/reg_search.h"
#include "scan/finding_verdict.h"

namespace {

using namespace regvex;

// Answers that depend on the path alone, so that a finding can go either way.
class HalfTheFiles final : public FileExistence {
  public:
    int Check(const std::string& path) override { return path.size() % 2 == 0 ? 1 : 0; }
};

// The scan's own handler: every match goes through the verdict, as in the program.
class VerdictEvents final : public SearchEvents {
  public:
    explicit VerdictEvents(const scan::FindingRules& rules) : rules_(rules) {}
    void SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                     FoundKind lFound) override {
        if (sRootKey.empty() || scan::FindingStatus(lFound).empty()) {
            __builtin_trap();
        }
        scan::IsListedFinding(rules_, sKey, sValue);
    }
    void SearchFinished(FinishReason lReason) override { reason = lReason; }

    std::optional<FinishReason> reason;

  private:
    const scan::FindingRules& rules_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const text::Windows1252CodePage ansi;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    MemoryRegistry registry(ansi);
    if (const auto error = backup::ImportRegText(bytes, registry, ansi)) {
        // A refusal says why, at a line the file has.
        if (error->message.empty() || error->line < 1 || error->line > size + 1) {
            __builtin_trap();
        }
        return 0;
    }

    HalfTheFiles files;
    const std::string ignore_entries[] = {"IGNORED", "SOFTWARE\\KEPT"};
    const scan::FindingRules rules{"C:\\", &files, scan::FixedIgnoreEntries(ignore_entries), false};
    QuietSearchHost host;
    VerdictEvents events(rules);
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    search.RootKey(kHkeyAll);
    search.SubKey("");
    search.SearchFlags(search_flags::kValueNames | search_flags::kValueData);
    search.SearchString("C:\\");
    search.DoSearch();
    // Nothing in a registry held in memory can end the walk early or keep a key open.
    if (events.reason != FinishReason::kFinished || registry.OpenHandleCount() != 0) {
        __builtin_trap();
    }
    return 0;
}
