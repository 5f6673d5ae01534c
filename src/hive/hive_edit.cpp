#include "hive/hive_edit.h"

#include <hivex.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>

#include "hive/base_block.h"
#include "hive/hive_file.h"
#include "hive/hive_listing.h"
#include "hive/hivex_handle.h"
#include "system/file_replace.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::hive {

namespace fs = std::filesystem;

namespace {

// Room beyond the old file's size that the new one may take: hivex appends what it
// writes to new hive bins.
constexpr std::uint64_t kSpareBytes = 1 << 20;

std::string ErrorText() {
    return std::strerror(errno);
}

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Malloced = std::unique_ptr<T, FreeDeleter>;

struct HiveCloser {
    void operator()(hive_h* hive) const { hivex_close(hive); }
};
using WritableHive = std::unique_ptr<hive_h, HiveCloser>;

// A Windows partition that was hibernated holds the running system's registry in its
// hibernation file: a change made now would be lost, or would corrupt it, when it wakes.
bool HibernatedAt(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (text::UpperCase(it->path().filename().string()) != "HIBERFIL.SYS") {
            continue;
        }
        std::ifstream in(it->path(), std::ios::binary);
        char magic[4] = {};
        if (in.read(magic, 4) &&
            (std::string_view(magic, 4) == "hibr" || std::string_view(magic, 4) == "HIBR")) {
            return true;
        }
    }
    return false;
}

// Looks for a hibernation file in the file's folder and each folder above it on the same
// file system, up to the root of the partition.
bool OnHibernatedPartition(const fs::path& file, dev_t device) {
    fs::path folder = fs::absolute(file).parent_path();
    for (;;) {
        if (HibernatedAt(folder)) {
            return true;
        }
        const fs::path parent = folder.parent_path();
        struct stat parent_stat {};
        if (parent == folder || stat(parent.c_str(), &parent_stat) != 0 ||
            parent_stat.st_dev != device) {
            return false;
        }
        folder = parent;
    }
}

// Opens the hive with our reader and lists it whole; empty when it reads cleanly.
std::string ReadWhole(const fs::path& file, HiveListing& listing) {
    std::string warnings;
    OpenedHive opened = OpenHiveFile(file, [&warnings](std::string_view warning) {
        if (warnings.empty()) {
            warnings = std::string(warning);
        }
    });
    if (!opened.registry) {
        return opened.error;
    }
    std::string error;
    if (!ListHive(*opened.registry, listing, error)) {
        return system::QuotedName(file) + ": " + error;
    }
    return warnings;
}

std::vector<std::uint8_t> StoredBytes(const ValueChange& change) {
    if (!reg::IsTextType(change.type)) {
        return change.data;
    }
    std::vector<std::uint8_t> bytes;
    const std::string_view utf8(reinterpret_cast<const char*>(change.data.data()),
                                change.data.size());
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

// One key's values as hivex holds them, to be written back with the changes made.
struct RawValue {
    std::string name;
    std::uint32_t type = 0;
    std::vector<char> data;
};

bool ReadRawValues(hive_h* hive, hive_node_h node, std::vector<RawValue>& values) {
    const Malloced<hive_value_h> handles(hivex_node_values(hive, node));
    if (!handles) {
        return false;
    }
    for (const hive_value_h* each = handles.get(); *each != 0; ++each) {
        RawValue value;
        const Malloced<char> name(hivex_value_key(hive, *each));
        std::size_t size = 0;
        hive_type type{};
        const Malloced<char> data(hivex_value_value(hive, *each, &type, &size));
        if (!name || !data) {
            return false;
        }
        value.type = TypeNumber(type);
        value.name = name.get();
        value.data.assign(data.get(), data.get() + size);
        values.push_back(std::move(value));
    }
    return true;
}

hive_node_h FindNode(hive_h* hive, std::string_view path) {
    hive_node_h node = hivex_root(hive);
    while (node != 0 && !path.empty()) {
        const std::size_t slash = path.find('\\');
        const std::string name(path.substr(0, slash));
        node = hivex_node_get_child(hive, node, name.c_str());
        path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    }
    return node;
}

// Makes the changes in the hive open for writing; empty when all were made.
std::string WriteChanges(hive_h* hive, const std::vector<ValueChange>& changes) {
    // Grouped by key, so that each key's value list is written once.
    std::map<std::string, std::vector<const ValueChange*>> by_key;
    for (const ValueChange& change : changes) {
        by_key[text::UpperCase(change.key_path)].push_back(&change);
    }
    for (const auto& [upper_path, key_changes] : by_key) {
        const std::string& path = key_changes.front()->key_path;
        const hive_node_h node = FindNode(hive, path);
        std::vector<RawValue> raw;
        if (node == 0 || !ReadRawValues(hive, node, raw)) {
            return "key \"" + path + "\" cannot be found or read";
        }
        // The names as our listing would match them.
        std::vector<ListedValue> names;
        for (const RawValue& value : raw) {
            names.push_back({value.name, 0, {}});
        }
        for (const ValueChange* change : key_changes) {
            const std::size_t at = FindListedValue(names, change->name);
            if (change->remove) {
                if (at == names.size()) {
                    return "key \"" + path + "\" has no value \"" + change->name + "\"";
                }
                raw.erase(raw.begin() + static_cast<std::ptrdiff_t>(at));
                names.erase(names.begin() + static_cast<std::ptrdiff_t>(at));
                continue;
            }
            const std::vector<std::uint8_t> bytes = StoredBytes(*change);
            RawValue value{change->name, change->type,
                           std::vector<char>(bytes.begin(), bytes.end())};
            if (at == names.size()) {
                const auto to =
                    static_cast<std::ptrdiff_t>(std::min(change->position.value_or(at), at));
                raw.insert(raw.begin() + to, std::move(value));
                names.insert(names.begin() + to, {change->name, 0, {}});
            } else {
                raw[at].type = value.type;
                raw[at].data = std::move(value.data);
            }
        }
        std::vector<hive_set_value> set(raw.size());
        for (std::size_t i = 0; i < raw.size(); ++i) {
            set[i].key = raw[i].name.data();
            SetTypeNumber(set[i].t, raw[i].type);
            set[i].len = raw[i].data.size();
            set[i].value = raw[i].data.data();
        }
        if (hivex_node_set_values(hive, node, set.size(), set.data(), 0) != 0) {
            return "the values of key \"" + path + "\" cannot be written (" + ErrorText() + ")";
        }
    }
    return {};
}

}  // namespace

namespace {

// As below, keeping the listing of the hive read to find damage.
std::string WhyNot(const fs::path& file, const EditHooks& hooks, HiveListing& listing) {
    struct stat info {};
    if (stat(file.c_str(), &info) != 0) {
        return system::QuotedName(file) + " cannot be read (" + ErrorText() + ")";
    }
    std::vector<std::uint8_t> base(kBaseBlockSize);
    {
        std::ifstream in(file, std::ios::binary);
        in.read(reinterpret_cast<char*>(base.data()), static_cast<std::streamsize>(base.size()));
        if (!in || !BaseBlock(base).HasSignature()) {
            return system::QuotedName(file) + " is not a whole hive file";
        }
    }
    if (BaseBlock(base).Dirty()) {
        return system::QuotedName(file) +
               " was not written cleanly: Windows has not yet applied its transaction logs "
               "(.LOG1, .LOG2) to it. Get a clean hive first: start that Windows once and shut "
               "it down, or restore the hive from Windows' own backup (RegBack, a restore "
               "point)";
    }
    std::string why_not = system::WhyFileCannotBeReplaced(file, kSpareBytes, hooks);
    if (!why_not.empty()) {
        return why_not;
    }
    if (OnHibernatedPartition(file, info.st_dev)) {
        return system::QuotedName(file) +
               " lies on a hibernated Windows partition (hiberfil.sys holds a hibernated "
               "system): start that Windows and shut it down fully first";
    }
    const std::string damage = ReadWhole(file, listing);
    if (!damage.empty()) {
        return system::QuotedName(file) + " is damaged: " + damage;
    }
    return {};
}

// The old file's bytes, then the changes made through hivex.
std::string WriteChangedCopy(const fs::path& file, const fs::path& fresh,
                             const std::vector<ValueChange>& changes) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) {
        return system::QuotedName(file) + " cannot be read";
    }
    std::string error = system::WriteNewFile(fresh, bytes, file);
    if (!error.empty()) {
        return error;
    }
    const WritableHive hive(hivex_open(fresh.c_str(), HIVEX_OPEN_WRITE));
    if (!hive) {
        return "hivex cannot open " + system::QuotedName(fresh) + " for writing (" + ErrorText() +
               ")";
    }
    error = WriteChanges(hive.get(), changes);
    if (!error.empty()) {
        return system::QuotedName(file) + ": " + error;
    }
    if (hivex_commit(hive.get(), nullptr, 0) != 0) {
        return system::QuotedName(fresh) + " cannot be written (" + ErrorText() + ")";
    }
    return {};
}

}  // namespace

std::string WhyHiveCannotChange(const fs::path& file, const EditHooks& hooks) {
    HiveListing listing;
    return WhyNot(file, hooks, listing);
}

EditResult EditHiveFile(const fs::path& file, const std::vector<ValueChange>& changes,
                        const EditHooks& hooks) {
    HiveListing expected;
    std::string why_not = WhyNot(file, hooks, expected);
    if (!why_not.empty()) {
        return {EditOutcome::kRefused, std::move(why_not)};
    }
    std::string error;
    if (!ApplyToListing(expected, changes, error)) {
        return {EditOutcome::kRefused, system::QuotedName(file) + ": " + error};
    }
    return system::ReplaceFile(
        file, [&](const fs::path& fresh) { return WriteChangedCopy(file, fresh, changes); },
        [&](const fs::path& fresh) {
            HiveListing found;
            const std::string unreadable = ReadWhole(fresh, found);
            return unreadable.empty() ? FirstDifference(expected, found) : unreadable;
        },
        hooks);
}

}  // namespace regvex::hive
