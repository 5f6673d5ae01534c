#pragma once
// The recovery Windows makes of a hive that was not written cleanly: the changes kept in
// its transaction logs are written over the hive, here in memory only. Both log formats:
// the new one (sealed entries of whole pages, Windows 8.1 and later) and the old one (a
// bitmap of dirty 512-byte pages followed by those pages).

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace regvex::hive {

struct TransactionLog {
    std::string name;  // for messages
    std::vector<std::uint8_t> bytes;
};

struct ReplayOutcome {
    bool replayed = false;
    // Why each log that was not used could not be, one text per log.
    std::vector<std::string> problems;
};

// `hive` is the whole primary file, at least a base block long, with the "regf"
// signature. When a log applies, `hive` becomes the recovered hive with a clean base
// block; otherwise it is left as it was.
ReplayOutcome ReplayLogs(std::vector<std::uint8_t>& hive, std::span<const TransactionLog> logs);

}  // namespace regvex::hive
