#pragma once
// A synthetic registry for the benchmarks, shaped like a real one, together with the
// drive C: that its values point into. Everything follows from a seed, on every
// standard library: the generator draws raw numbers from std::mt19937_64 and reduces
// them itself.
//
// The number of findings a scan must report is counted while the registry is made,
// from what each value was made to be, never by running the scan.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/root_keys.h"

namespace regvex {

struct GeneratorOptions {
    std::uint64_t seed = 1;
    std::size_t keys = 200'000;
    std::size_t values = 1'000'000;
    // The share of values that name a file on C:, half of them missing.
    double file_references = 0.05;
};

// Receives the registry key by key, each parent before its children.
class RegistrySink {
  public:
    virtual ~RegistrySink() = default;
    virtual void Key(RootKeyHandle root, std::string_view path) = 0;
    // A value of the key given last. Text types arrive as UTF-8 with their NULs.
    virtual void Value(std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) = 0;
};

struct GenerationSummary {
    std::size_t keys = 0;
    std::size_t values = 0;
    std::size_t file_references = 0;     // values whose text names a file on C: in a form
                                         // the path rules accept
    std::size_t missing_references = 0;  // ... of those, the file does not exist
    std::size_t rejected_paths = 0;      // path texts the path rules refuse, or that the
                                         // search never matches
    std::size_t oversized_values = 0;    // data beyond the scan's 4096-byte buffer
    std::size_t unreached_values = 0;    // behind an oversized value of the same key
    std::size_t expected_findings = 0;
};

class RegistryGenerator {
  public:
    // The keys and values counts take effect in Generate; the drive depends on the seed
    // alone, so a smaller registry of the same seed points into the same drive.
    explicit RegistryGenerator(GeneratorOptions options);

    GenerationSummary Generate(RegistrySink& sink) const;

    // Creates every existing file of the drive, empty, below `drive_root` (the folder that
    // stands for C:\). Folder and file names get the opposite letter case of the registry
    // text; a folder already there under another case is used as it is, since C: could
    // not hold both. Returns how many files were created.
    std::size_t CreateFiles(const std::filesystem::path& drive_root) const;

    std::size_t ExistingFileCount() const { return existing_.size(); }
    std::size_t MissingFileCount() const { return missing_.size(); }

    struct DriveFile {
        std::string dir;                        // below C:\, without separators at either end
        std::string name;                       // title, a dot and an extension
        bool path_rules_cut_extension = false;  // one of the extensions the path rules cut at
    };

  private:
    GeneratorOptions options_;
    std::vector<DriveFile> existing_;
    std::vector<DriveFile> missing_;
    std::vector<std::string> folders_;      // product folders, existing or not, dot-free
    std::vector<std::string> x86_folders_;  // below "Program Files (x86)"
};

}  // namespace regvex
