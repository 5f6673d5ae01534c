#include "round_trip/round_trip_tree.h"

#include <functional>

#include "text/concat.h"

namespace regvex::bench {

namespace {

using text::Concat;

struct Alphabet {
    std::string_view part;
    std::vector<std::string_view> words;  // characters the part's texts are made of
};

// Western code page only, and beyond it (Cyrillic, CJK, a character outside the BMP).
const Alphabet kAnsi{kAnsiPart,
                     {"Caf\xC3\xA9", "M\xC3\xBCnchen",
                      "Stra\xC3\x9F"
                      "e",
                      "\xE2\x82\xAC", "na\xC3\xAFve"}};
const Alphabet kUnicode{kUnicodePart,
                        {"\xD0\x96\xD1\x83\xD0\xBA", "\xE6\x97\xA5\xE6\x9C\xAC",
                         "\xE6\x96\x87\xE4\xBB\xB6", "\xF0\x9F\x98\x80", "\xCE\xB1\xCE\xB2"}};

std::string LongFolder(std::size_t depth) {
    std::string path;
    for (std::size_t i = 0; i < depth; ++i) {
        path += Concat({"Vexlor Long Folder ", std::to_string(i), "\\"});
    }
    return path;
}

TreeValue MakeValue(const Alphabet& alphabet, std::size_t i) {
    const std::string n = std::to_string(i);
    const std::string_view word = alphabet.words[i % alphabet.words.size()];
    const std::size_t group = i / 10;
    std::string key = Concat({kRoundTripKey, "\\", alphabet.part, "\\"});
    switch (group % 4) {
        case 0:
            key += Concat({"Group ", std::to_string(group)});
            break;
        case 1:
            key += Concat({"Group \"", std::to_string(group), "\" quoted"});
            break;
        case 2:
            key += Concat({word, " ", std::to_string(group)});
            break;
        default:
            key += Concat({"Nested ", std::to_string(group), "\\Deeper [", word, "]"});
            break;
    }
    TreeValue value{key, "", ""};
    // The first value of every key is its default value.
    if (i % 10 != 0) {
        switch (i % 5) {
            case 0:
                value.name = Concat({"Value ", n});
                break;
            case 1:
                value.name = Concat({"Say \"", n, "\""});
                break;
            case 2:
                value.name = Concat({word, " ", n});
                break;
            case 3:
                value.name = Concat({"a=b [", n, "] @"});
                break;
            default:
                value.name = Concat({"%1 ", n, " ;x"});
                break;
        }
    }
    switch (i % 7) {
        case 0:
            value.data = Concat({"C:\\Vexlor Gone\\app", n, ".exe"});
            break;
        case 1:
            value.data = Concat({"\"C:\\Program Files\\Vexlor Gone ", n, "\\run.exe\" /x \"%1\""});
            break;
        case 2:
            value.data = Concat({"C:\\Vexlor Gone\\", word, "\\", word, n, ".dll"});
            break;
        case 3:
            value.data = Concat({"C:\\Vexlor Gone\\", LongFolder(30), "file", n, ".exe"});
            break;
        case 4:
            value.data = Concat({"tool.exe /q:\\\"x\\\" C:\\Vexlor Gone\\lib", n, ".dll,Entry"});
            break;
        case 5:
            // A line break no quoted text of a backup can hold; only where the backup is in
            // the Unicode format already, so that the other one stays a "REGEDIT4" file.
            value.data = alphabet.part != kUnicodePart
                             ? Concat({"C:\\Vexlor Gone\\settings ", n, ".ini"})
                             : Concat({"C:\\Vexlor Gone\\two ", n, ".exe\r\nline two"});
            break;
        default:
            value.data = Concat({"C:\\Vexlor Gone\\icon", n, ".ico,0"});
            break;
    }
    return value;
}

}  // namespace

std::vector<TreeValue> RoundTripTree(std::size_t count) {
    std::vector<TreeValue> values;
    values.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(MakeValue(i % 2 == 0 ? kAnsi : kUnicode, i / 2));
    }
    return values;
}

bool WriteTree(Registry& registry, const std::vector<TreeValue>& values) {
    for (const TreeValue& value : values) {
        ScopedKey key;
        if (ScopedKey::Create(registry, kHkeyCurrentUser, value.key, reg::kKeyAllAccess, key) !=
            reg::kSuccess) {
            return false;
        }
        std::vector<std::uint8_t> data(value.data.begin(), value.data.end());
        data.push_back(0);
        if (registry.SetValue(key.get(), value.name, reg::kSz, data) != reg::kSuccess) {
            return false;
        }
    }
    return true;
}

std::map<std::string, std::string> Snapshot(Registry& registry, std::string_view path) {
    std::map<std::string, std::string> values;
    const std::function<void(const std::string&)> walk = [&](const std::string& key_path) {
        ScopedKey key;
        if (ScopedKey::Open(registry, kHkeyCurrentUser, key_path, reg::kKeyRead, key) !=
            reg::kSuccess) {
            return;
        }
        ValueSlot slot;
        for (std::uint32_t i = 0; registry.EnumValue(key.get(), i, slot) == reg::kSuccess; ++i) {
            std::string data = std::to_string(slot.type) + ":";
            if (reg::IsTextType(slot.type)) {
                data.append(reinterpret_cast<const char*>(slot.data.data()), slot.size);
            } else {
                static constexpr char kHex[] = "0123456789abcdef";
                for (std::uint32_t b = 0; b < slot.size; ++b) {
                    data += kHex[slot.data[b] >> 4];
                    data += kHex[slot.data[b] & 15];
                }
            }
            values[Concat({key_path, "\t", slot.name})] = std::move(data);
        }
        std::vector<std::string> subkeys;
        std::string name;
        for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
            subkeys.push_back(name);
        }
        key.Close();
        for (const std::string& subkey : subkeys) {
            walk(Concat({key_path, "\\", subkey}));
        }
    };
    walk(std::string(path));
    return values;
}

}  // namespace regvex::bench
