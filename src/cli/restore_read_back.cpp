#include "cli/restore_read_back.h"

#include <algorithm>

namespace regvex::cli {

namespace {

std::string StatusReason(RegStatus status, std::string_view not_found) {
    switch (status) {
        case reg::kFileNotFound:
        case reg::kKeyDeleted:
            return std::string(not_found);
        case reg::kAccessDenied:
            return "access denied";
        default:
            return "error " + std::to_string(status);
    }
}

std::span<const std::uint8_t> WithoutEndingNuls(std::uint32_t type,
                                                const std::vector<std::uint8_t>& data) {
    std::size_t size = data.size();
    while (reg::IsTextType(type) && size > 0 && data[size - 1] == 0) {
        --size;
    }
    return {data.data(), size};
}

bool SameData(const backup::ExportValue& expected, std::uint32_t type,
              const std::vector<std::uint8_t>& data) {
    const auto wanted = WithoutEndingNuls(expected.type, expected.data);
    const auto found = WithoutEndingNuls(type, data);
    return type == expected.type &&
           std::equal(wanted.begin(), wanted.end(), found.begin(), found.end());
}

}  // namespace

std::vector<OfflineValue> ValuesHeld(MemoryRegistry& registry) {
    std::vector<OfflineValue> values;
    for (const RootKeyHandle root :
         {kHkeyLocalMachine, kHkeyCurrentUser, kHkeyClassesRoot, kHkeyUsers, kHkeyCurrentConfig}) {
        std::vector<std::string> pending{std::string()};
        while (!pending.empty()) {
            const std::string path = std::move(pending.back());
            pending.pop_back();
            ScopedKey key;
            if (ScopedKey::Open(registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
                continue;
            }
            OfflineValue value{root, path, {}};
            for (std::uint32_t i = 0;
                 registry.ReadValue(key.get(), i, value.value.name, value.value.type,
                                    value.value.data) == reg::kSuccess;
                 ++i) {
                values.push_back(value);
            }
            std::vector<std::string> children;
            std::string name;
            for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
                children.push_back(path.empty() ? name : path + "\\" + name);
            }
            pending.insert(pending.end(), children.rbegin(), children.rend());
        }
    }
    return values;
}

std::optional<backup::RegFileError> ValuesOfBackup(std::string_view bytes,
                                                   const text::AnsiCodePage& ansi,
                                                   std::vector<OfflineValue>& values) {
    MemoryRegistry registry(ansi);
    if (auto failure = backup::ImportRegText(bytes, registry, ansi)) {
        return failure;
    }
    values = ValuesHeld(registry);
    return std::nullopt;
}

std::vector<NotReadBack> ValuesNotReadBack(Registry& registry, AccessMask access,
                                           const std::vector<OfflineValue>& values) {
    std::vector<NotReadBack> missing;
    for (const OfflineValue& each : values) {
        ScopedKey key;
        const RegStatus opened = ScopedKey::Open(registry, each.root, each.key_path, access, key);
        if (opened != reg::kSuccess) {
            missing.push_back({&each, StatusReason(opened, "key missing")});
            continue;
        }
        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        const RegStatus read = registry.QueryValue(key.get(), each.value.name, type, data);
        if (read != reg::kSuccess) {
            missing.push_back({&each, StatusReason(read, "value missing")});
        } else if (!SameData(each.value, type, data)) {
            missing.push_back({&each, "different data"});
        }
    }
    return missing;
}

}  // namespace regvex::cli
