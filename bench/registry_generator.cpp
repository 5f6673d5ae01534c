#include "registry_generator.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "generator/drive_files.h"
#include "generator/key_tree.h"
#include "generator/names.h"
#include "generator/random.h"
#include "generator/value_maker.h"

namespace regvex {

using bench_generator::BuildKeyTree;
using bench_generator::DiskFolders;
using bench_generator::DriveBuilder;
using bench_generator::FileKind;
using bench_generator::Join;
using bench_generator::kNoKey;
using bench_generator::ProductName;
using bench_generator::Random;
using bench_generator::RootHandle;
using bench_generator::TreeKey;
using bench_generator::ValueMaker;
using bench_generator::VendorName;

namespace {

// Seeds of the independent streams, so that the drive does not change with the registry
// size and the tree's shape does not change with the number of values.
constexpr std::uint64_t kDriveStream = 0x9E3779B97F4A7C15ULL;
constexpr std::uint64_t kValueStream = 0xC2B2AE3D27D4EB4FULL;

}  // namespace

RegistryGenerator::RegistryGenerator(GeneratorOptions options) : options_(options) {
    if (options_.keys < 64) {
        throw std::invalid_argument("the generator needs at least 64 keys");
    }
    Random rng(options_.seed ^ kDriveStream);
    DriveBuilder drive(rng, existing_, missing_);

    // Windows' own folders: large, and referenced most.
    struct SystemFolder {
        std::string_view dir;
        FileKind kind;
        std::size_t files;
    };
    static constexpr std::array<SystemFolder, 8> kSystemFolders{{
        {"Windows\\System32", FileKind::kSystem, 1200},
        {"Windows\\SysWOW64", FileKind::kSystem, 600},
        {"Windows\\System32\\drivers", FileKind::kDriver, 200},
        {"Windows", FileKind::kSystem, 60},
        {"Windows\\Fonts", FileKind::kFont, 120},
        {"Windows\\Microsoft.NET\\Framework64\\v4.0.30319", FileKind::kDotNet, 100},
        {"Windows\\Help", FileKind::kHelp, 30},
        {"Windows\\Web\\Wallpaper\\Windows", FileKind::kPicture, 12},
    }};
    for (const SystemFolder& folder : kSystemFolders) {
        drive.AddFolder(std::string(folder.dir));
        drive.AddFiles(std::string(folder.dir), folder.kind, folder.files, folder.files * 3 / 4);
    }

    static constexpr std::array<std::string_view, 2> kUsers{"Alice", "José"};
    for (std::size_t v = 0; v < 160; ++v) {
        const std::string vendor = VendorName(rng);
        const std::string vendor_dir = "Program Files\\" + vendor;
        if (!drive.AddFolder(vendor_dir)) {
            continue;
        }
        const std::size_t products = rng.Between(1, 3);
        for (std::size_t p = 0; p < products; ++p) {
            const std::string product = ProductName(rng);
            const std::string dir = Join(vendor_dir, product);
            if (!drive.AddFolder(dir)) {
                continue;
            }
            folders_.push_back(dir);
            x86_folders_.push_back("Program Files (x86)\\" + vendor + "\\" + product);
            // A quarter of the products were uninstalled: their folders are gone.
            const bool installed = rng.Chance(0.75);
            const std::size_t files = rng.Between(4, 20);
            drive.AddFiles(dir, FileKind::kApp, installed ? files : 0,
                           installed ? files * 2 / 5 : files, product);
            static constexpr std::array<std::string_view, 3> kSubfolders{"bin", "plugins", "lang"};
            for (const std::string_view sub : kSubfolders) {
                if (rng.Chance(0.2)) {
                    const std::string subdir = Join(dir, sub);
                    drive.AddFolder(subdir);
                    const std::size_t count = rng.Between(2, 10);
                    drive.AddFiles(subdir, FileKind::kApp, installed ? count : 0,
                                   installed ? count / 3 : count, product);
                }
            }
            if (rng.Chance(0.25)) {
                const std::string data_dir = "ProgramData\\" + vendor + "\\" + product;
                drive.AddFolder(data_dir);
                const std::size_t count = rng.Between(2, 8);
                drive.AddFiles(data_dir, FileKind::kData, installed ? count : 0,
                               installed ? count / 2 : count);
            }
            if (rng.Chance(0.2)) {
                const std::string app_data =
                    "Users\\" + std::string(rng.Pick(kUsers)) +
                    (rng.Chance(0.5) ? "\\AppData\\Local\\" : "\\AppData\\Roaming\\") + vendor +
                    "\\" + product;
                drive.AddFolder(app_data);
                const std::size_t count = rng.Between(2, 6);
                drive.AddFiles(app_data, FileKind::kData, installed ? count : 0,
                               installed ? count / 2 : count);
            }
        }
        if (rng.Chance(0.2)) {
            const std::string common = "Program Files\\Common Files\\" + vendor;
            drive.AddFolder(common);
            drive.AddFiles(common, FileKind::kApp, rng.Between(2, 8), rng.Between(1, 4), vendor);
        }
    }
}

GenerationSummary RegistryGenerator::Generate(RegistrySink& sink) const {
    GenerationSummary summary;
    Random tree_rng(options_.seed);
    const std::vector<TreeKey> keys = BuildKeyTree(tree_rng, options_.keys);

    // Values lie in keys at random, a fifth of them in a few busy keys.
    Random value_rng(options_.seed ^ kValueStream);
    std::vector<std::uint32_t> value_counts(keys.size(), 0);
    std::vector<std::uint32_t> busy(std::max<std::size_t>(1, keys.size() / 100));
    for (std::uint32_t& key : busy) {
        key = static_cast<std::uint32_t>(value_rng.Below(keys.size()));
    }
    for (std::size_t i = 0; i < options_.values; ++i) {
        const std::size_t key = value_rng.Chance(0.2) ? busy[value_rng.Below(busy.size())]
                                                      : value_rng.Below(keys.size());
        ++value_counts[key];
    }

    ValueMaker maker(value_rng, existing_, missing_, folders_, x86_folders_, summary,
                     options_.file_references);
    std::string path;
    const auto emit = [&](auto& self, std::uint32_t index) -> void {
        const TreeKey& key = keys[index];
        const std::size_t mark = path.size();
        if (!path.empty()) {
            path.push_back('\\');
        }
        path.append(key.name);
        sink.Key(RootHandle(key.root), path);
        ++summary.keys;
        maker.MakeValues(sink, value_counts[index]);
        for (std::uint32_t child = key.first_child; child != kNoKey;
             child = keys[child].next_sibling) {
            self(self, child);
        }
        path.resize(mark);
    };
    for (std::uint32_t index = 0; index < keys.size(); ++index) {
        if (keys[index].parent == kNoKey) {
            emit(emit, index);
        }
    }
    return summary;
}

std::size_t RegistryGenerator::CreateFiles(const std::filesystem::path& drive_root) const {
    std::filesystem::create_directories(drive_root);
    DiskFolders folders(drive_root);
    std::size_t created = 0;
    for (const DriveFile& file : existing_) {
        if (folders.CreateFile(folders.Resolve(file.dir), file.name)) {
            ++created;
        }
    }
    return created;
}

}  // namespace regvex
