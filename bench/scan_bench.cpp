// Times the whole-registry scan against a bare walk over the same in-memory registry,
// and writes the generated registry as a .reg file for the Wine comparison. See README.md.

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "engine/drive_map.h"
#include "engine/memory_registry.h"
#include "engine/reg_search.h"
#include "heap_counter.h"
#include "reg_file_writer.h"
#include "registry_generator.h"
#include "scan/finding_verdict.h"
#include "system/system_version.h"

namespace regvex {

namespace {

constexpr int kRuns = 3;

struct Options {
    bool write_reg = false;
    GeneratorOptions generator;
    std::filesystem::path out;
    std::filesystem::path files;
};

std::uint64_t ParseNumber(std::string_view option, std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument(std::string(option) + " wants a number, not \"" +
                                    std::string(text) + "\"");
    }
    return value;
}

Options ParseOptions(int argc, char** argv) {
    Options options;
    int first = 1;
    if (argc > 1 && std::string_view(argv[1]) == "write-reg") {
        options.write_reg = true;
        options.generator.keys = 20'000;
        options.generator.values = 100'000;
        first = 2;
    }
    for (int i = first; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (i + 1 >= argc) {
            throw std::invalid_argument(std::string(option) + " wants a value");
        }
        const std::string_view value = argv[++i];
        if (option == "--keys") {
            options.generator.keys = ParseNumber(option, value);
        } else if (option == "--values") {
            options.generator.values = ParseNumber(option, value);
        } else if (option == "--seed") {
            options.generator.seed = ParseNumber(option, value);
        } else if (option == "--file-references") {
            const double share = std::strtod(std::string(value).c_str(), nullptr);
            if (!(share > 0 && share <= 0.98)) {
                throw std::invalid_argument(
                    "--file-references wants a share above 0 and at most 0.98");
            }
            options.generator.file_references = share;
        } else if (options.write_reg && option == "--out") {
            options.out = value;
        } else if (options.write_reg && option == "--files") {
            options.files = value;
        } else {
            throw std::invalid_argument("unknown option " + std::string(option));
        }
    }
    if (options.write_reg && (options.out.empty() || options.files.empty())) {
        throw std::invalid_argument("write-reg wants --out FILE and --files DIR");
    }
    return options;
}

// A fresh folder under the system's temporary folder, removed with everything in it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        for (int attempt = 0;; ++attempt) {
            path_ = std::filesystem::temp_directory_path() /
                    ("regvex-scan-bench-" + std::to_string(stamp) + "-" + std::to_string(attempt));
            if (std::filesystem::create_directory(path_)) {
                return;
            }
        }
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

class MemoryRegistrySink final : public RegistrySink {
  public:
    explicit MemoryRegistrySink(MemoryRegistry& registry) : registry_(registry) {}

    void Key(RootKeyHandle root, std::string_view path) override {
        if (ScopedKey::Create(registry_, root, path, reg::kKeyAllAccess, key_) != reg::kSuccess) {
            throw std::runtime_error("cannot create key " + std::string(path));
        }
    }
    void Value(std::string_view name, std::uint32_t type,
               std::span<const std::uint8_t> data) override {
        if (registry_.SetValue(key_.get(), name, type, data) != reg::kSuccess) {
            throw std::runtime_error("cannot set value " + std::string(name));
        }
    }

  private:
    MemoryRegistry& registry_;
    ScopedKey key_;
};

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

struct ScanResult {
    std::size_t findings = 0;
    double seconds = 0;
    std::size_t peak_extra_heap = 0;
    std::size_t recorded_entries = 0;
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

ScanResult Scan(Registry& registry, const std::filesystem::path& drive_c) {
    const std::size_t live_before = HeapLiveBytes();
    ResetHeapPeak();
    const auto start = std::chrono::steady_clock::now();
    std::size_t findings = 0;
    std::size_t recorded = 0;
    {
        DriveMapFileExistence files;
        files.Map('C', drive_c);
        scan::FindingRules rules;
        rules.scan_drive = "C:\\";
        rules.files = &files;
        rules.safe_scan = false;
        QuietSearchHost host;
        FindingCounter events(rules);
        cRegSearch search(registry, host, events, system::KeyMasksFor(false).KeyAccessMask);
        search.RootKey(kHkeyAll);
        search.SubKey("");
        search.SearchFlags(search_flags::kValueNames | search_flags::kValueData);
        search.SearchString("C:\\");
        search.DoSearch();
        if (events.reason() != 0) {
            throw std::runtime_error("the scan finished with reason " +
                                     std::to_string(events.reason()));
        }
        findings = events.findings();
        recorded = search.RecordedEntries();
    }
    ScanResult result;
    result.recorded_entries = recorded;
    result.seconds = SecondsSince(start);
    result.findings = findings;
    result.peak_extra_heap = HeapPeakBytes() - live_before;
    return result;
}

// Only what any walk of the registry must do: open every key as the scan opens it and
// enumerate its values and subkeys into the scan's own kind of buffers.
class BareWalk {
  public:
    explicit BareWalk(Registry& registry) : registry_(registry) {}

    void Run() {
        keys_ = 0;
        values_ = 0;
        for (const RootKeyHandle root : kSearchOrder) {
            Walk(root, std::string());
        }
    }

    std::size_t keys() const { return keys_; }
    std::size_t values() const { return values_; }

  private:
    void Walk(RootKeyHandle root, const std::string& path) {
        ScopedKey key;
        if (ScopedKey::Open(registry_, root, path, system::KeyMasksFor(false).KeyAccessMask, key) !=
            reg::kSuccess) {
            return;
        }
        for (std::uint32_t index = 0;; ++index) {
            slot_.data[0] = 0;
            // Like the scan, a value too large for the buffer ends the key's values.
            if (registry_.EnumValue(key.get(), index, slot_) != reg::kSuccess) {
                break;
            }
            ++values_;
        }
        for (std::uint32_t index = 0;; ++index) {
            if (registry_.EnumKey(key.get(), index, name_) != reg::kSuccess) {
                break;
            }
            ++keys_;
            Walk(root, path.empty() ? name_ : path + '\\' + name_);
        }
    }

    Registry& registry_;
    ValueSlot slot_;
    std::string name_;
    std::size_t keys_ = 0;
    std::size_t values_ = 0;
};

std::unique_ptr<MemoryRegistry> Load(const RegistryGenerator& generator,
                                     GenerationSummary& summary) {
    auto registry = std::make_unique<MemoryRegistry>();
    MemoryRegistrySink sink(*registry);
    summary = generator.Generate(sink);
    return registry;
}

std::string Fixed(double value, int decimals) {
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%.*f", decimals, value);
    return buffer;
}

int RunBench(const Options& options) {
    TemporaryFolder drive_c;
    const RegistryGenerator generator(options.generator);
    const auto setup_start = std::chrono::steady_clock::now();
    GenerationSummary summary;
    auto registry = Load(generator, summary);
    const std::size_t created = generator.CreateFiles(drive_c.path());
    const double setup_seconds = SecondsSince(setup_start);

    std::cout << "registry    " << summary.keys << " keys, " << summary.values << " values (seed "
              << options.generator.seed << ", made in " << Fixed(setup_seconds, 1) << " s)\n"
              << "drive C:    " << created << " files present, " << generator.MissingFileCount()
              << " more named but missing\n"
              << "references  " << summary.file_references << " to files on C: ("
              << summary.missing_references << " missing), " << summary.rejected_paths
              << " refused or unmatched path texts, " << summary.oversized_values
              << " oversized values hiding " << summary.unreached_values << " more\n";

    double walk_best = 0;
    double scan_best = 0;
    std::size_t peak_heap = 0;
    bool correct = true;
    BareWalk walk(*registry);
    for (int run = 0; run < kRuns; ++run) {
        const auto start = std::chrono::steady_clock::now();
        walk.Run();
        const double walk_seconds = SecondsSince(start);
        walk_best = run == 0 ? walk_seconds : std::min(walk_best, walk_seconds);

        const ScanResult scan = Scan(*registry, drive_c.path());
        scan_best = run == 0 ? scan.seconds : std::min(scan_best, scan.seconds);
        peak_heap = std::max(peak_heap, scan.peak_extra_heap);
        if (run == 0) {
            std::cout << "findings    " << scan.findings << " (expected "
                      << summary.expected_findings << ")\n"
                      << "record      " << scan.recorded_entries
                      << " entries kept for keys reached again, at the end of the scan\n";
        }
        correct = correct && scan.findings == summary.expected_findings;
    }
    if (walk.keys() != summary.keys ||
        walk.values() != summary.values - summary.oversized_values - summary.unreached_values) {
        std::cout << "walk saw    " << walk.keys() << " keys, " << walk.values()
                  << " values: not what was generated\n";
        correct = false;
    }
    std::cout << "walk        " << Fixed(walk_best, 3) << " s (best of " << kRuns << ")\n"
              << "scan        " << Fixed(scan_best, 3) << " s (best of " << kRuns << ")\n"
              << "scan heap   " << peak_heap << " bytes peak above the start, at " << summary.keys
              << " keys / " << summary.values << " values\n";
    registry.reset();

    // The same seed at a quarter of the size points into the same drive, so only the
    // registry's size differs.
    GeneratorOptions quarter = options.generator;
    quarter.keys = std::max<std::size_t>(quarter.keys / 4, 64);
    quarter.values /= 4;
    const RegistryGenerator small_generator(quarter);
    GenerationSummary small_summary;
    auto small_registry = Load(small_generator, small_summary);
    const ScanResult small_scan = Scan(*small_registry, drive_c.path());
    std::cout << "scan heap   " << small_scan.peak_extra_heap << " bytes peak above the start, at "
              << small_summary.keys << " keys / " << small_summary.values << " values\n";
    if (small_scan.findings != small_summary.expected_findings) {
        std::cout << "findings    " << small_scan.findings << " at a quarter size (expected "
                  << small_summary.expected_findings << ")\n";
        correct = false;
    }
    if (!correct) {
        std::cout << "FAILED: the scan did not report what the registry holds\n";
    }
    std::cout << "ratio " << Fixed(walk_best > 0 ? scan_best / walk_best : 0, 2) << std::endl;
    return correct ? 0 : 1;
}

int RunWriteReg(const Options& options) {
    const RegistryGenerator generator(options.generator);
    RegFileWriter writer(options.out);
    const GenerationSummary summary = generator.Generate(writer);
    writer.Finish();
    const std::size_t created = generator.CreateFiles(options.files);
    std::cout << "wrote " << summary.keys << " keys and " << summary.values << " values to "
              << options.out.string() << "\n"
              << "created " << created << " files below " << options.files.string() << "\n"
              << "expected findings " << summary.expected_findings
              << " (on a registry that holds nothing else)" << std::endl;
    return 0;
}

}  // namespace

}  // namespace regvex

int main(int argc, char** argv) {
    try {
        const regvex::Options options = regvex::ParseOptions(argc, argv);
        return options.write_reg ? regvex::RunWriteReg(options) : regvex::RunBench(options);
    } catch (const std::exception& error) {
        std::cerr << "regvex_scan_bench: " << error.what() << "\n"
                  << "usage: regvex_scan_bench [--keys N] [--values N] [--seed N]\n"
                  << "       regvex_scan_bench write-reg [--keys N] [--values N] [--seed N] "
                     "[--file-references S]"
                     " --out FILE --files DIR\n";
        return 2;
    }
}
