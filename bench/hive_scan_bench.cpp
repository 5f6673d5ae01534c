// Opens one hive file as HiveRegistry and runs the whole-registry scan over it, as a scan
// of an offline hive will: every match of "C:\" judged against a drive C: that is an empty
// folder, so every reference to C: is a finding. Prints what it found and how long the
// open and the scan took; hive_scan_vs_reglookup.sh times the whole process.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "engine/drive_map.h"
#include "engine/reg_search.h"
#include "hive/hive_file.h"
#include "scan/finding_verdict.h"
#include "system/system_version.h"

namespace regvex {
namespace {

class FindingCounter final : public SearchEvents {
  public:
    explicit FindingCounter(const scan::FindingRules& rules) : rules_(rules) {}

    void SearchFound(std::string_view, std::string_view sKey, std::string_view sValue,
                     FoundKind) override {
        if (scan::IsListedFinding(rules_, sKey, sValue)) {
            ++findings_;
        }
    }
    void SearchFinished(FinishReason lReason) override {
        reason_ = static_cast<std::int32_t>(lReason);
    }

    std::size_t findings() const { return findings_; }
    std::int32_t reason() const { return reason_; }

  private:
    const scan::FindingRules& rules_;
    std::size_t findings_ = 0;
    std::int32_t reason_ = -1;
};

int Run(const std::filesystem::path& hive, const std::filesystem::path& empty_folder) {
    const auto start = std::chrono::steady_clock::now();
    std::size_t warnings = 0;
    hive::OpenedHive opened = hive::OpenHiveFile(hive, [&](std::string_view) { ++warnings; });
    if (!opened.registry) {
        std::fprintf(stderr, "%s\n", opened.error.c_str());
        return 2;
    }
    const auto opened_at = std::chrono::steady_clock::now();
    DriveMapFileExistence files;
    files.Map('C', empty_folder);
    scan::FindingRules rules;
    rules.scan_drive = "C:\\";
    rules.files = &files;
    rules.safe_scan = false;
    QuietSearchHost host;
    FindingCounter events(rules);
    cRegSearch search(*opened.registry, host, events, system::KeyMasksFor(false).KeyAccessMask);
    search.RootKey(kHkeyAll);
    search.SubKey("");
    search.SearchFlags(search_flags::kValueNames | search_flags::kValueData);
    search.SearchString("C:\\");
    search.DoSearch();
    const auto done = std::chrono::steady_clock::now();
    const auto seconds = [](auto from, auto to) {
        return std::chrono::duration<double>(to - from).count();
    };
    std::printf("%s: %zu findings, %zu warnings, open %.3f s, scan %.3f s\n", hive.c_str(),
                events.findings(), warnings, seconds(start, opened_at), seconds(opened_at, done));
    return events.reason() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace regvex

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: regvex_hive_scan_bench HIVE EMPTY_FOLDER\n");
        return 2;
    }
    return regvex::Run(argv[1], argv[2]);
}
