#include "generator/key_tree.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "generator/names.h"
#include "generator/random.h"
#include "text/upper_case.h"

namespace regvex::bench_generator {

namespace {

constexpr std::array<std::string_view, 12> kComSubkeys{"InprocServer32",
                                                       "LocalServer32",
                                                       "DefaultIcon",
                                                       "ProgID",
                                                       "VersionIndependentProgID",
                                                       "TypeLib",
                                                       "Implemented Categories",
                                                       "ToolboxBitmap32",
                                                       "MiscStatus",
                                                       "Version",
                                                       "ProxyStubClsid32",
                                                       "Elevation"};
constexpr std::array<std::string_view, 5> kExtensionSubkeys{
    "OpenWithProgids", "ShellNew", "PersistentHandler", "OpenWithList", "ShellEx"};
constexpr std::array<std::string_view, 8> kVerbs{"open", "edit",    "print",  "runas",
                                                 "play", "explore", "openas", "printto"};
constexpr std::array<std::string_view, 3> kVerbSubkeys{"command", "ddeexec", "DropTarget"};

// A key right below a root; `weight` is its share of the keys one level further down.
struct TopKey {
    std::string_view name;
    NameKind kind;
    double weight;
};

constexpr std::array<TopKey, 13> kClassesTop{{{"CLSID", NameKind::kGuidList, 800},
                                              {"Interface", NameKind::kGuidList, 300},
                                              {"TypeLib", NameKind::kGuidList, 100},
                                              {"AppID", NameKind::kGuidList, 100},
                                              {"*", NameKind::kGeneric, 5},
                                              {"Directory", NameKind::kGeneric, 5},
                                              {"Drive", NameKind::kGeneric, 3},
                                              {"Folder", NameKind::kGeneric, 5},
                                              {"MIME", NameKind::kGeneric, 10},
                                              {"SystemFileAssociations", NameKind::kGeneric, 20},
                                              {"Installer", NameKind::kGeneric, 40},
                                              {"Applications", NameKind::kGeneric, 20},
                                              {"Local Settings", NameKind::kGeneric, 5}}};
constexpr std::array<TopKey, 11> kUserTop{{{"Software", NameKind::kGeneric, 60},
                                           {"Control Panel", NameKind::kGeneric, 10},
                                           {"AppEvents", NameKind::kGeneric, 8},
                                           {"Console", NameKind::kGeneric, 2},
                                           {"Environment", NameKind::kGeneric, 1},
                                           {"EUDC", NameKind::kGeneric, 1},
                                           {"Keyboard Layout", NameKind::kGeneric, 2},
                                           {"Network", NameKind::kGeneric, 1},
                                           {"Printers", NameKind::kGeneric, 3},
                                           {"System", NameKind::kGeneric, 5},
                                           {"Volatile Environment", NameKind::kGeneric, 1}}};
// No HARDWARE: Windows builds it at every start as a volatile key, below which nothing
// can be imported.
constexpr std::array<TopKey, 5> kMachineTop{{{"SOFTWARE", NameKind::kGeneric, 60},
                                             {"SYSTEM", NameKind::kGeneric, 35},
                                             {"SAM", NameKind::kGeneric, 1},
                                             {"SECURITY", NameKind::kGeneric, 1},
                                             {"BCD00000000", NameKind::kGeneric, 1}}};

struct RootShape {
    RootKeyHandle handle;
    double share;  // of all keys
};

// Emission order; the share of HKEY_LOCAL_MACHINE takes whatever rounding leaves.
constexpr std::array<RootShape, 4> kRoots{{{kHkeyClassesRoot, 0.30},
                                           {kHkeyCurrentUser, 0.10},
                                           {kHkeyLocalMachine, 0.45},
                                           {kHkeyUsers, 0.15}}};

// Of the keys below the top level, the share at each depth from 2 to 8.
constexpr std::array<double, 7> kDepthShares{0.10, 0.18, 0.22, 0.20, 0.14, 0.10, 0.06};

class TreeBuilder {
  public:
    TreeBuilder(Random& rng, std::vector<TreeKey>& keys) : rng_(rng), keys_(keys) {}

    void Build(std::size_t total) {
        std::vector<std::size_t> budgets(kRoots.size());
        std::size_t assigned = 0;
        for (std::size_t r = 0; r < kRoots.size(); ++r) {
            budgets[r] = static_cast<std::size_t>(static_cast<double>(total) * kRoots[r].share);
            assigned += budgets[r];
        }
        budgets[2] += total - assigned;
        for (std::size_t r = 0; r < kRoots.size(); ++r) {
            BuildRoot(static_cast<std::uint8_t>(r), budgets[r]);
        }
    }

  private:
    void BuildRoot(std::uint8_t root, std::size_t budget) {
        std::vector<std::vector<std::uint32_t>> by_depth(9);
        std::vector<double> top_weights;  // running totals, to draw parents at depth 2
        const auto top = [&](std::string_view name, NameKind kind, double weight) {
            if (by_depth[1].size() < budget) {
                by_depth[1].push_back(Add(root, kNoKey, std::string(name), kind));
                top_weights.push_back((top_weights.empty() ? 0 : top_weights.back()) + weight);
            }
        };
        switch (kRoots[root].handle) {
            case kHkeyClassesRoot: {
                for (const TopKey& key : kClassesTop) {
                    top(key.name, key.kind, key.weight);
                }
                // File extensions and program identifiers make up much of the top level.
                const std::size_t extra = budget / 12;
                for (std::size_t i = 0; i < extra; ++i) {
                    if (rng_.Chance(0.6)) {
                        top("." + AsciiLower(rng_.Pick(kWords)).substr(0, rng_.Between(2, 4)) +
                                (rng_.Chance(0.3) ? Digits(rng_, 1) : ""),
                            NameKind::kExtension, 1);
                    } else {
                        top(ProgId(), NameKind::kGeneric, 1);
                    }
                }
                break;
            }
            case kHkeyCurrentUser:
                for (const TopKey& key : kUserTop) {
                    top(key.name, key.kind, key.weight);
                }
                break;
            case kHkeyLocalMachine:
                for (const TopKey& key : kMachineTop) {
                    top(key.name, key.kind, key.weight);
                }
                break;
            default: {
                const std::string sid = "S-1-5-21-" + Digits(rng_, 10) + "-" + Digits(rng_, 10) +
                                        "-" + Digits(rng_, 9) + "-1001";
                top(".DEFAULT", NameKind::kGeneric, 30);
                top(sid, NameKind::kGeneric, 50);
                top(sid + "_Classes", NameKind::kGeneric, 15);
                top("S-1-5-18", NameKind::kGeneric, 10);
                top("S-1-5-19", NameKind::kGeneric, 3);
                top("S-1-5-20", NameKind::kGeneric, 3);
                break;
            }
        }
        const std::size_t below = budget - by_depth[1].size();
        std::array<std::size_t, 9> counts{};
        std::size_t assigned = 0;
        for (std::size_t d = 2; d <= 8; ++d) {
            counts[d] = static_cast<std::size_t>(static_cast<double>(below) * kDepthShares[d - 2]);
            assigned += counts[d];
        }
        counts[4] += below - assigned;
        for (std::size_t d = 2; d <= 8; ++d) {
            // A depth without parents hands its keys on to the deepest level that has some.
            std::size_t parent_depth = d - 1;
            while (by_depth[parent_depth].empty()) {
                --parent_depth;
            }
            const std::vector<std::uint32_t>& parents = by_depth[parent_depth];
            for (std::size_t i = 0; i < counts[d]; ++i) {
                std::uint32_t parent = 0;
                if (parent_depth == 1) {
                    const double roll = rng_.Unit() * top_weights.back();
                    const auto at = std::upper_bound(top_weights.begin(), top_weights.end(), roll);
                    parent = parents[std::min<std::size_t>(
                        static_cast<std::size_t>(at - top_weights.begin()), parents.size() - 1)];
                } else {
                    parent = parents[rng_.Skewed(parents.size(), 2)];
                }
                auto [name, kind] = ChildName(keys_[parent].kind);
                by_depth[parent_depth + 1].push_back(Add(root, parent, std::move(name), kind));
            }
        }
    }

    std::string ProgId() {
        return std::string(rng_.Pick(kVendorStems)) + "." + CamelWords(rng_, 1) +
               (rng_.Chance(0.5) ? "." + std::to_string(rng_.Between(1, 12)) : "");
    }

    std::pair<std::string, NameKind> ChildName(NameKind parent_kind) {
        switch (parent_kind) {
            case NameKind::kGuidList:
                return {Guid(rng_), NameKind::kGuid};
            case NameKind::kGuid:
                if (rng_.Chance(0.8)) {
                    return {std::string(rng_.Pick(kComSubkeys)), NameKind::kGeneric};
                }
                break;
            case NameKind::kExtension:
                if (rng_.Chance(0.7)) {
                    return {std::string(rng_.Pick(kExtensionSubkeys)), NameKind::kGeneric};
                }
                break;
            case NameKind::kShell:
                return {std::string(rng_.Pick(kVerbs)), NameKind::kVerb};
            case NameKind::kVerb:
                if (rng_.Chance(0.8)) {
                    return {std::string(rng_.Pick(kVerbSubkeys)), NameKind::kGeneric};
                }
                break;
            case NameKind::kGeneric:
                break;
        }
        const double roll = rng_.Unit();
        if (roll < 0.55) {
            return {CamelWords(rng_, rng_.Between(1, 3)), NameKind::kGeneric};
        }
        if (roll < 0.63) {
            return {VendorName(rng_), NameKind::kGeneric};
        }
        if (roll < 0.71) {
            return {Digits(rng_, 4), NameKind::kGeneric};
        }
        if (roll < 0.81) {
            return {Guid(rng_), NameKind::kGuid};
        }
        if (roll < 0.86) {
            return {Phrase(rng_, 2), NameKind::kGeneric};
        }
        if (roll < 0.89) {
            return {"shell", NameKind::kShell};
        }
        if (roll < 0.91) {
            return {std::string(rng_.Pick(kForeignWords)), NameKind::kGeneric};
        }
        if (roll < 0.96) {
            return {AsciiLower(rng_.Pick(kWords)), NameKind::kGeneric};
        }
        return {ProgId(), NameKind::kGeneric};
    }

    std::uint32_t Add(std::uint8_t root, std::uint32_t parent, std::string name, NameKind kind) {
        // Sibling names differ in more than letter case, as the registry demands.
        const std::string scope = std::to_string(parent == kNoKey ? root : parent + 16u) +
                                  (parent == kNoKey ? "r|" : "|");
        if (!sibling_names_.insert(scope + text::UpperCase(name)).second) {
            for (std::size_t n = 2;; ++n) {
                std::string numbered = name + std::to_string(n);
                if (sibling_names_.insert(scope + text::UpperCase(numbered)).second) {
                    name = std::move(numbered);
                    break;
                }
            }
        }
        const auto index = static_cast<std::uint32_t>(keys_.size());
        TreeKey& key = keys_.emplace_back();
        key.name = std::move(name);
        key.parent = parent;
        key.root = root;
        key.kind = kind;
        if (parent != kNoKey) {
            TreeKey& up = keys_[parent];
            key.depth = static_cast<std::uint8_t>(up.depth + 1);
            if (up.first_child == kNoKey) {
                up.first_child = index;
            } else {
                keys_[up.last_child].next_sibling = index;
            }
            up.last_child = index;
        }
        return index;
    }

    Random& rng_;
    std::vector<TreeKey>& keys_;
    std::unordered_set<std::string> sibling_names_;
};

}  // namespace

std::vector<TreeKey> BuildKeyTree(Random& rng, std::size_t total) {
    std::vector<TreeKey> keys;
    keys.reserve(total);
    TreeBuilder(rng, keys).Build(total);
    return keys;
}

RootKeyHandle RootHandle(std::uint8_t root) {
    return kRoots[root].handle;
}

}  // namespace regvex::bench_generator
