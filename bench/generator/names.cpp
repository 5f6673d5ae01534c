#include "generator/names.h"

#include "generator/random.h"

namespace regvex::bench_generator {

namespace {

constexpr std::array<std::string_view, 10> kVendorSuffixes{
    "Soft",  "Labs",  " Systems", " Software", " Media",
    "Works", " Tech", " Games",   "Data",      " Networks"};
constexpr std::array<std::string_view, 20> kProductSuffixes{
    "Studio", "Player", "Editor", "Manager", "Sync",     "Backup", "Viewer",
    "Reader", "Tools",  "Suite",  "Center",  "Updater",  "Driver", "Helper",
    "Agent",  "Client", "Server", "Console", "Designer", "Monitor"};

}  // namespace

std::string AsciiLower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return out;
}

std::string Join(std::string_view a, std::string_view b) {
    std::string out(a);
    out.push_back('\\');
    out.append(b);
    return out;
}

std::string Guid(Random& rng) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    static constexpr std::array<int, 5> kGroups{8, 4, 4, 4, 12};
    std::string out = "{";
    for (std::size_t g = 0; g < kGroups.size(); ++g) {
        if (g != 0) {
            out.push_back('-');
        }
        for (int i = 0; i < kGroups[g]; ++i) {
            out.push_back(kHex[rng.Below(16)]);
        }
    }
    out.push_back('}');
    return out;
}

std::string CamelWords(Random& rng, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        out.append(rng.Pick(kWords));
    }
    return out;
}

std::string Phrase(Random& rng, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0) {
            out.push_back(' ');
        }
        out.append(rng.Pick(kWords));
    }
    return out;
}

std::string VendorName(Random& rng) {
    return std::string(rng.Pick(kVendorStems)) + std::string(rng.Pick(kVendorSuffixes));
}

std::string ProductName(Random& rng) {
    std::string out(rng.Pick(kProductStems));
    if (rng.Chance(0.4)) {
        out.push_back(' ');
    }
    out.append(rng.Pick(kProductSuffixes));
    if (rng.Chance(0.25)) {
        out.push_back(' ');
        out += std::to_string(rng.Between(2, 12));
    }
    return out;
}

std::string Digits(Random& rng, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(static_cast<char>('0' + rng.Below(10)));
    }
    return out;
}

}  // namespace regvex::bench_generator
