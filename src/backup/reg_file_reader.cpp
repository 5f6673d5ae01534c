#include "backup/reg_file_reader.h"

#include <exception>
#include <fstream>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

#include "backup/reg_file_parser.h"
#include "engine/registry.h"

namespace regvex {

namespace {

RegFileError ApplyFailure(const RegFileChange& change, std::string_view what, RegStatus status) {
    return RegFileError{change.line, "the registry refused to " + std::string(what) + " (error " +
                                         std::to_string(status) + ")"};
}

// Parsing has already accepted every change, so only the registry itself can refuse
// one here, such as a key that may not be written to.
std::optional<RegFileError> Apply(const std::vector<RegFileChange>& changes,
                                  MemoryRegistry& registry) {
    ScopedKey key;
    for (const RegFileChange& change : changes) {
        switch (change.kind) {
            case RegFileChange::Kind::kOpenKey: {
                const RegStatus status =
                    ScopedKey::Create(registry, change.root, change.path, reg::kKeyAllAccess, key);
                if (status != reg::kSuccess) {
                    return ApplyFailure(change, "create the key", status);
                }
                break;
            }
            case RegFileChange::Kind::kDeleteKey: {
                key.Close();
                const RegStatus status = registry.DeleteKeyTree(change.root, change.path);
                if (status != reg::kSuccess && status != reg::kFileNotFound) {
                    return ApplyFailure(change, "delete the key", status);
                }
                break;
            }
            case RegFileChange::Kind::kSetValue: {
                const RegStatus status =
                    registry.SetValue(key.get(), change.name, change.type, change.data);
                if (status != reg::kSuccess) {
                    return ApplyFailure(change, "set the value", status);
                }
                break;
            }
            case RegFileChange::Kind::kDeleteValue: {
                const RegStatus status = registry.DeleteValue(key.get(), change.name);
                if (status != reg::kSuccess && status != reg::kFileNotFound) {
                    return ApplyFailure(change, "delete the value", status);
                }
                break;
            }
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<RegFileError> ImportRegText(std::string_view bytes, MemoryRegistry& registry,
                                          const text::AnsiCodePage& ansi) {
    try {
        RegFileParse parsed = ParseRegText(bytes, ansi);
        if (RegFileError* error = std::get_if<RegFileError>(&parsed)) {
            return std::move(*error);
        }
        return Apply(std::get<std::vector<RegFileChange>>(parsed), registry);
    } catch (const std::bad_alloc&) {
        return RegFileError{0, "there is not enough memory to read the file"};
    } catch (const std::exception& e) {
        return RegFileError{0, std::string("the file could not be read: ") + e.what()};
    }
}

std::optional<RegFileError> ImportRegFile(const std::filesystem::path& file,
                                          MemoryRegistry& registry,
                                          const text::AnsiCodePage& ansi) {
    try {
        std::error_code error;
        // An ifstream opens a directory on some systems and then reads nothing.
        if (!std::filesystem::is_regular_file(file, error)) {
            return RegFileError{0, "the file does not exist or is not a file"};
        }
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            return RegFileError{0, "the file could not be opened"};
        }
        const std::string bytes{std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>()};
        if (in.bad()) {
            return RegFileError{0, "the file could not be read"};
        }
        return ImportRegText(bytes, registry, ansi);
    } catch (const std::bad_alloc&) {
        return RegFileError{0, "there is not enough memory to read the file"};
    } catch (const std::exception& e) {
        return RegFileError{0, std::string("the file could not be read: ") + e.what()};
    }
}

}  // namespace regvex
