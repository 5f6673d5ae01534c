// Every key and value of real hives against reglookup, an independent reader, and the
// buffer rules of the scan against what reglookup shows of the values they hold back.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hive/hive_file.h"
#include "shared_hives.h"
#include "text/utf8.h"

namespace regvex::hive {
namespace {

using testing::SharedHive;

// One line of reglookup's listing, its %XX quoting undone.
struct Entry {
    std::vector<std::string> path;  // key names from the root
    bool is_key = false;
    std::string value_name;
    std::string type;
    std::string data;
};

std::string Unquote(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            out += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string_view::npos) {
            return parts;
        }
        start = end + 1;
    }
}

std::vector<Entry> RunReglookup(const std::filesystem::path& hive) {
    const std::string command = "reglookup -H '" + hive.string() + "' 2>/dev/null";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::vector<Entry> entries;
    std::string line;
    for (int c; pipe && (c = std::fgetc(pipe.get())) != EOF;) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        const std::vector<std::string_view> fields = Split(line, ',');
        if (fields.size() >= 3) {
            Entry entry;
            std::vector<std::string_view> names = Split(fields[0].substr(1), '/');
            entry.is_key = fields[1] == "KEY";
            if (!entry.is_key) {
                entry.value_name = Unquote(names.back());
                names.pop_back();
            }
            for (const std::string_view name : names) {
                if (!name.empty()) {
                    entry.path.push_back(Unquote(name));
                }
            }
            entry.type = fields[1];
            entry.data = Unquote(fields[2]);
            entries.push_back(std::move(entry));
        }
        line.clear();
    }
    return entries;
}

std::string Utf16Bytes(std::string_view utf8) {
    std::string out;
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        out += static_cast<char>(unit & 0xFF);
        out += static_cast<char>(unit >> 8);
    }
    return out;
}

// reglookup shows names up to their first NUL, as US-ASCII or else as the bytes the hive
// stores: Latin-1 for compressed names, UTF-16LE for the others.
bool SameName(std::string_view ours, std::string_view theirs) {
    ours = ours.substr(0, ours.find('\0'));
    if (ours == theirs) {
        return true;
    }
    std::string latin1;
    for (const char16_t unit : text::Utf8ToUtf16(ours)) {
        latin1 += unit < 0x100 ? static_cast<char>(unit) : '?';
    }
    return latin1 == theirs || Utf16Bytes(ours) == theirs;
}

const char* TypeName(std::uint32_t type) {
    static const char* const kNames[] = {"NONE",      "SZ",        "EXPAND_SZ",     "BINARY",
                                         "DWORD",     "DWORD_BE",  "LINK",          "MULTI_SZ",
                                         "RSRC_LIST", "RSRC_DESC", "RSRC_REQ_LIST", "QWORD"};
    return type < std::size(kNames) ? kNames[type] : "";
}

std::string Hex(std::uint64_t number, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*llX", digits, static_cast<unsigned long long>(number));
    return text;
}

// Whether reglookup's rendering of data shows the same bytes as ours.
bool SameData(std::uint32_t type, std::string_view ours, std::string_view theirs) {
    if (ours.empty()) {
        return theirs == "(null)";
    }
    const auto number = [&](std::size_t size) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size && i < ours.size(); ++i) {
            value |= static_cast<std::uint64_t>(static_cast<unsigned char>(ours[i])) << (8 * i);
        }
        return value;
    };
    switch (type) {
        case reg::kSz:
        case reg::kExpandSz: {
            // Text up to its NUL, or the stored bytes where it is not ASCII, one odd byte
            // at their end included (the registry drops it).
            const std::string_view shown = ours.substr(0, ours.find('\0'));
            const std::string stored = Utf16Bytes(ours);
            return theirs == shown || theirs == stored ||
                   (theirs.size() == stored.size() + 1 && theirs.starts_with(stored));
        }
        case reg::kMultiSz: {
            std::string joined;
            for (const std::string_view part : Split(ours, '\0')) {
                if (!part.empty()) {
                    joined += (joined.empty() ? "" : "|") + std::string(part);
                }
            }
            return theirs == joined || theirs == Utf16Bytes(ours);
        }
        case reg::kDword:
            return ours.size() != 4 || theirs == Hex(number(4), 8);
        case reg::kQword:
            return ours.size() != 8 || theirs == Hex(number(8), 16);
        default:
            return theirs == ours;
    }
}

class HiveListing : public ::testing::TestWithParam<const char*> {};

TEST_P(HiveListing, ShowsWhatReglookupShows) {
    REGVEX_REQUIRE_HIVE(file, GetParam());
    std::vector<std::string> warnings;
    OpenedHive opened = OpenHiveFile(file, [&](std::string_view w) { warnings.emplace_back(w); });
    ASSERT_TRUE(opened.registry) << opened.error;
    HiveRegistry& registry = *opened.registry;
    const std::vector<Entry> expected = RunReglookup(file);
    ASSERT_FALSE(expected.empty()) << "reglookup printed nothing";

    std::size_t at = 0;
    std::vector<std::string> failures;
    const auto fail = [&](const std::string& what) {
        if (failures.size() < 10) {
            failures.push_back(what);
        }
    };
    // Walks like reglookup: a key, its values, then its subkeys.
    std::function<void(const std::string&, std::size_t)> walk = [&](const std::string& path,
                                                                    std::size_t depth) {
        if (at >= expected.size() || !expected[at].is_key || expected[at].path.size() != depth) {
            fail("key " + path + " where reglookup has another line");
            return;
        }
        ++at;
        ScopedKey key;
        ASSERT_EQ(ScopedKey::Open(registry, kHkeyLocalMachine, path, reg::kKeyAllAccess, key),
                  reg::kSuccess);
        ValueSlot slot;
        for (std::uint32_t i = 0;; ++i, ++at) {
            const RegStatus status = registry.EnumValue(key.get(), i, slot);
            if (status == reg::kNoMoreItems) {
                break;
            }
            if (at >= expected.size() || expected[at].is_key) {
                fail("value " + std::to_string(i) + " of " + path + " that reglookup lacks");
                return;
            }
            const Entry& theirs = expected[at];
            std::string ours;
            std::uint32_t type = 0;
            if (status == reg::kMoreData) {
                // Held back from the scan: a long name or big data; the whole of it is
                // there to be queried.
                std::vector<std::uint8_t> data;
                ASSERT_EQ(registry.QueryValue(key.get(), theirs.value_name, type, data),
                          reg::kSuccess)
                    << path << "\\" << theirs.value_name;
                ours.assign(data.begin(), data.end());
                EXPECT_TRUE(theirs.value_name.size() >= 260 || data.size() > 4096) << path;
            } else {
                ASSERT_EQ(status, reg::kSuccess);
                type = slot.type;
                ours.assign(reinterpret_cast<const char*>(slot.data.data()), slot.size);
                if (!SameName(slot.name, theirs.value_name)) {
                    fail("value name " + slot.name + " of " + path + ", reglookup " +
                         theirs.value_name);
                }
            }
            if (theirs.type != TypeName(type) && TypeName(type)[0] != '\0') {
                fail("type of " + path + "\\" + theirs.value_name + ": " + TypeName(type) +
                     ", reglookup " + theirs.type);
            }
            if (!SameData(type, ours, theirs.data)) {
                fail("data of " + path + "\\" + theirs.value_name + ": " + ours + ", reglookup " +
                     theirs.data);
            }
        }
        std::string name;
        for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
            if (at < expected.size() && expected[at].path.size() == depth + 1 &&
                !SameName(name, expected[at].path.back())) {
                fail("subkey " + name + " of " + path + ", reglookup " + expected[at].path.back());
            }
            walk(path.empty() ? name : path + "\\" + name, depth + 1);
        }
    };
    walk("", 0);
    EXPECT_EQ(at, expected.size()) << "lines of reglookup not matched";
    EXPECT_TRUE(failures.empty()) << ::testing::PrintToString(failures);
}

INSTANTIATE_TEST_SUITE_P(RealHives, HiveListing,
                         ::testing::Values("hivex-special", "plaso-NTUSER.DAT",
                                           "regipy-ntuser_software_partial", "regipy-UsrClass.dat"),
                         [](const auto& test) {
                             std::string name = test.param;
                             for (char& c : name) {
                                 c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             }
                             return name;
                         });

}  // namespace
}  // namespace regvex::hive
