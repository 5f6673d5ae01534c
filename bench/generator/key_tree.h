#pragma once
// The shape of the registry: its keys, before any value is put in them.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/root_keys.h"

namespace regvex::bench_generator {

class Random;

enum class NameKind : std::uint8_t { kGeneric, kGuidList, kGuid, kExtension, kShell, kVerb };

inline constexpr std::uint32_t kNoKey = 0xFFFFFFFF;

struct TreeKey {
    std::string name;
    std::uint32_t parent = kNoKey;
    std::uint32_t first_child = kNoKey;
    std::uint32_t last_child = kNoKey;
    std::uint32_t next_sibling = kNoKey;
    std::uint8_t root = 0;
    std::uint8_t depth = 1;
    NameKind kind = NameKind::kGeneric;
};

// Keys in the order they were made, each parent before its children; a key's `root`
// indexes the roots in the order they are to be written.
std::vector<TreeKey> BuildKeyTree(Random& rng, std::size_t total);

RootKeyHandle RootHandle(std::uint8_t root);

}  // namespace regvex::bench_generator
