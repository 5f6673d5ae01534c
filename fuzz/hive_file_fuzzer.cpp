// A hive file on any bytes, with what follows a "LOG1" marker in the input as its
// transaction log: opened as the command line opens a hive (the log replayed when the
// hive was not written cleanly) and listed whole, every key and value, as an offline fix
// lists it before and after a change. A hive from a damaged disk must give a message,
// never a crash.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "hive/hive_file.h"
#include "hive/hive_listing.h"

namespace {

// Writes `bytes` to the file `path`.
bool WriteFile(const std::string& path, std::string_view bytes) {
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace regvex;
    static const std::string folder = [] {
        char name[] = "/tmp/regvex-hive-fuzz.XXXXXX";
        return std::string(mkdtemp(name));
    }();
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t marker = input.find("LOG1");
    const std::string hive = folder + "/HIVE";
    const std::string log = hive + ".LOG1";
    std::remove(log.c_str());
    if (!WriteFile(hive, input.substr(0, marker)) ||
        (marker != std::string_view::npos && !WriteFile(log, input.substr(marker + 4)))) {
        return 0;
    }
    hive::OpenedHive opened = hive::OpenHiveFile(hive, [](std::string_view) {});
    if (!opened.registry) {
        if (opened.error.empty()) {
            __builtin_trap();  // a refusal says why
        }
        return 0;
    }
    hive::HiveListing listing;
    std::string error;
    if (!hive::ListHive(*opened.registry, listing, error) && error.empty()) {
        __builtin_trap();
    }
    return 0;
}
