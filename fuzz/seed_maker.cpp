// Makes seed inputs for the fuzzers out of real Windows hive files and the benchmarks'
// registry generator. A hive's texts (key names, value names, paths, command lines) are
// what the readers meet in the wild; they are cut out of the hive's bytes as runs of
// printable characters, without reading the hive's structure, and put into the forms
// each fuzzer reads:
//
//   OUT/reg/     export files: "REGEDIT4" as a backup writes them, and version 5.00 in
//                UTF-16 as the Registry Editor exports them, with every value type
//   OUT/ignore/  ignore files in the ANSI code page
//   OUT/value/   one text each that names a drive, laid out as the value-text fuzzer reads
//
// Usage: regvex_seed_maker OUT [HIVE...]

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "backup/backup_file.h"
#include "engine/registry.h"
#include "reg_file_writer.h"
#include "registry_generator.h"
#include "text/ansi_code_page.h"
#include "text/utf8.h"

namespace {

using namespace regvex;
namespace fs = std::filesystem;

constexpr std::size_t kShortestText = 5;
constexpr std::size_t kTextsPerHive = 4000;
constexpr std::size_t kValueSeedsPerHive = 150;
constexpr std::size_t kFilesPerHive = 6;
constexpr std::size_t kLinesPerFile = 40;

bool IsPrintable(char32_t c) {
    return (c >= 0x20 && c < 0x7F) || (c >= 0xA0 && c < 0x250);
}

// Runs of printable UTF-16LE units and of printable ASCII bytes, each text once, in the
// order found.
std::vector<std::string> TextsIn(std::string_view bytes) {
    std::vector<std::string> texts;
    std::unordered_set<std::string> seen;
    const auto keep = [&](std::string text) {
        if (texts.size() < kTextsPerHive && seen.insert(text).second) {
            texts.push_back(std::move(text));
        }
    };
    for (std::size_t parity = 0; parity < 2; ++parity) {
        std::u16string run;
        for (std::size_t i = parity; i + 1 < bytes.size(); i += 2) {
            const auto unit = static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                                    static_cast<unsigned char>(bytes[i + 1]) << 8);
            if (IsPrintable(unit)) {
                run.push_back(unit);
                continue;
            }
            if (run.size() >= kShortestText) {
                keep(text::Utf16ToUtf8(run));
            }
            run.clear();
        }
    }
    std::string run;
    for (const char c : bytes) {
        if (c >= 0x20 && c < 0x7F) {
            run.push_back(c);
            continue;
        }
        if (run.size() >= kShortestText) {
            keep(run);
        }
        run.clear();
    }
    return texts;
}

void WriteFile(const fs::path& file, std::string_view bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

std::span<const std::uint8_t> Bytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// A key name may hold anything but a backslash.
std::string KeyName(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '_');
    return name;
}

void MakeValueSeeds(const std::vector<std::string>& texts, const fs::path& folder,
                    std::string_view prefix) {
    std::size_t made = 0;
    for (const std::string& text : texts) {
        const std::size_t colon = text.find(":\\");
        if (colon == 0 || colon == std::string::npos || made == kValueSeedsPerHive) {
            continue;
        }
        const char letter = static_cast<char>(text[colon - 1] & ~0x20);
        if (letter < 'A' || letter > 'Z') {
            continue;
        }
        // Mostly plain strings; every fourth a multi-string with a second path after it.
        const bool multi = made % 4 == 3;
        std::string seed{static_cast<char>(multi ? reg::kMultiSz : reg::kSz),
                         static_cast<char>(letter - 'A')};
        seed += text;
        seed.push_back('\0');
        if (multi) {
            seed += "C:\\Second\\b.exe";
            seed.append(2, '\0');
        }
        WriteFile(folder / (std::string(prefix) + "-" + std::to_string(made++)), seed);
    }
}

void MakeIgnoreSeeds(const std::vector<std::string>& texts, const fs::path& folder,
                     std::string_view prefix) {
    if (texts.empty()) {
        return;
    }
    const text::Windows1252CodePage ansi;
    std::string line;
    for (std::size_t file = 0; file < kFilesPerHive; ++file) {
        std::string bytes;
        for (std::size_t i = 0; i < kLinesPerFile; ++i) {
            ansi.FromUtf8(texts[(file * kLinesPerFile + i) % texts.size()], line);
            bytes += line;
            // The line ends the program writes, and now and then the other one it reads.
            bytes += i % 13 == 12 ? "\r" : "\r\n";
        }
        WriteFile(folder / (std::string(prefix) + "-" + std::to_string(file)), bytes);
    }
}

void MakeRegSeeds(const std::vector<std::string>& texts, const fs::path& folder,
                  std::string_view prefix) {
    if (texts.empty()) {
        return;
    }
    const text::Windows1252CodePage ansi;
    constexpr RootKeyHandle kRoots[] = {kHkeyCurrentUser, kHkeyLocalMachine, kHkeyClassesRoot,
                                        kHkeyUsers};
    std::size_t next = 0;
    const auto take = [&]() -> const std::string& { return texts[next++ % texts.size()]; };
    for (std::size_t file = 0; file < kFilesPerHive; ++file) {
        // As the Fix command writes them: every value a string.
        std::vector<backup::BackupRow> rows;
        for (std::size_t i = 0; i < kLinesPerFile / 2; ++i) {
            const std::string key = "Software\\" + KeyName(take()) + "\\" + KeyName(take());
            rows.push_back(
                {RootKeyName(kRoots[i % std::size(kRoots)]), key + "\\" + take(), take()});
        }
        WriteFile(folder / (std::string(prefix) + "-backup-" + std::to_string(file) + ".reg"),
                  backup::BackupFileBytes(rows, ansi));

        // As the Registry Editor exports them: every type, the hex ones wrapped.
        const fs::path path =
            folder / (std::string(prefix) + "-export-" + std::to_string(file) + ".reg");
        RegFileWriter writer(path);
        for (std::size_t i = 0; i < kLinesPerFile / 2; ++i) {
            if (i % 5 == 0) {
                writer.Key(kRoots[i % std::size(kRoots)],
                           "Software\\" + KeyName(take()) + "\\" + KeyName(take()));
            }
            std::string data = take();
            data.push_back('\0');
            constexpr std::uint32_t kTypes[] = {reg::kSz,     reg::kExpandSz, reg::kMultiSz,
                                                reg::kBinary, reg::kDword,    reg::kQword};
            const std::uint32_t type = kTypes[i % std::size(kTypes)];
            if (type == reg::kMultiSz) {
                data += take();
                data.append(2, '\0');
            } else if (type == reg::kDword || type == reg::kQword) {
                data.resize(type == reg::kDword ? 4 : 8, '\0');
            }
            writer.Value(i % 7 == 0 ? std::string_view() : take(), type, Bytes(data));
        }
        writer.Finish();
    }
}

// A few small registries of the benchmarks' kind: real shapes of keys, values and paths.
void MakeGeneratedRegSeeds(const fs::path& folder) {
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        GeneratorOptions options;
        options.seed = seed;
        options.keys = 64;
        options.values = 100;
        options.file_references = 0.3;
        RegFileWriter writer(folder / ("generated-" + std::to_string(seed) + ".reg"));
        RegistryGenerator(options).Generate(writer);
        writer.Finish();
    }
}

std::string ReadFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad() || !in.is_open()) {
        throw std::runtime_error("cannot read " + file.string());
    }
    return bytes;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: regvex_seed_maker OUT [HIVE...]\n");
        return 2;
    }
    try {
        const fs::path out = argv[1];
        for (const char* kind : {"reg", "ignore", "value"}) {
            fs::remove_all(out / kind);
            fs::create_directories(out / kind);
        }
        MakeGeneratedRegSeeds(out / "reg");
        for (int i = 2; i < argc; ++i) {
            const fs::path hive = argv[i];
            const std::string prefix = hive.filename().string();
            const std::vector<std::string> texts = TextsIn(ReadFile(hive));
            MakeRegSeeds(texts, out / "reg", prefix);
            MakeIgnoreSeeds(texts, out / "ignore", prefix);
            MakeValueSeeds(texts, out / "value", prefix);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "regvex_seed_maker: %s\n", e.what());
        return 1;
    }
    return 0;
}
