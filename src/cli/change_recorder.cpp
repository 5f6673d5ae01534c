#include "cli/change_recorder.h"

#include <utility>

namespace regvex::cli {

namespace {

// Reads go to the hive; writes are noted instead of made.
class NotingHive final : public Registry {
  public:
    NotingHive(std::unique_ptr<Registry> hive, std::vector<hive::ValueChange>& noted,
               const std::optional<std::size_t>& next_position)
        : hive_(std::move(hive)), noted_(noted), next_position_(next_position) {}

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
    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override {
        return hive_->EnumKey(key, index, name);
    }
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override {
        return hive_->EnumValue(key, index, value);
    }
    RegStatus QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                         std::vector<std::uint8_t>& data) override {
        return hive_->QueryValue(key, name, type, data);
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
        noted_.push_back({path->second, std::string(name), false, type,
                          std::vector<std::uint8_t>(data.begin(), data.end()), next_position_});
        return reg::kSuccess;
    }
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override {
        const auto path = paths_.find(key);
        if (path == paths_.end()) {
            return reg::kInvalidHandle;
        }
        noted_.push_back({path->second, std::string(name), true, 0, {}, std::nullopt});
        return reg::kSuccess;
    }

  private:
    std::unique_ptr<Registry> hive_;
    std::vector<hive::ValueChange>& noted_;
    const std::optional<std::size_t>& next_position_;
    std::map<KeyHandle, std::string> paths_;
};

}  // namespace

std::unique_ptr<Registry> RecordingPlatform::OpenHive(const std::filesystem::path& file,
                                                      std::string& error, std::ostream& warnings) {
    auto hive = inner_.OpenHive(file, error, warnings);
    if (!hive) {
        return nullptr;
    }
    return std::make_unique<NotingHive>(std::move(hive), noted_[file], next_position_);
}

}  // namespace regvex::cli
