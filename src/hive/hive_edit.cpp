#include "hive/hive_edit.h"

#include <fcntl.h>
#include <hivex.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
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
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::hive {

namespace fs = std::filesystem;

namespace {

// Room beyond the old file's size that the new one may take: hivex appends what it
// writes to new hive bins.
constexpr std::uint64_t kSpareBytes = 1 << 20;

std::string Name(const fs::path& file) {
    return "\"" + file.string() + "\"";
}

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

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

void Step(const EditHooks& hooks, std::string_view step) {
    if (hooks.after_step) {
        hooks.after_step(step);
    }
}

bool SyncPath(const fs::path& path, int flags) {
    const FileDescriptor fd(open(path.c_str(), flags | O_CLOEXEC));
    return fd.get() >= 0 && fsync(fd.get()) == 0;
}

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

std::uint64_t FreeBytes(const fs::path& folder, const EditHooks& hooks) {
    if (hooks.free_bytes) {
        return hooks.free_bytes(folder);
    }
    struct statvfs info {};
    if (statvfs(folder.c_str(), &info) != 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
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
        return Name(file) + ": " + error;
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
    hive_type type{};
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
        const Malloced<char> data(hivex_value_value(hive, *each, &value.type, &size));
        if (!name || !data) {
            return false;
        }
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
            RawValue value{change->name, static_cast<hive_type>(change->type),
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
            set[i].t = raw[i].type;
            set[i].len = raw[i].data.size();
            set[i].value = raw[i].data.data();
        }
        if (hivex_node_set_values(hive, node, set.size(), set.data(), 0) != 0) {
            return "the values of key \"" + path + "\" cannot be written (" + ErrorText() + ")";
        }
    }
    return {};
}

// Copies the old file's bytes to the new file; empty when all were written.
std::string CopyFile(const fs::path& from, const fs::path& to, mode_t mode) {
    std::ifstream in(from, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in),
                                  std::istreambuf_iterator<char>()};
    if (in.bad()) {
        return Name(from) + " cannot be read";
    }
    const FileDescriptor fd(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (fd.get() < 0) {
        return Name(to) + " cannot be created (" + ErrorText() + ")";
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t wrote = write(fd.get(), bytes.data() + done, bytes.size() - done);
        if (wrote <= 0) {
            return Name(to) + " cannot be written (" + ErrorText() + ")";
        }
        done += static_cast<std::size_t>(wrote);
    }
    return {};
}

EditResult Failed(const fs::path& fresh, std::string message) {
    std::error_code ignored;
    fs::remove(fresh, ignored);
    return {EditOutcome::kFailed, std::move(message) + "; the file was not changed"};
}

}  // namespace

namespace {

// As below, keeping the listing of the hive read to find damage.
std::string WhyNot(const fs::path& file, const EditHooks& hooks, HiveListing& listing) {
    struct stat info {};
    if (stat(file.c_str(), &info) != 0) {
        return Name(file) + " cannot be read (" + ErrorText() + ")";
    }
    std::vector<std::uint8_t> base(kBaseBlockSize);
    {
        std::ifstream in(file, std::ios::binary);
        in.read(reinterpret_cast<char*>(base.data()), static_cast<std::streamsize>(base.size()));
        if (!in || !BaseBlock(base).HasSignature()) {
            return Name(file) + " is not a whole hive file";
        }
    }
    if (BaseBlock(base).Dirty()) {
        return Name(file) +
               " was not written cleanly: Windows has not yet applied its transaction logs "
               "(.LOG1, .LOG2) to it. Get a clean hive first: start that Windows once and shut "
               "it down, or restore the hive from Windows' own backup (RegBack, a restore "
               "point)";
    }
    const fs::path folder = fs::absolute(file).parent_path();
    struct statvfs mount {};
    if (statvfs(folder.c_str(), &mount) == 0 && (mount.f_flag & ST_RDONLY) != 0) {
        return Name(file) + " lies on a file system mounted read-only";
    }
    if ((info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(folder.c_str(), W_OK) != 0) {
        return Name(file) + " or its folder is read-only";
    }
    if (OnHibernatedPartition(file, info.st_dev)) {
        return Name(file) +
               " lies on a hibernated Windows partition (hiberfil.sys holds a hibernated "
               "system): start that Windows and shut it down fully first";
    }
    const std::uint64_t needed = static_cast<std::uint64_t>(info.st_size) + kSpareBytes;
    if (FreeBytes(folder, hooks) < needed) {
        return "there is no room for a changed copy of " + Name(file) + " in its folder (" +
               std::to_string(needed) + " bytes needed)";
    }
    const std::string damage = ReadWhole(file, listing);
    if (!damage.empty()) {
        return Name(file) + " is damaged: " + damage;
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
        return {EditOutcome::kRefused, Name(file) + ": " + error};
    }

    fs::path fresh = file;
    fresh += ".regvexlor-new";
    std::error_code ignored;
    fs::remove(fresh, ignored);  // left by a change that was interrupted
    struct stat info {};
    stat(file.c_str(), &info);
    error = CopyFile(file, fresh, info.st_mode & 07777);
    if (!error.empty()) {
        return Failed(fresh, error);
    }
    {
        const WritableHive hive(hivex_open(fresh.c_str(), HIVEX_OPEN_WRITE));
        if (!hive) {
            return Failed(
                fresh, "hivex cannot open " + Name(fresh) + " for writing (" + ErrorText() + ")");
        }
        error = WriteChanges(hive.get(), changes);
        if (!error.empty()) {
            return Failed(fresh, Name(file) + ": " + error);
        }
        if (hivex_commit(hive.get(), nullptr, 0) != 0) {
            return Failed(fresh, Name(fresh) + " cannot be written (" + ErrorText() + ")");
        }
    }
    Step(hooks, "written");
    if (!SyncPath(fresh, O_RDONLY)) {
        return Failed(fresh, Name(fresh) + " cannot be flushed to disk (" + ErrorText() + ")");
    }
    Step(hooks, "flushed");

    HiveListing found;
    error = ReadWhole(fresh, found);
    if (error.empty()) {
        error = FirstDifference(expected, found);
    }
    if (!error.empty()) {
        return Failed(fresh, "the changed copy of " + Name(file) + " is not right: " + error);
    }
    Step(hooks, "verified");

    // The old file keeps its name until the new one takes it: a link, where the file
    // system has them, keeps a copy of it under the other name first.
    const fs::path previous = PreviousFile(file);
    fs::remove(previous, ignored);
    if (link(file.c_str(), previous.c_str()) != 0 && rename(file.c_str(), previous.c_str()) != 0) {
        return Failed(
            fresh, Name(file) + " cannot be kept as " + Name(previous) + " (" + ErrorText() + ")");
    }
    Step(hooks, "linked");
    if (rename(fresh.c_str(), file.c_str()) != 0) {
        return Failed(fresh, Name(fresh) + " cannot take the name of " + Name(file) + " (" +
                                 ErrorText() + ")");
    }
    Step(hooks, "renamed");
    SyncPath(file.parent_path().empty() ? fs::path(".") : file.parent_path(),
             O_RDONLY | O_DIRECTORY);
    return {};
}

}  // namespace regvex::hive
