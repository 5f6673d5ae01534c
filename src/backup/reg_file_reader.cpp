#include "backup/reg_file_reader.h"

#include <exception>
#include <fstream>
#include <new>
#include <stdexcept>
#include <system_error>

#include "backup/reg_file_lines.h"
#include "backup/reg_file_parser.h"
#include "engine/registry.h"

namespace regvex::backup {

namespace {

RegFileError ApplyFailure(const RegFileChange& change, std::string_view what, RegStatus status) {
    return RegFileError{change.line, "the registry refused to " + std::string(what) + " (error " +
                                         std::to_string(status) + ")"};
}

// The parser has accepted the change, so only the registry itself can refuse it here,
// such as a key that may not be written to.
std::optional<RegFileError> Apply(const RegFileChange& change, MemoryRegistry& registry,
                                  ScopedKey& key) {
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
    return std::nullopt;
}

// Each change is applied as soon as it is read; a fault anywhere takes them all back.
std::optional<RegFileError> Import(ByteSource& source, MemoryRegistry& registry,
                                   const text::AnsiCodePage& ansi) {
    try {
        RegFileLines lines(source, ansi);
        if (std::optional<RegFileError> error = lines.Open()) {
            return error;
        }
        RegFileParser parser(lines, ansi);
        if (std::optional<RegFileError> error = parser.ReadHeader()) {
            return error;
        }
        MemoryRegistry::UndoScope undo(registry);
        ScopedKey key;  // closed before the undoing
        RegFileChange change;
        RegFileError error;
        while (true) {
            switch (parser.Next(change, error)) {
                case RegFileParser::Step::kEnd:
                    key.Close();
                    undo.Keep();
                    return std::nullopt;
                case RegFileParser::Step::kError:
                    return error;
                case RegFileParser::Step::kChange:
                    if (std::optional<RegFileError> refused = Apply(change, registry, key)) {
                        return refused;
                    }
                    break;
            }
        }
    } catch (const std::bad_alloc&) {
        return RegFileError{0, "there is not enough memory to read the file"};
    } catch (const std::exception& e) {
        return RegFileError{0, std::string("the file could not be read: ") + e.what()};
    }
}

class StreamByteSource final : public ByteSource {
  public:
    StreamByteSource(std::istream& in, bool can_rewind) : in_(in), can_rewind_(can_rewind) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        in_.read(buffer, static_cast<std::streamsize>(size));
        if (in_.bad()) {
            throw std::runtime_error("reading failed");
        }
        return static_cast<std::size_t>(in_.gcount());
    }
    bool CanRewind() const override { return can_rewind_; }
    void Rewind() override {
        in_.clear();
        if (!in_.seekg(0)) {
            throw std::runtime_error("the file could not be read a second time");
        }
    }

  private:
    std::istream& in_;
    bool can_rewind_;
};

}  // namespace

std::optional<RegFileError> ImportRegText(std::string_view bytes, MemoryRegistry& registry,
                                          const text::AnsiCodePage& ansi) {
    MemoryByteSource source(bytes);
    return Import(source, registry, ansi);
}

std::optional<RegFileError> ImportRegFile(const std::filesystem::path& file,
                                          MemoryRegistry& registry,
                                          const text::AnsiCodePage& ansi) {
    try {
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::status(file, error);
        if (!std::filesystem::exists(status)) {
            return RegFileError{0, "the file does not exist"};
        }
        // An ifstream opens a folder on some systems and then reads nothing.
        if (std::filesystem::is_directory(status)) {
            return RegFileError{0, "this is a folder, not a file"};
        }
        // Pipes and devices are read as they come: `--registry <(...)` or /dev/stdin.
        if (!std::filesystem::is_regular_file(status) && !std::filesystem::is_fifo(status) &&
            !std::filesystem::is_character_file(status) &&
            !std::filesystem::is_block_file(status)) {
            return RegFileError{0, "this is not a file that can be read"};
        }
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            return RegFileError{0, "the file could not be opened"};
        }
        StreamByteSource source(in, std::filesystem::is_regular_file(status));
        return Import(source, registry, ansi);
    } catch (const std::bad_alloc&) {
        return RegFileError{0, "there is not enough memory to read the file"};
    } catch (const std::exception& e) {
        return RegFileError{0, std::string("the file could not be read: ") + e.what()};
    }
}

}  // namespace regvex::backup
