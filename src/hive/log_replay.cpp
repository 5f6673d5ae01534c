#include "hive/log_replay.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "hive/base_block.h"
#include "hive/marvin32.h"

namespace regvex::hive {

namespace {

constexpr std::size_t kEntryHeaderSize = 40;
constexpr std::size_t kPageReferenceSize = 8;
constexpr std::size_t kOldPageSize = 512;
constexpr std::size_t kFirstBinTimestamp = kBaseBlockSize + 20;

using Bytes = std::span<const std::uint8_t>;

std::size_t AlignUp(std::size_t value, std::size_t alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

bool HasTag(Bytes bytes, std::size_t at, const char (&tag)[5]) {
    return bytes.size() >= at + 4 && std::memcmp(bytes.data() + at, tag, 4) == 0;
}

// The log's own copy of the base block, when it is intact and of the format asked for.
bool UsableLogHeader(Bytes log, std::uint32_t file_type, std::string& problem) {
    if (log.size() < kLogSectorSize || !BaseBlock(log).HasSignature()) {
        problem = "not a transaction log";
        return false;
    }
    const BaseBlock header(log);
    if (!header.ChecksumValid()) {
        problem = "its header is damaged";
        return false;
    }
    if (header.FileType() != file_type) {
        problem = "not a transaction log";
        return false;
    }
    return true;
}

// One entry of a new-format log: the pages it writes and the hive's size after it.
struct LogEntry {
    std::uint32_t sequence = 0;
    std::uint32_t bins_size = 0;
    std::uint32_t page_count = 0;
    Bytes body;  // the page references, then the pages
};

// The entries of a log up to the first that is damaged or torn: Windows stops there too.
std::vector<LogEntry> ReadEntries(Bytes log) {
    std::vector<LogEntry> entries;
    for (std::size_t at = kLogSectorSize; HasTag(log, at, "HvLE");) {
        const Bytes rest = log.subspan(at);
        if (rest.size() < kEntryHeaderSize) {
            break;
        }
        const std::uint32_t size = ReadU32(rest, 4);
        if (size < kEntryHeaderSize || size % kLogSectorSize != 0 || size > rest.size()) {
            break;
        }
        const Bytes entry = rest.first(size);
        if (Marvin32(entry.subspan(kEntryHeaderSize), kLogEntrySeed) != ReadU64(entry, 24) ||
            Marvin32(entry.first(32), kLogEntrySeed) != ReadU64(entry, 32)) {
            break;
        }
        LogEntry parsed{ReadU32(entry, 12), ReadU32(entry, 16), ReadU32(entry, 20),
                        entry.subspan(kEntryHeaderSize)};
        if (parsed.bins_size % kHiveBinAlignment != 0 ||
            parsed.page_count > parsed.body.size() / kPageReferenceSize) {
            break;
        }
        std::size_t pages = parsed.page_count * kPageReferenceSize;
        bool fits = true;
        for (std::uint32_t i = 0; i < parsed.page_count && fits; ++i) {
            const std::uint64_t offset = ReadU32(parsed.body, i * kPageReferenceSize);
            const std::uint32_t page_size = ReadU32(parsed.body, i * kPageReferenceSize + 4);
            pages += page_size;
            fits = offset + page_size <= parsed.bins_size && pages <= parsed.body.size();
        }
        if (!fits) {
            break;
        }
        entries.push_back(parsed);
        at += size;
    }
    return entries;
}

void WritePages(std::vector<std::uint8_t>& hive, const LogEntry& entry) {
    hive.resize(kBaseBlockSize + entry.bins_size);
    std::size_t source = entry.page_count * kPageReferenceSize;
    for (std::uint32_t i = 0; i < entry.page_count; ++i) {
        const std::uint32_t offset = ReadU32(entry.body, i * kPageReferenceSize);
        const std::uint32_t size = ReadU32(entry.body, i * kPageReferenceSize + 4);
        std::memcpy(hive.data() + kBaseBlockSize + offset, entry.body.data() + source, size);
        source += size;
    }
}

bool ReplayNewFormat(std::vector<std::uint8_t>& hive, std::span<const TransactionLog> logs,
                     ReplayOutcome& outcome) {
    std::vector<LogEntry> entries;
    const TransactionLog* header_source = nullptr;
    for (const TransactionLog& log : logs) {
        std::string problem;
        if (!UsableLogHeader(log.bytes, kNewLogFile, problem)) {
            continue;
        }
        header_source = header_source != nullptr ? header_source : &log;
        const std::vector<LogEntry> found = ReadEntries(log.bytes);
        if (found.empty()) {
            outcome.problems.push_back(log.name + ": holds no intact log entry");
        }
        entries.insert(entries.end(), found.begin(), found.end());
    }
    if (header_source == nullptr) {
        return false;
    }
    std::vector<std::uint8_t> recovered(hive);
    // A damaged base block is taken from the log, which keeps a copy of its first sector.
    if (!BaseBlock(recovered).ChecksumValid()) {
        std::copy_n(header_source->bytes.begin(), kLogSectorSize, recovered.begin());
    }
    const std::uint32_t first = BaseBlock(recovered).PrimarySequence();
    std::stable_sort(entries.begin(), entries.end(),
                     [](const LogEntry& a, const LogEntry& b) { return a.sequence < b.sequence; });
    const LogEntry* last = nullptr;
    for (const LogEntry& entry : entries) {
        // Older entries are in the hive already; the same entry may be in both logs.
        if (entry.sequence < first || (last != nullptr && entry.sequence == last->sequence)) {
            continue;
        }
        WritePages(recovered, entry);
        last = &entry;
    }
    if (last == nullptr) {
        if (outcome.problems.empty()) {
            outcome.problems.push_back("the logs hold no change newer than the hive");
        }
        return false;
    }
    WriteU32(recovered, 40, last->bins_size);
    MarkClean(recovered, last->sequence);
    hive.swap(recovered);
    return true;
}

bool ReplayOldFormat(std::vector<std::uint8_t>& hive, const TransactionLog& log,
                     ReplayOutcome& outcome) {
    const Bytes bytes = log.bytes;
    const BaseBlock header(bytes);
    const BaseBlock primary(hive);
    // The log belongs to the state of the hive whose write it was meant to finish.
    const std::uint64_t written = primary.ChecksumValid() || hive.size() < kFirstBinTimestamp + 8
                                      ? primary.LastWritten()
                                      : ReadU64(hive, kFirstBinTimestamp);
    const std::uint32_t bins_size = header.HiveBinsSize();
    const std::size_t bitmap_bytes = (bins_size / kOldPageSize + 7) / 8;
    const std::size_t pages_at = AlignUp(kLogSectorSize + 4 + bitmap_bytes, kLogSectorSize);
    if (header.PrimarySequence() != header.SecondarySequence() ||
        bins_size % kHiveBinAlignment != 0 || !HasTag(bytes, kLogSectorSize, "DIRT") ||
        bytes.size() < pages_at) {
        outcome.problems.push_back(log.name + ": the log is incomplete");
        return false;
    }
    if (header.LastWritten() != written) {
        outcome.problems.push_back(log.name + ": the log belongs to another state of the hive");
        return false;
    }
    const Bytes bitmap = bytes.subspan(kLogSectorSize + 4, bitmap_bytes);
    std::size_t dirty = 0;
    for (const std::uint8_t byte : bitmap) {
        dirty += static_cast<std::size_t>(std::popcount(byte));
    }
    if (bytes.size() - pages_at < dirty * kOldPageSize) {
        outcome.problems.push_back(log.name + ": the log is incomplete");
        return false;
    }
    hive.resize(kBaseBlockSize + bins_size);
    std::size_t source = pages_at;
    for (std::size_t page = 0; page < bins_size / kOldPageSize; ++page) {
        if ((bitmap[page / 8] >> (page % 8)) & 1) {
            std::memcpy(hive.data() + kBaseBlockSize + page * kOldPageSize, bytes.data() + source,
                        kOldPageSize);
            source += kOldPageSize;
        }
    }
    std::copy_n(bytes.begin(), kLogSectorSize, hive.begin());
    MarkClean(hive, header.PrimarySequence());
    return true;
}

}  // namespace

ReplayOutcome ReplayLogs(std::vector<std::uint8_t>& hive, std::span<const TransactionLog> logs) {
    ReplayOutcome outcome;
    if (ReplayNewFormat(hive, logs, outcome)) {
        outcome.replayed = true;
        return outcome;
    }
    for (const TransactionLog& log : logs) {
        std::string problem;
        if (UsableLogHeader(log.bytes, kNewLogFile, problem)) {
            continue;  // reported above
        }
        if (!UsableLogHeader(log.bytes, kOldLogFile, problem)) {
            outcome.problems.push_back(log.name + ": " + problem);
            continue;
        }
        if (ReplayOldFormat(hive, log, outcome)) {
            outcome.replayed = true;
            return outcome;
        }
    }
    return outcome;
}

}  // namespace regvex::hive
