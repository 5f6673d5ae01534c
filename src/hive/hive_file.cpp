#include "hive/hive_file.h"

#include <fcntl.h>
#include <hivex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "hive/base_block.h"
#include "hive/hivex_handle.h"
#include "hive/log_replay.h"
#include "text/upper_case.h"

namespace regvex::hive {

namespace {

constexpr std::size_t kBinHeaderSize = 32;

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return fd_; }
    int Release() { return std::exchange(fd_, -1); }

  private:
    int fd_;
};

// Reads `out.size()` bytes at `at`; false when the file ends before.
using ReadAt = std::function<bool(std::uint64_t at, std::span<std::uint8_t> out)>;

bool ReadWhole(int fd, std::uint64_t at, std::span<std::uint8_t> out) {
    std::size_t done = 0;
    while (done < out.size()) {
        const ssize_t got =
            pread(fd, out.data() + done, out.size() - done, static_cast<off_t>(at + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(got);
    }
    return true;
}

std::string ErrorText() {
    return std::strerror(errno);
}

// What is wrong with the chain of hive bins, or "" when every bin is where its
// predecessor ends and says so.
std::string CheckHiveBins(const ReadAt& read, std::uint32_t bins_size) {
    std::array<std::uint8_t, kBinHeaderSize> header{};
    for (std::uint64_t at = 0; at < bins_size;) {
        if (!read(kBaseBlockSize + at, header)) {
            return "the hive bin at offset " + std::to_string(at) + " cannot be read";
        }
        const std::uint32_t size = ReadU32(header, 8);
        if (std::memcmp(header.data(), "hbin", 4) != 0 || ReadU32(header, 4) != at || size == 0 ||
            size % kHiveBinAlignment != 0 || at + size > bins_size) {
            return "the hive bin at offset " + std::to_string(at) + " is damaged";
        }
        at += size;
    }
    return {};
}

// The hive's logs: FILE.LOG1, FILE.LOG2 and, from older systems, FILE.LOG, whatever
// the case of their names.
std::vector<TransactionLog> FindLogs(const std::filesystem::path& file) {
    static constexpr std::array<std::string_view, 3> kSuffixes{".LOG1", ".LOG2", ".LOG"};
    std::array<std::filesystem::path, kSuffixes.size()> found;
    const std::string base = text::UpperCase(file.filename().string());
    std::filesystem::path folder = file.parent_path();
    if (folder.empty()) {
        folder = ".";
    }
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = text::UpperCase(it->path().filename().string());
        for (std::size_t i = 0; i < kSuffixes.size(); ++i) {
            if (name.size() == base.size() + kSuffixes[i].size() && name.starts_with(base) &&
                name.ends_with(kSuffixes[i])) {
                found[i] = it->path();
            }
        }
    }
    std::vector<TransactionLog> logs;
    for (const std::filesystem::path& path : found) {
        const FileDescriptor fd(path.empty() ? -1 : open(path.c_str(), O_RDONLY | O_CLOEXEC));
        struct stat info {};
        if (fd.get() < 0 || fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode)) {
            continue;
        }
        TransactionLog log{path.string(),
                           std::vector<std::uint8_t>(static_cast<std::size_t>(info.st_size))};
        if (ReadWhole(fd.get(), 0, log.bytes)) {
            logs.push_back(std::move(log));
        }
    }
    return logs;
}

// A file in memory holding `bytes`, for hivex, which opens hives by name.
int MemoryFile(const std::vector<std::uint8_t>& bytes) {
    FileDescriptor fd(memfd_create("regvex-hive", MFD_CLOEXEC));
    if (fd.get() < 0) {
        return -1;
    }
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t wrote = write(fd.get(), bytes.data() + done, bytes.size() - done);
        if (wrote < 0 && errno == EINTR) {
            continue;
        }
        if (wrote <= 0) {
            return -1;
        }
        done += static_cast<std::size_t>(wrote);
    }
    return fd.Release();
}

// Recovers a hive that was not written cleanly from its logs, in memory; what cannot be
// recovered is said as a warning.
void Recover(const std::filesystem::path& file, const std::string& label,
             std::vector<std::uint8_t>& bytes, const WarningSink& warn) {
    const ReplayOutcome outcome = ReplayLogs(bytes, FindLogs(file));
    if (outcome.replayed) {
        return;
    }
    std::string message = label + ": the hive was not written cleanly and ";
    if (outcome.problems.empty()) {
        message += "has no transaction log (.LOG1, .LOG2) beside it";
    } else {
        message += "its transaction logs cannot be used (";
        for (std::size_t i = 0; i < outcome.problems.size(); ++i) {
            message += (i > 0 ? "; " : "") + outcome.problems[i];
        }
        message += ")";
    }
    message += ": recent changes may be missing";
    if (!BaseBlock(bytes).ChecksumValid()) {
        message += ", and its damaged header is read as it stands";
        MarkClean(bytes, BaseBlock(bytes).PrimarySequence());
    }
    if (warn) {
        warn(message);
    }
}

}  // namespace

OpenedHive OpenHiveFile(const std::filesystem::path& file, WarningSink warn,
                        const text::AnsiCodePage& ansi) {
    const std::string label = file.string();
    const auto fail = [&](const std::string& what) {
        return OpenedHive{nullptr, label + ": " + what};
    };

    const FileDescriptor fd(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info {};
    if (fd.get() < 0 || fstat(fd.get(), &info) != 0) {
        return fail("cannot be opened (" + ErrorText() + ")");
    }
    if (!S_ISREG(info.st_mode)) {
        return fail("not a file");
    }
    const auto size = static_cast<std::uint64_t>(info.st_size);
    std::vector<std::uint8_t> header(kBaseBlockSize);
    const bool whole_header = ReadWhole(fd.get(), 0, header);
    if (size < 4 || std::memcmp(header.data(), "regf", 4) != 0) {
        return fail("not a registry hive (it does not begin with \"regf\")");
    }
    if (!whole_header) {
        return fail("truncated: " + std::to_string(size) +
                    " bytes, less than the 4096-byte header of a hive");
    }
    // A damaged header may still be recovered from the logs; only an intact one is judged.
    if (BaseBlock(header).ChecksumValid()) {
        if (BaseBlock(header).FileType() != kPrimaryFile) {
            return fail("a transaction log, not a hive");
        }
        if (BaseBlock(header).MajorVersion() != 1) {
            return fail("a hive of an unknown format version (" +
                        std::to_string(BaseBlock(header).MajorVersion()) + "." +
                        std::to_string(BaseBlock(header).MinorVersion()) + ")");
        }
    }

    std::vector<std::uint8_t> recovered;
    ReadAt read = [&](std::uint64_t at, std::span<std::uint8_t> out) {
        return ReadWhole(fd.get(), at, out);
    };
    std::uint64_t available = size;
    if (BaseBlock(header).Dirty()) {
        recovered.resize(static_cast<std::size_t>(size));
        if (!ReadWhole(fd.get(), 0, recovered)) {
            return fail("cannot be read (" + ErrorText() + ")");
        }
        Recover(file, label, recovered, warn);
        std::copy_n(recovered.begin(), kBaseBlockSize, header.begin());
        available = recovered.size();
        read = [&](std::uint64_t at, std::span<std::uint8_t> out) {
            if (at > recovered.size() || recovered.size() - at < out.size()) {
                return false;
            }
            std::copy_n(recovered.begin() + static_cast<std::ptrdiff_t>(at), out.size(),
                        out.begin());
            return true;
        };
    }

    const std::uint32_t bins_size = BaseBlock(header).HiveBinsSize();
    if (kBaseBlockSize + std::uint64_t{bins_size} > available) {
        return fail("truncated: its header counts " + std::to_string(bins_size) +
                    " bytes of hive bins, but only " + std::to_string(available - kBaseBlockSize) +
                    " follow it");
    }
    const std::string damage = CheckHiveBins(read, bins_size);

    FileDescriptor memory(recovered.empty() ? -1 : MemoryFile(recovered));
    std::string name = label;
    if (!recovered.empty()) {
        if (memory.get() < 0) {
            return fail("cannot be recovered in memory (" + ErrorText() + ")");
        }
        std::vector<std::uint8_t>().swap(recovered);
        name = "/proc/self/fd/" + std::to_string(memory.get());
    }
    hive_h* hive = damage.empty() ? hivex_open(name.c_str(), 0) : nullptr;
    if (hive == nullptr) {
        // Damaged cells or bins: read what can be read, leaving out the keys they hold.
        hive = hivex_open(name.c_str(), HIVEX_OPEN_UNSAFE);
        if (hive == nullptr) {
            return fail("a damaged hive that cannot be read" +
                        (damage.empty() ? " (" + ErrorText() + ")" : " (" + damage + ")"));
        }
        if (warn) {
            warn(label + ": the hive is damaged" + (damage.empty() ? "" : " (" + damage + ")") +
                 "; what can be read is read, the keys in its damaged parts are skipped");
        }
    }
    auto handle = std::make_unique<HivexHandle>(hive, memory.Release());
    if (hivex_root(hive) == 0) {
        return fail("a damaged hive: its root key cannot be read");
    }
    return OpenedHive{
        std::make_unique<HiveRegistry>(std::move(handle), label, std::move(warn), ansi), {}};
}

}  // namespace regvex::hive
