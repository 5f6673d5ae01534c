#include "engine/root_keys.h"

namespace regvex {

namespace {

struct RootKeyRow {
    std::string name;
    RootKeyHandle handle;
};

const std::array<RootKeyRow, 8>& Table() {
    static const std::array<RootKeyRow, 8> table{{
        {"HKEY_ALL", kHkeyAll},
        {"HKEY_CLASSES_ROOT", kHkeyClassesRoot},
        {"HKEY_CURRENT_USER", kHkeyCurrentUser},
        {"HKEY_LOCAL_MACHINE", kHkeyLocalMachine},
        {"HKEY_USERS", kHkeyUsers},
        {"HKEY_PERFORMANCE_DATA", kHkeyPerformanceData},
        {"HKEY_CURRENT_CONFIG", kHkeyCurrentConfig},
        {"HKEY_DYN_DATA", kHkeyDynData},
    }};
    return table;
}

}  // namespace

RootKeyHandle RootKeyFromName(std::string_view name) {
    for (const RootKeyRow& row : Table()) {
        if (row.name == name) {
            return row.handle;
        }
    }
    return kHkeyAll;
}

const std::string& RootKeyName(RootKeyHandle root) {
    static const std::string kNone;
    for (const RootKeyRow& row : Table()) {
        if (row.handle == root && root != kHkeyAll) {
            return row.name;
        }
    }
    return kNone;
}

}  // namespace regvex
