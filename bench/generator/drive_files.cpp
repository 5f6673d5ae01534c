#include "generator/drive_files.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <span>
#include <stdexcept>

#include "generator/names.h"
#include "generator/random.h"
#include "text/upper_case.h"

namespace regvex::bench_generator {

namespace {

constexpr std::array<std::string_view, 20> kFileWords{
    "core", "ui",   "helper", "update", "uninst", "setup", "launcher", "service", "plugin", "codec",
    "res",  "lang", "engine", "net",    "crypt",  "shell", "sync",     "log",     "cfg",    "host"};

// The extensions at which the path rules cut a text; only paths with one of them may
// carry anything after the path.
constexpr std::array<std::string_view, 22> kCutExtensions{
    "sys", "exe", "dll", "ocx", "oca", "vxd", "ax",  "com", "cpl", "tlb", "scr",
    "bat", "drv", "msi", "zip", "rar", "hlp", "lnk", "jpg", "bmp", "pdf", "txt"};

bool IsCutExtension(std::string_view extension) {
    return std::find(kCutExtensions.begin(), kCutExtensions.end(), extension) !=
           kCutExtensions.end();
}

std::string SwapAsciiCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        } else if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return out;
}

struct WeightedExtension {
    std::string_view extension;
    int weight;
};

std::string_view PickExtension(Random& rng, FileKind kind) {
    static constexpr std::array<WeightedExtension, 10> kSystem{{{"dll", 70},
                                                                {"exe", 14},
                                                                {"cpl", 3},
                                                                {"ocx", 3},
                                                                {"drv", 2},
                                                                {"tlb", 2},
                                                                {"scr", 2},
                                                                {"ax", 2},
                                                                {"msc", 1},
                                                                {"inf", 1}}};
    static constexpr std::array<WeightedExtension, 14> kApp{{{"exe", 25},
                                                             {"dll", 43},
                                                             {"ini", 5},
                                                             {"dat", 4},
                                                             {"xml", 4},
                                                             {"cfg", 2},
                                                             {"log", 2},
                                                             {"ico", 3},
                                                             {"chm", 2},
                                                             {"hlp", 1},
                                                             {"txt", 4},
                                                             {"ocx", 2},
                                                             {"ax", 1},
                                                             {"pdf", 2}}};
    static constexpr std::array<WeightedExtension, 6> kData{
        {{"ini", 25}, {"dat", 25}, {"xml", 20}, {"log", 10}, {"db", 10}, {"txt", 10}}};
    const auto pick = [&rng](std::span<const WeightedExtension> table) {
        int total = 0;
        for (const WeightedExtension& row : table) {
            total += row.weight;
        }
        int roll = static_cast<int>(rng.Below(static_cast<std::size_t>(total)));
        for (const WeightedExtension& row : table) {
            if (roll < row.weight) {
                return row.extension;
            }
            roll -= row.weight;
        }
        return table.back().extension;
    };
    switch (kind) {
        case FileKind::kSystem:
            return pick(kSystem);
        case FileKind::kDriver:
            return "sys";
        case FileKind::kFont:
            return rng.Chance(0.7) ? "ttf" : "fon";
        case FileKind::kApp:
            return pick(kApp);
        case FileKind::kData:
            return pick(kData);
        case FileKind::kHelp:
            return rng.Chance(0.5) ? "hlp" : "chm";
        case FileKind::kPicture:
            return rng.Chance(0.7) ? "jpg" : "bmp";
        case FileKind::kDotNet:
            return rng.Chance(0.85) ? "dll" : "exe";
    }
    return "dat";
}

// Files made in Windows' own folders carry a tag, so that they never stand in for a
// real system file: an empty KERNELBASE.DLL in C:\Windows stops Wine from starting.
constexpr std::string_view kSystemTag = "vx";

std::string FileTitle(Random& rng, FileKind kind, std::string_view product) {
    switch (kind) {
        case FileKind::kSystem:
        case FileKind::kDriver:
        case FileKind::kDotNet:
            return std::string(kSystemTag) + std::string(rng.Pick(kSystemStems)) +
                   std::string(rng.Pick(kSystemSuffixes));
        case FileKind::kFont:
            return std::string(kSystemTag) + AsciiLower(rng.Pick(kWords)) +
                   (rng.Chance(0.3) ? "bd" : "");
        case FileKind::kHelp:
        case FileKind::kPicture:
            return std::string(kSystemTag) + CamelWords(rng, rng.Between(1, 2));
        case FileKind::kApp: {
            if (rng.Chance(0.3)) {
                std::string compact;
                for (const char c : product) {
                    if (c != ' ') {
                        compact.push_back(c);
                    }
                }
                return compact;
            }
            std::string title(rng.Pick(kFileWords));
            if (rng.Chance(0.3)) {
                title = std::string(rng.Pick(kProductStems)) + std::string(rng.Pick(kFileWords));
            }
            if (rng.Chance(0.2)) {
                title += rng.Chance(0.5) ? "32" : "64";
            }
            return title;
        }
        case FileKind::kData: {
            std::string title = AsciiLower(rng.Pick(kWords));
            if (rng.Chance(0.3)) {
                title += "_" + AsciiLower(rng.Pick(kWords));
            }
            return title;
        }
    }
    return "file";
}

}  // namespace

DriveBuilder::DriveBuilder(Random& rng, std::vector<RegistryGenerator::DriveFile>& existing,
                           std::vector<RegistryGenerator::DriveFile>& missing)
    : rng_(rng), existing_(existing), missing_(missing) {}

bool DriveBuilder::AddFolder(const std::string& dir) {
    return folders_.insert(text::UpperCase(dir)).second;
}

void DriveBuilder::AddFiles(const std::string& dir, FileKind kind, std::size_t existing_count,
                            std::size_t missing_count, std::string_view product) {
    Add(dir, kind, existing_count, existing_, product);
    Add(dir, kind, missing_count, missing_, product);
}

void DriveBuilder::Add(const std::string& dir, FileKind kind, std::size_t count,
                       std::vector<RegistryGenerator::DriveFile>& into, std::string_view product) {
    for (std::size_t made = 0, tries = 0; made < count && tries < count * 8; ++tries) {
        const std::string_view extension = PickExtension(rng_, kind);
        std::string name = FileTitle(rng_, kind, product) + "." + std::string(extension);
        if (!names_.insert(text::UpperCase(Join(dir, name))).second) {
            continue;
        }
        into.push_back({dir, std::move(name), IsCutExtension(extension)});
        ++made;
    }
}

DiskFolders::DiskFolders(std::filesystem::path root) : root_(std::move(root)) {}

std::filesystem::path DiskFolders::Resolve(const std::string& dir) {
    std::filesystem::path current = root_;
    std::size_t start = 0;
    while (start < dir.size()) {
        std::size_t end = dir.find('\\', start);
        if (end == std::string::npos) {
            end = dir.size();
        }
        const std::string name = dir.substr(start, end - start);
        Listing& listing = ListingOf(current);
        const std::string upper = text::UpperCase(name);
        auto found = listing.find(upper);
        if (found == listing.end()) {
            const std::string on_disk = SwapAsciiCase(name);
            std::filesystem::create_directory(current / on_disk);
            found = listing.emplace(upper, on_disk).first;
        }
        current /= found->second;
        start = end + 1;
    }
    return current;
}

bool DiskFolders::CreateFile(const std::filesystem::path& folder, const std::string& name) {
    Listing& listing = ListingOf(folder);
    const std::string upper = text::UpperCase(name);
    if (listing.count(upper) != 0) {
        return false;
    }
    const std::string on_disk = SwapAsciiCase(name);
    std::ofstream file(folder / on_disk, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot create " + (folder / on_disk).string());
    }
    listing.emplace(upper, on_disk);
    return true;
}

DiskFolders::Listing& DiskFolders::ListingOf(const std::filesystem::path& folder) {
    auto [it, fresh] = listings_.try_emplace(folder.string());
    if (fresh) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            it->second.emplace(text::UpperCase(name), name);
        }
    }
    return it->second;
}

}  // namespace regvex::bench_generator
