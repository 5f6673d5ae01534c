// The Windows side of round_trip.sh: writes the round-trip tree into the registry, and
// writes down every value below it, one line each, so that two moments can be compared.
//
//   regvex_round_trip_tool make N
//   regvex_round_trip_tool snapshot FILE

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "engine/win32_registry_win32.h"
#include "round_trip/round_trip_tree.h"

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    regvex::Win32Registry registry;
    if (command == "make" && argc == 3) {
        const std::size_t count = std::strtoul(argv[2], nullptr, 10);
        if (count == 0 ||
            !regvex::bench::WriteTree(registry, regvex::bench::RoundTripTree(count))) {
            std::fprintf(stderr, "the tree could not be written\n");
            return 1;
        }
        std::printf("wrote %zu values below HKEY_CURRENT_USER\\%s\n", count,
                    std::string(regvex::bench::kRoundTripKey).c_str());
        return 0;
    }
    if (command == "snapshot" && argc == 3) {
        std::ofstream out(argv[2], std::ios::binary);
        const auto values = regvex::bench::Snapshot(registry, regvex::bench::kRoundTripKey);
        for (const auto& [where, data] : values) {
            out << where << '\t' << data << '\n';
        }
        std::printf("%zu values\n", values.size());
        return out ? 0 : 1;
    }
    std::fprintf(stderr, "usage: regvex_round_trip_tool make N | snapshot FILE\n");
    return 2;
}
