#include "scan/finding_verdict.h"

#include <array>

#include "engine/file_reference.h"
#include "text/upper_case.h"

namespace regvex::scan {

namespace {

constexpr std::array<std::string_view, 22> kKnownExtensions{
    ".EXE", ".DLL", ".OCX", ".OCA", ".SYS", ".VXD", ".AX",  ".COM", ".CPL", ".TLB", ".SCR",
    ".BAT", ".DRV", ".MSI", ".ZIP", ".RAR", ".HLP", ".LNK", ".JPG", ".BMP", ".PDF", ".TXT"};

}  // namespace

std::string FindingStatus(FoundKind lFound) {
    switch (lFound) {
        case FoundKind::kKeyName:
        case FoundKind::kValueName:
        case FoundKind::kValueData:
            return std::string(kInvalidEntry);
    }
    return {};
}

bool HasKnownFileExtension(std::string_view path) {
    for (const std::string_view extension : kKnownExtensions) {
        if (path.ends_with(extension)) {
            return true;
        }
    }
    return false;
}

const std::string* FindIgnoreEntry(std::span<const std::string> ignore_entries,
                                   std::string_view path, std::string_view key) {
    if (ignore_entries.empty()) {
        return nullptr;
    }
    // Only the path and key are upper-cased: an entry with lower-case letters matches
    // nothing. Entries are stored upper-cased, so in practice the match ignores case.
    const std::string upper_path = text::UpperCase(path);
    const std::string upper_key = text::UpperCase(key);
    for (const std::string& entry : ignore_entries) {
        if (upper_path.find(entry) != std::string::npos ||
            upper_key.find(entry) != std::string::npos) {
            return &entry;
        }
    }
    return nullptr;
}

bool IsIgnored(std::span<const std::string> ignore_entries, std::string_view path,
               std::string_view key) {
    return FindIgnoreEntry(ignore_entries, path, key) != nullptr;
}

IgnoreEntries FixedIgnoreEntries(std::span<const std::string> entries) {
    return [entries] { return entries; };
}

FindingVerdict JudgeFinding(const FindingRules& rules, std::string_view sKey,
                            std::string_view sValue) {
    FindingVerdict verdict;
    verdict.path = ValidatePath(sValue, rules.scan_drive);
    // "Rejected" is looked up too, as a file of that name in the current folder; it is
    // never listed either way.
    verdict.exists = PathExists(*rules.files, verdict.path);
    if (verdict.exists) {
        return verdict;
    }
    if (rules.ignore_entries) {
        if (const std::string* entry =
                FindIgnoreEntry(rules.ignore_entries(), verdict.path, sKey)) {
            verdict.ignored = true;
            verdict.ignore_entry = *entry;
            return verdict;
        }
    }
    if (rules.safe_scan && !HasKnownFileExtension(verdict.path)) {
        verdict.unknown_extension = true;
        return verdict;
    }
    verdict.listed = verdict.path != kRejected;
    return verdict;
}

bool IsListedFinding(const FindingRules& rules, std::string_view sKey, std::string_view sValue) {
    return JudgeFinding(rules, sKey, sValue).listed;
}

}  // namespace regvex::scan
