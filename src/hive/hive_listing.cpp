#include "hive/hive_listing.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

#include "text/upper_case.h"

namespace regvex::hive {

bool ListHive(Registry& registry, HiveListing& listing, std::string& error) {
    listing.clear();
    // Depth first without recursion: a hive may be 512 levels deep.
    std::vector<std::string> pending{std::string()};
    std::string name;
    while (!pending.empty()) {
        ListedKey key{std::move(pending.back()), {}};
        pending.pop_back();
        ScopedKey opened;
        if (ScopedKey::Open(registry, kHkeyLocalMachine, key.path, reg::kKeyRead, opened) !=
            reg::kSuccess) {
            error = "key \"" + key.path + "\" cannot be opened";
            return false;
        }
        RegStatus status = reg::kSuccess;
        for (std::uint32_t index = 0;; ++index) {
            ListedValue value;
            status = registry.ReadValue(opened.get(), index, value.name, value.type, value.data);
            if (status != reg::kSuccess) {
                break;
            }
            key.values.push_back(std::move(value));
        }
        if (status != reg::kNoMoreItems) {
            error = "the values of key \"" + key.path + "\" cannot all be read";
            return false;
        }
        std::vector<std::string> children;
        for (std::uint32_t index = 0;
             (status = registry.EnumKey(opened.get(), index, name)) == reg::kSuccess; ++index) {
            children.push_back(key.path.empty() ? name : key.path + "\\" + name);
        }
        if (status != reg::kNoMoreItems) {
            error = "the subkeys of key \"" + key.path + "\" cannot all be read";
            return false;
        }
        std::move(children.rbegin(), children.rend(), std::back_inserter(pending));
        listing.push_back(std::move(key));
    }
    return true;
}

std::size_t FindListedValue(const std::vector<ListedValue>& values, const std::string& name) {
    const auto exact = std::find_if(values.begin(), values.end(),
                                    [&](const ListedValue& value) { return value.name == name; });
    if (exact != values.end()) {
        return static_cast<std::size_t>(exact - values.begin());
    }
    const std::string upper = text::UpperCase(name);
    const auto caseless = std::find_if(values.begin(), values.end(), [&](const ListedValue& value) {
        return text::UpperCase(value.name) == upper;
    });
    return static_cast<std::size_t>(caseless - values.begin());
}

bool ApplyToListing(HiveListing& listing, const std::vector<ValueChange>& changes,
                    std::string& error) {
    std::unordered_map<std::string, std::size_t> by_upper_path;
    for (std::size_t i = 0; i < listing.size(); ++i) {
        by_upper_path.emplace(text::UpperCase(listing[i].path), i);
    }
    for (const ValueChange& change : changes) {
        const auto found = by_upper_path.find(text::UpperCase(change.key_path));
        if (found == by_upper_path.end()) {
            error = "there is no key \"" + change.key_path + "\"";
            return false;
        }
        ListedKey* const key = &listing[found->second];
        const std::size_t at = FindListedValue(key->values, change.name);
        if (change.remove) {
            if (at == key->values.size()) {
                error = "key \"" + change.key_path + "\" has no value \"" + change.name + "\"";
                return false;
            }
            key->values.erase(key->values.begin() + static_cast<std::ptrdiff_t>(at));
        } else if (at == key->values.size()) {
            const std::size_t to = std::min(change.position.value_or(at), at);
            key->values.insert(key->values.begin() + static_cast<std::ptrdiff_t>(to),
                               {change.name, change.type, change.data});
        } else {
            key->values[at].type = change.type;
            key->values[at].data = change.data;
        }
    }
    return true;
}

std::string FirstDifference(const HiveListing& expected, const HiveListing& found) {
    const std::size_t keys = std::min(expected.size(), found.size());
    for (std::size_t k = 0; k < keys; ++k) {
        const ListedKey& want = expected[k];
        const ListedKey& got = found[k];
        if (want.path != got.path) {
            return "key \"" + got.path + "\" stands where \"" + want.path + "\" should";
        }
        const std::size_t values = std::min(want.values.size(), got.values.size());
        for (std::size_t v = 0; v < values; ++v) {
            const ListedValue& a = want.values[v];
            const ListedValue& b = got.values[v];
            if (a.name != b.name) {
                return "key \"" + want.path + "\": value \"" + b.name + "\" stands where \"" +
                       a.name + "\" should";
            }
            if (a.type != b.type || a.data != b.data) {
                return "key \"" + want.path + "\": value \"" + a.name +
                       "\" has other data or another type";
            }
        }
        if (want.values.size() != got.values.size()) {
            return "key \"" + want.path + "\" has " + std::to_string(got.values.size()) +
                   " values instead of " + std::to_string(want.values.size());
        }
    }
    if (expected.size() != found.size()) {
        return std::to_string(found.size()) + " keys instead of " + std::to_string(expected.size());
    }
    return {};
}

}  // namespace regvex::hive
