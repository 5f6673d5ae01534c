#include "cli/change_recorder.h"

#include <algorithm>
#include <utility>

#include "engine/forwarding_registry.h"
#include "text/upper_case.h"
#include "wine/wine_prefix.h"

namespace regvex::cli {

namespace {

// Reads go to the hive; writes are noted instead of made.
class NotingHive final : public ForwardingRegistry {
  public:
    NotingHive(std::unique_ptr<Registry> hive, NotedFile& noted,
               const std::optional<std::size_t>& next_position)
        : ForwardingRegistry(*hive),
          hive_(std::move(hive)),
          noted_(noted),
          next_position_(next_position) {}

    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override {
        const RegStatus status = hive_->OpenKey(root, path, access, key);
        if (status == reg::kSuccess) {
            paths_[key] = std::string(path);
        }
        return status;
    }
    RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                        KeyHandle& key) override {
        // No key is made offline: only one that exists can be opened.
        return OpenKey(root, path, access, key);
    }
    RegStatus CloseKey(KeyHandle key) override {
        paths_.erase(key);
        return hive_->CloseKey(key);
    }
    RegStatus ReadValue(KeyHandle key, std::uint32_t index, std::string& name, std::uint32_t& type,
                        std::vector<std::uint8_t>& data) override {
        return hive_->ReadValue(key, index, name, type, data);
    }
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override {
        const auto path = paths_.find(key);
        if (path == paths_.end()) {
            return reg::kInvalidHandle;
        }
        noted_.Note({path->second, std::string(name), false, type,
                     std::vector<std::uint8_t>(data.begin(), data.end()), next_position_});
        return reg::kSuccess;
    }
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override {
        const auto path = paths_.find(key);
        if (path == paths_.end()) {
            return reg::kInvalidHandle;
        }
        noted_.Note({path->second, std::string(name), true, 0, {}, std::nullopt});
        return reg::kSuccess;
    }

  private:
    std::unique_ptr<Registry> hive_;
    NotedFile& noted_;
    const std::optional<std::size_t>& next_position_;
    std::map<KeyHandle, std::string> paths_;
};

// Reads go to the prefix's registry; a write is noted for the file that holds the stored
// key it reaches, below that file's root.
class NotingWine final : public ForwardingRegistry {
  public:
    NotingWine(std::unique_ptr<wine::WineRegistry> wine,
               std::vector<std::pair<std::filesystem::path, std::string>> files,
               NotedChanges& noted)
        : ForwardingRegistry(*wine),
          wine_(std::move(wine)),
          files_(std::move(files)),
          noted_(noted) {}

    RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                        KeyHandle& key) override {
        return OpenKey(root, path, access, key);
    }
    RegStatus ReadValue(KeyHandle key, std::uint32_t index, std::string& name, std::uint32_t& type,
                        std::vector<std::uint8_t>& data) override {
        return wine_->ReadValue(key, index, name, type, data);
    }
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override {
        return Note(key, {{},
                          std::string(name),
                          false,
                          type,
                          std::vector<std::uint8_t>(data.begin(), data.end()),
                          std::nullopt});
    }
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override {
        return Note(key, {{}, std::string(name), true, 0, {}, std::nullopt});
    }

  private:
    // The file whose root is the longest that begins the key's path.
    RegStatus Note(KeyHandle key, ValueChange change) {
        const std::optional<std::string> path = wine_->StoredPath(key);
        if (!path) {
            return reg::kInvalidHandle;
        }
        const std::string upper_path = text::UpperCase(*path);
        const std::pair<std::filesystem::path, std::string>* holder = nullptr;
        for (const auto& file : files_) {
            const std::string root = text::UpperCase(file.second);
            if (upper_path.starts_with(root) &&
                (upper_path.size() == root.size() || upper_path[root.size()] == '\\') &&
                (holder == nullptr || file.second.size() > holder->second.size())) {
                holder = &file;
            }
        }
        if (holder == nullptr) {
            return reg::kAccessDenied;  // a key the server makes afresh, in no file
        }
        change.key_path = path->substr(std::min(path->size(), holder->second.size() + 1));
        NotedFile& noted = noted_[holder->first];
        noted.kind = RegistryFileKind::kWineFile;
        noted.Note(std::move(change));
        return reg::kSuccess;
    }

    std::unique_ptr<wine::WineRegistry> wine_;
    std::vector<std::pair<std::filesystem::path, std::string>> files_;
    NotedChanges& noted_;
};

}  // namespace

void NotedFile::Note(ValueChange change) {
    const bool again =
        change.remove && std::any_of(changes.begin(), changes.end(), [&](const ValueChange& each) {
            return each.remove && each.name == change.name &&
                   text::UpperCase(each.key_path) == text::UpperCase(change.key_path);
        });
    if (!again) {
        changes.push_back(std::move(change));
    }
}

std::unique_ptr<Registry> RecordingPlatform::OpenWinePrefix(const std::filesystem::path& prefix,
                                                            std::string& error,
                                                            std::vector<std::string>& warnings) {
    wine::WinePrefixRegistry read = wine::ReadWinePrefixRegistry(prefix);
    error = std::move(read.error);
    warnings.insert(warnings.end(), read.warnings.begin(), read.warnings.end());
    if (!read.registry) {
        return nullptr;
    }
    return std::make_unique<NotingWine>(std::move(read.registry), std::move(read.files), noted_);
}

std::unique_ptr<Registry> RecordingPlatform::OpenHive(const std::filesystem::path& file,
                                                      std::string& error, std::ostream& warnings) {
    auto hive = inner_.OpenHive(file, error, warnings);
    if (!hive) {
        return nullptr;
    }
    NotedFile& noted = noted_[file];
    noted.kind = RegistryFileKind::kHive;
    return std::make_unique<NotingHive>(std::move(hive), noted, next_position_);
}

}  // namespace regvex::cli
