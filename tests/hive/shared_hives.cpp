#include "shared_hives.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "support/temp_folder.h"

namespace regvex::testing {

namespace {

TempFolder& Scratch() {
    static TempFolder folder;
    return folder;
}

std::filesystem::path SourceFolder() {
    const char* configured = std::getenv("REGVEX_SHARED_HIVES");
    return configured != nullptr && *configured != '\0' ? configured : REGVEX_SHARED_HIVES;
}

}  // namespace

std::filesystem::path SharedHive(std::string_view name) {
    const std::filesystem::path source = SourceFolder() / (std::string(name) + ".xz");
    const std::filesystem::path target = Scratch().path() / "hives" / name;
    if (std::filesystem::exists(target)) {
        return target;
    }
    if (!std::filesystem::is_regular_file(source)) {
        return {};
    }
    std::filesystem::create_directories(target.parent_path());
    const std::string command = "xz -dc '" + source.string() + "' > '" + target.string() +
                                ".part' && mv '" + target.string() + ".part' '" + target.string() +
                                "'";
    if (std::system(command.c_str()) != 0) {
        return {};
    }
    return target;
}

std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteBytes(const std::filesystem::path& file, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

std::filesystem::path ScratchFolder(std::string_view name) {
    const std::filesystem::path folder = Scratch().path() / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

std::size_t CountKeys(Registry& registry, const std::string& path, std::size_t limit) {
    ScopedKey key;
    if (ScopedKey::Open(registry, kHkeyLocalMachine, path, reg::kKeyRead, key) != reg::kSuccess) {
        return 0;
    }
    std::size_t count = 1;
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    for (std::uint32_t i = 0; registry.ReadValue(key.get(), i, name, type, data) == reg::kSuccess;
         ++i) {
    }
    for (std::uint32_t i = 0;
         count < limit && registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
        count += CountKeys(registry, path.empty() ? name : path + "\\" + name, limit - count);
    }
    return count;
}

}  // namespace regvex::testing
