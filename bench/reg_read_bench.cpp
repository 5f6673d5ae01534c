// Reads registry export files as `regvexlor-cli scan --registry FILE` reads them, each in
// a process of its own, and prints how long the reading took and the process's peak
// memory against the file's size. See README.md.
//
//   regvex_read_bench [--megabytes N] [--seed N] [--dir DIR]
//                                                  write the files and measure each
//   regvex_read_bench read FILE...                 (the measured process) read and report

#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "backup/reg_file_reader.h"
#include "engine/memory_registry.h"
#include "heap_counter.h"
#include "read_bench_files.h"
#include "reg_file_writer.h"
#include "text/ansi_code_page.h"

namespace regvex {

namespace {

constexpr double kMegabyte = 1024.0 * 1024.0;

std::uint64_t ParseNumber(std::string_view option, std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value == 0) {
        throw std::invalid_argument(std::string(option) + " wants a positive number, not \"" +
                                    std::string(text) + "\"");
    }
    return value;
}

// ---- The measured process ----

struct Count {
    std::size_t keys = 0;
    std::size_t values = 0;
};

// Every key below the roots and every value the scan's buffers take, without recursion.
Count CountAll(MemoryRegistry& registry) {
    Count count;
    std::vector<std::pair<RootKeyHandle, std::string>> pending;
    for (RootKeyHandle root = kHkeyClassesRoot; root <= kHkeyDynData; ++root) {
        pending.emplace_back(root, "");
    }
    ValueSlot slot;
    std::string name;
    while (!pending.empty()) {
        const auto [root, path] = pending.back();
        pending.pop_back();
        ScopedKey key;
        if (ScopedKey::Open(registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
            throw std::runtime_error("a key listed cannot be opened");
        }
        count.keys += path.empty() ? 0 : 1;
        for (std::uint32_t i = 0;; ++i) {
            const RegStatus status = registry.EnumValue(key.get(), i, slot);
            if (status == reg::kNoMoreItems) {
                break;
            }
            count.values += 1;  // kMoreData too: the value is there
        }
        for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
            pending.emplace_back(root, path.empty() ? name : path + "\\" + name);
        }
    }
    return count;
}

// The peak resident memory of this process image. Not getrusage: its maximum carries
// over the forked parent's from before exec.
std::string PeakResidentKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            std::istringstream fields(line.substr(6));
            std::string kilobytes;
            fields >> kilobytes;
            return kilobytes;
        }
    }
    throw std::runtime_error("/proc/self/status has no VmHWM");
}

int ReadFiles(int argc, char** argv) {
    ResetHeapPeak();
    const std::size_t heap_at_start = HeapLiveBytes();
    MemoryRegistry registry;
    std::ostringstream seconds;
    std::string outcome = "ok";
    for (int i = 2; i < argc; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const auto error = backup::ImportRegFile(argv[i], registry, text::DefaultAnsiCodePage());
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        seconds << (i > 2 ? "," : "") << took.count();
        if (error) {
            outcome = "line " + std::to_string(error->line) + ": " + error->message;
            break;
        }
    }
    const std::string rss_kb = PeakResidentKilobytes();
    const std::size_t heap_peak = HeapPeakBytes() - heap_at_start;
    const Count count = CountAll(registry);
    std::cout << "seconds " << seconds.str() << "\nrss_kb " << rss_kb << "\nheap_peak " << heap_peak
              << "\nkeys " << count.keys << "\nvalues " << count.values << "\noutcome " << outcome
              << "\n";
    return 0;
}

// ---- Writing the files ----

// A fresh folder under the system's temporary folder, removed with everything in it, or
// a folder of the user's, kept.
class TemporaryFolder {
  public:
    explicit TemporaryFolder(const std::filesystem::path& kept) : path_(kept), keep_(true) {
        std::filesystem::create_directories(path_);
    }
    TemporaryFolder() {
        const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        for (int attempt = 0;; ++attempt) {
            path_ = std::filesystem::temp_directory_path() /
                    ("regvex-read-bench-" + std::to_string(stamp) + "-" + std::to_string(attempt));
            if (std::filesystem::create_directory(path_)) {
                return;
            }
        }
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!keep_) {
            std::filesystem::remove_all(path_, ignored);
        }
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
    bool keep_ = false;
};

// ---- Running the measured process ----

std::map<std::string, std::string> RunReader(const std::vector<std::filesystem::path>& files) {
    std::vector<std::string> args = {"/proc/self/exe", "read"};
    for (const auto& file : files) {
        args.push_back(file.string());
    }
    std::vector<char*> argv;
    for (std::string& arg : args) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    int fds[2];
    if (pipe(fds) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        dup2(fds[1], STDOUT_FILENO);
        close(fds[0]);
        close(fds[1]);
        execv("/proc/self/exe", argv.data());
        _exit(127);
    }
    close(fds[1]);
    std::string output;
    char buffer[4096];
    for (ssize_t got; (got = read(fds[0], buffer, sizeof buffer)) > 0;) {
        output.append(buffer, static_cast<std::size_t>(got));
    }
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error("the reading process failed");
    }
    std::map<std::string, std::string> figures;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t space = line.find(' ');
        figures[line.substr(0, space)] = space == std::string::npos ? "" : line.substr(space + 1);
    }
    return figures;
}

struct Row {
    std::string what;
    std::vector<std::filesystem::path> files;
    std::optional<Count> expected;
};

int Measure(int argc, char** argv) {
    std::uint64_t megabytes = 200;
    std::uint64_t seed = 1;
    std::filesystem::path dir;
    for (int i = 1; i < argc; i += 2) {
        const std::string_view option = argv[i];
        if (i + 1 >= argc) {
            throw std::invalid_argument(std::string(option) + " wants a value");
        }
        if (option == "--megabytes") {
            megabytes = ParseNumber(option, argv[i + 1]);
        } else if (option == "--seed") {
            seed = ParseNumber(option, argv[i + 1]);
        } else if (option == "--dir") {
            dir = argv[i + 1];
        } else {
            throw std::invalid_argument("unknown option " + std::string(option));
        }
    }
    const auto folder_made =
        dir.empty() ? std::make_unique<TemporaryFolder>() : std::make_unique<TemporaryFolder>(dir);
    const TemporaryFolder& folder = *folder_made;
    const auto written_start = std::chrono::steady_clock::now();
    const ExportCount v5_written =
        WriteExport(folder / "v5.reg", RegFileFormat::kVersion5, megabytes, seed, nullptr);
    DeletionWriter deletions(folder / "deletions.reg");
    WriteExport(folder / "regedit4.reg", RegFileFormat::kRegedit4, megabytes, seed, &deletions);
    deletions.Finish();
    WriteShapes(folder.path(), megabytes / 2);
    const std::chrono::duration<double> writing = std::chrono::steady_clock::now() - written_start;
    std::printf("files written in %.1f s\n\n", writing.count());

    const Row rows[] = {
        {"version 5 export (UTF-16LE)",
         {folder / "v5.reg"},
         Count{v5_written.keys, v5_written.values}},
        {"REGEDIT4 export (ANSI)", {folder / "regedit4.reg"}, std::nullopt},
        {"deletions alone", {folder / "deletions.reg"}, std::nullopt},
        {"REGEDIT4 export, its deletions",
         {folder / "regedit4.reg", folder / "deletions.reg"},
         std::nullopt},
        {"deletions, short lines", {folder / "short_deletions.reg"}, Count{1, 0}},
        {"100,000 values in one key", {folder / "values.reg"}, Count{1, 100'000}},
        {"200,000 siblings, descending", {folder / "siblings.reg"}, Count{200'001, 200'000}},
        {"keys 512 levels deep", {folder / "deep.reg"}, Count{511 * 41 + 1, 511}},
        {"100,000 nested keys", {folder / "nested.reg"}, Count{0, 0}},
    };
    std::printf("%-32s %10s %9s %10s %6s %10s %9s %9s\n", "file", "size", "read", "peak RSS",
                "x size", "heap peak", "keys", "values");
    bool right = true;
    for (const Row& row : rows) {
        std::uintmax_t bytes = 0;
        for (const auto& file : row.files) {
            bytes += std::filesystem::file_size(file);
        }
        auto figures = RunReader(row.files);
        std::string seconds;
        std::istringstream each(figures["seconds"]);
        for (std::string part; std::getline(each, part, ',');) {
            char text[32];
            std::snprintf(text, sizeof text, "%.2f", std::stod(part));
            seconds += (seconds.empty() ? "" : "+") + std::string(text);
        }
        const double rss = std::stod(figures["rss_kb"]) * 1024.0;
        const double heap = std::stod(figures["heap_peak"]);
        std::printf("%-32s %7.1f MB %9s %7.1f MB %6.2f %7.1f MB %9s %9s\n", row.what.c_str(),
                    static_cast<double>(bytes) / kMegabyte, (seconds + " s").c_str(),
                    rss / kMegabyte, rss / static_cast<double>(bytes), heap / kMegabyte,
                    figures["keys"].c_str(), figures["values"].c_str());
        if (figures["outcome"] != "ok") {
            std::printf("%-32s %s\n", "", figures["outcome"].c_str());
        }
        if (row.expected && (std::to_string(row.expected->keys) != figures["keys"] ||
                             std::to_string(row.expected->values) != figures["values"])) {
            std::printf("%-32s expected %zu keys and %zu values\n", "", row.expected->keys,
                        row.expected->values);
            right = false;
        }
    }
    return right ? 0 : 1;
}

}  // namespace

}  // namespace regvex

int main(int argc, char** argv) {
    try {
        if (argc > 1 && std::string_view(argv[1]) == "read") {
            return regvex::ReadFiles(argc, argv);
        }
        return regvex::Measure(argc, argv);
    } catch (const std::invalid_argument& e) {
        std::cerr << "regvex_read_bench: " << e.what() << "\n";
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "regvex_read_bench: " << e.what() << "\n";
        return 1;
    }
}
