#pragma once
// A whole hive as our reader lists it, and the comparison that decides whether a changed
// hive holds exactly what it should: every key in walk order, every value with its type
// and data.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/registry.h"
#include "hive/hive_edit.h"

namespace regvex::hive {

struct ListedValue {
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
};

struct ListedKey {
    std::string path;  // below the hive's root; "" is the root
    std::vector<ListedValue> values;
};

// Keys depth first, subkeys and values in the registry's order.
using HiveListing = std::vector<ListedKey>;

// Lists the hive registry's root and everything below it. False with `error` set when
// some key or value cannot be read whole.
bool ListHive(Registry& registry, HiveListing& listing, std::string& error);

// Where in `values` the value `name` is: the same name, else the same name in another
// case (Windows finds names so); values.size() when it is not there.
std::size_t FindListedValue(const std::vector<ListedValue>& values, const std::string& name);

// Applies `changes` to the listing as the hive would take them. False with `error` naming
// the first change whose key (or, to delete, value) is not there.
bool ApplyToListing(HiveListing& listing, const std::vector<ValueChange>& changes,
                    std::string& error);

// The first difference between what a hive should hold and what it holds, or empty.
std::string FirstDifference(const HiveListing& expected, const HiveListing& found);

}  // namespace regvex::hive
