#include "backup/path_repair.h"

#include <exception>
#include <string_view>

#include "backup/backup_file.h"
#include "text/concat.h"
#include "text/upper_case.h"

namespace regvex::backup {

using text::Concat;

namespace {

struct ValueName {
    std::string_view key;
    std::string_view name;
};

std::optional<ValueName> SplitValuePath(std::string_view path) {
    const std::size_t p = path.rfind('\\');
    if (p == std::string_view::npos) {
        return std::nullopt;
    }
    return ValueName{path.substr(0, p), path.substr(p + 1)};
}

std::string FirstString(std::span<const std::uint8_t> data) {
    const std::string_view text(reinterpret_cast<const char*>(data.data()), data.size());
    return std::string(text.substr(0, text.find('\0')));
}

std::string StatusText(RegStatus status) {
    switch (status) {
        case reg::kFileNotFound:
            return "not found";
        case reg::kAccessDenied:
            return "access denied";
        default:
            return Concat({"error ", std::to_string(status)});
    }
}

// Query rights in the same registry view as `access`.
AccessMask QueryAccess(AccessMask access) {
    return reg::kKeyQueryValue | (access & (reg::kKeyWow64_64Key | reg::kKeyWow64_32Key));
}

struct OpenValue {
    ScopedKey key;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    ValuePath path;
};

OpenValue OpenForRepair(Registry& registry, AccessMask access, const PathRepairRequest& request) {
    OpenValue open;
    const std::optional<ValueName> value = SplitValuePath(request.sub_key);
    if (!value) {
        open.path.status = reg::kFileNotFound;
        return open;
    }
    // Query rights first, so that a value that is gone is told apart from one that may
    // only be read.
    {
        ScopedKey reading;
        const RegStatus status = ScopedKey::Open(registry, RootKeyFromName(request.root_key),
                                                 value->key, QueryAccess(access), reading);
        if (status == reg::kSuccess) {
            open.path.status =
                registry.QueryValue(reading.get(), value->name, open.type, open.data);
        } else {
            open.path.status = status;
        }
        if (open.path.status != reg::kSuccess) {
            return open;
        }
    }
    open.path.found = FindPathInData(open.type, open.data, request.scan_drive);
    if (!open.path.found || text::UpperCase(open.path.found->path) != request.old_path) {
        open.path.outcome = PathRepairOutcome::kPathChanged;
        return open;
    }
    open.path.status =
        ScopedKey::Open(registry, RootKeyFromName(request.root_key), value->key, access, open.key);
    open.path.outcome = open.path.status == reg::kSuccess ? PathRepairOutcome::kRepaired
                                                          : PathRepairOutcome::kNotWritable;
    return open;
}

}  // namespace

std::optional<PathInData> FindPathInData(std::uint32_t type, std::span<const std::uint8_t> data,
                                         std::string_view scan_drive) {
    if (!reg::IsTextType(type)) {
        // Numbers and bytes are shown as digits, which never name a drive.
        return std::nullopt;
    }
    PathInData found;
    found.first_string = FirstString(data);
    const std::optional<TextSpan> span = ReferencedPathSpan(found.first_string, scan_drive);
    if (!span) {
        return std::nullopt;
    }
    found.span = *span;
    found.path = found.first_string.substr(span->start, span->length);
    return found;
}

std::vector<std::uint8_t> ReplacePathInData(std::span<const std::uint8_t> data, TextSpan span,
                                            std::string_view new_path) {
    std::vector<std::uint8_t> out;
    out.reserve(data.size() - span.length + new_path.size());
    out.insert(out.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(span.start));
    out.insert(out.end(), new_path.begin(), new_path.end());
    out.insert(out.end(), data.begin() + static_cast<std::ptrdiff_t>(span.start + span.length),
               data.end());
    return out;
}

ValuePath ReadValuePath(Registry& registry, AccessMask access, const PathRepairRequest& request) {
    return OpenForRepair(registry, access, request).path;
}

PathRepairResult RepairFilePath(Registry& registry, AccessMask access, const BackupTarget& backup,
                                const PathRepairRequest& request) {
    OpenValue open = OpenForRepair(registry, access, request);
    PathRepairResult result;
    result.outcome = open.path.outcome;
    result.status = open.path.status;
    if (result.outcome != PathRepairOutcome::kRepaired) {
        return result;
    }
    const PathInData& found = *open.path.found;

    // Two backups of one second share a name, and the second would replace the first.
    const std::string backup_path =
        Concat({BackupsFolder(backup.program_folder), "\\", BackupFileName(backup.date_text)});
    if (backup.files.Exists(backup_path)) {
        result.outcome = PathRepairOutcome::kBackupNameTaken;
        return result;
    }
    try {
        CreateBackupFile(backup.files, backup.program_folder, backup.date_text,
                         {{request.root_key, request.sub_key, found.first_string}},
                         backup.code_page);
    } catch (const std::exception& error) {
        result.outcome = PathRepairOutcome::kBackupFailed;
        result.detail = error.what();
        return result;
    }

    const std::vector<std::uint8_t> data =
        ReplacePathInData(open.data, found.span, request.new_path);
    const std::optional<ValueName> value = SplitValuePath(request.sub_key);
    result.status = registry.SetValue(open.key.get(), value->name, open.type, data);
    if (result.status != reg::kSuccess) {
        backup.files.RemoveFile(backup_path);
        result.outcome = PathRepairOutcome::kWriteFailed;
        return result;
    }
    result.value_text = FirstString(data);
    return result;
}

std::string PathRepairRefusal(const PathRepairResult& result) {
    switch (result.outcome) {
        case PathRepairOutcome::kRepaired:
            return {};
        case PathRepairOutcome::kValueUnreadable:
            return Concat({"The value cannot be read (", StatusText(result.status),
                           "); it may have been removed since the scan. Nothing was changed."});
        case PathRepairOutcome::kPathChanged:
            return "The value no longer names the missing file; it has changed since the scan. "
                   "Nothing was changed.";
        case PathRepairOutcome::kNotWritable:
            return Concat({"The value cannot be written (", StatusText(result.status),
                           "). Nothing was changed."});
        case PathRepairOutcome::kBackupNameTaken:
            return "A backup was made a moment ago under the same name. Please try again in a "
                   "second; nothing was changed.";
        case PathRepairOutcome::kBackupFailed:
            return Concat({"The backup could not be written, so the value was left as it was. ",
                           result.detail});
        case PathRepairOutcome::kWriteFailed:
            return Concat({"The value could not be written (", StatusText(result.status),
                           "). It was left as it was, and its backup was removed."});
    }
    return {};
}

}  // namespace regvex::backup
