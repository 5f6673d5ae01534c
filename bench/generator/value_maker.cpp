#include "generator/value_maker.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "engine/registry.h"
#include "generator/names.h"
#include "generator/random.h"
#include "text/upper_case.h"

namespace regvex::bench_generator {

namespace {

constexpr std::array<std::string_view, 48> kValueNames{"DisplayName",
                                                       "DisplayVersion",
                                                       "Publisher",
                                                       "InstallLocation",
                                                       "InstallDate",
                                                       "DisplayIcon",
                                                       "EstimatedSize",
                                                       "Version",
                                                       "Path",
                                                       "Flags",
                                                       "Enabled",
                                                       "Type",
                                                       "Start",
                                                       "ErrorControl",
                                                       "Description",
                                                       "ThreadingModel",
                                                       "LastUpdate",
                                                       "Language",
                                                       "Options",
                                                       "Mode",
                                                       "Size",
                                                       "Count",
                                                       "Index",
                                                       "Order",
                                                       "Timeout",
                                                       "Level",
                                                       "Status",
                                                       "Value",
                                                       "Data",
                                                       "Name",
                                                       "Id",
                                                       "Guid",
                                                       "Class",
                                                       "Source",
                                                       "Target",
                                                       "Url",
                                                       "Title",
                                                       "Width",
                                                       "Height",
                                                       "Left",
                                                       "Top",
                                                       "Format",
                                                       "Provider",
                                                       "Location",
                                                       "MRUList",
                                                       "Group",
                                                       "Tag",
                                                       "ObjectName"};

constexpr std::array<std::string_view, 12> kArguments{
    "/start",   "-minimized",       "/background", "--silent",          "-k netsvcs",
    "/n",       "-Embedding",       "/automation", "/uninstall /quiet", "-tray",
    "/autorun", "--profile default"};
constexpr std::array<std::string_view, 10> kEntryPoints{
    "Control_RunDLL", "OpenAs_RunDLL",        "LaunchSetup",  "ShowDialog",
    "DllInstall",     "ImageView_Fullscreen", "PrintUIEntry", "InstallHinfSection",
    "RunAsNewUser",   "Options_RunDLL"};
constexpr std::array<std::string_view, 6> kEnvironmentFolders{"%SystemRoot%\\System32\\",
                                                              "%SystemRoot%\\",
                                                              "%ProgramFiles%\\",
                                                              "%CommonProgramFiles%\\",
                                                              "%USERPROFILE%\\AppData\\Local\\",
                                                              "%windir%\\SysWOW64\\"};

std::string AsciiUpper(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return out;
}

std::string VersionText(Random& rng) {
    return std::to_string(rng.Between(1, 20)) + "." + std::to_string(rng.Below(10)) + "." +
           std::to_string(rng.Below(30000)) + "." + std::to_string(rng.Below(1000));
}

void SetText(std::vector<std::uint8_t>& data, std::string_view text) {
    data.assign(text.begin(), text.end());
    data.push_back(0);
}

void SetTexts(std::vector<std::uint8_t>& data, std::span<const std::string> texts) {
    data.clear();
    for (const std::string& text : texts) {
        data.insert(data.end(), text.begin(), text.end());
        data.push_back(0);
    }
    data.push_back(0);
}

void SetNumber(std::vector<std::uint8_t>& data, std::uint64_t number, std::size_t bytes) {
    data.resize(bytes);
    for (std::size_t i = 0; i < bytes; ++i) {
        data[i] = static_cast<std::uint8_t>(number >> (8 * i));
    }
}

void SetRandomBytes(Random& rng, std::vector<std::uint8_t>& data, std::size_t size) {
    data.resize(size);
    for (std::size_t i = 0; i < size; i += 8) {
        const std::uint64_t bits = rng.Next();
        for (std::size_t b = 0; b < 8 && i + b < size; ++b) {
            data[i + b] = static_cast<std::uint8_t>(bits >> (8 * b));
        }
    }
}

}  // namespace

ValueMaker::ValueMaker(Random& rng, const std::vector<RegistryGenerator::DriveFile>& existing,
                       const std::vector<RegistryGenerator::DriveFile>& missing,
                       const std::vector<std::string>& folders,
                       const std::vector<std::string>& x86_folders, GenerationSummary& summary,
                       double file_references)
    : rng_(rng),
      file_references_(file_references),
      existing_(existing),
      missing_(missing),
      folders_(folders),
      x86_folders_(x86_folders),
      summary_(summary) {}

void ValueMaker::MakeValues(RegistrySink& sink, std::size_t count) {
    used_names_.clear();
    bool blocked = false;  // an oversized value ends the scan's look at this key
    for (std::size_t i = 0; i < count; ++i) {
        const bool reached = !blocked;
        if (!reached) {
            ++summary_.unreached_values;
        }
        std::string name = i == 0 && rng_.Chance(0.25) ? std::string() : ValueName();
        std::uint32_t type = reg::kSz;
        const double roll = rng_.Unit();
        // After the file references: 1 % refused path texts, 0.3 % unmatched ones and
        // 0.01 % oversized values.
        const double references = file_references_;
        if (roll < references) {
            type = FileReference(reached);
        } else if (roll < references + 0.01) {
            RejectedPath();
            ++summary_.rejected_paths;
        } else if (roll < references + 0.013) {
            type = UnmatchedPath(name);
            ++summary_.rejected_paths;
        } else if (roll < references + 0.0131) {
            type = Oversized();
            ++summary_.oversized_values;
            blocked = true;
        } else {
            type = Ordinary();
        }
        name = UniqueName(std::move(name));
        sink.Value(name, type, data_);
        ++summary_.values;
    }
}

std::string ValueMaker::ValueName() {
    const double roll = rng_.Unit();
    if (roll < 0.55) {
        return std::string(rng_.Pick(kValueNames));
    }
    if (roll < 0.85) {
        return CamelWords(rng_, rng_.Between(1, 2));
    }
    if (roll < 0.93) {
        return std::string(1, static_cast<char>('a' + rng_.Below(26)));
    }
    if (roll < 0.98) {
        return Guid(rng_);
    }
    return std::string(rng_.Pick(kForeignWords));
}

std::string ValueMaker::UniqueName(std::string name) {
    std::string upper = text::UpperCase(name);
    if (std::find(used_names_.begin(), used_names_.end(), upper) != used_names_.end()) {
        for (std::size_t n = 2;; ++n) {
            std::string numbered = name + std::to_string(n);
            std::string numbered_upper = text::UpperCase(numbered);
            if (std::find(used_names_.begin(), used_names_.end(), numbered_upper) ==
                used_names_.end()) {
                name = std::move(numbered);
                upper = std::move(numbered_upper);
                break;
            }
        }
    }
    used_names_.push_back(std::move(upper));
    return name;
}

// "C:\dir\name" as users see it typed: mostly as installed, sometimes all lower or
// all upper case, now and then with a lower-case drive letter.
std::string ValueMaker::PathText(std::string_view dir, std::string_view name) {
    std::string rest = Join(dir, name);
    const double roll = rng_.Unit();
    if (roll >= 0.85) {
        rest = AsciiUpper(rest);
    } else if (roll >= 0.7) {
        rest = AsciiLower(rest);
    }
    return (rng_.Chance(0.1) ? "c:\\" : "C:\\") + rest;
}

const RegistryGenerator::DriveFile& ValueMaker::AnyFile() {
    const auto& pool = rng_.Chance(0.5) ? existing_ : missing_;
    return pool[rng_.Skewed(pool.size(), 2)];
}

std::uint32_t ValueMaker::FileReference(bool reached) {
    const bool exists = rng_.Chance(0.5);
    const auto& pool = exists ? existing_ : missing_;
    const RegistryGenerator::DriveFile& file = pool[rng_.Skewed(pool.size(), 2)];
    ++summary_.file_references;
    if (!exists) {
        ++summary_.missing_references;
        if (reached) {
            ++summary_.expected_findings;
        }
    }
    const std::string path = PathText(file.dir, file.name);
    const std::string_view extension = std::string_view(file.name).substr(file.name.rfind('.') + 1);
    std::string text;
    const double roll = rng_.Unit();
    if (!file.path_rules_cut_extension) {
        // Nothing may follow such a path but an icon index.
        text = extension == "ico" && roll < 0.5 ? path + "," + std::to_string(rng_.Below(8)) : path;
    } else if (extension == "exe") {
        if (roll < 0.30) {
            text = path;
        } else if (roll < 0.40) {
            text = "\"" + path + "\"";
        } else if (roll < 0.60) {
            text = "\"" + path + "\" " + std::string(rng_.Pick(kArguments));
        } else if (roll < 0.65) {
            text = path + " " + std::string(rng_.Pick(kArguments));
        } else if (roll < 0.80) {
            static constexpr std::array<std::string_view, 4> kOpen{
                "\" \"%1\"", "\" %1", "\" /open \"%1\"", "\" -- \"%1\""};
            text =
                rng_.Chance(0.2) ? path + " \"%1\"" : "\"" + path + std::string(rng_.Pick(kOpen));
        } else {
            text = path + "," + IconIndex();
        }
    } else if (extension == "dll" || extension == "cpl" || extension == "ocx") {
        if (roll < 0.45) {
            text = path;
        } else if (roll < 0.55) {
            text = "\"" + path + "\"";
        } else if (roll < 0.80 || extension == "ocx") {
            text = path + "," + IconIndex();
        } else {
            const std::string_view runner =
                rng_.Chance(0.5) ? "rundll32.exe " : "%SystemRoot%\\System32\\rundll32.exe ";
            text = std::string(runner) + (rng_.Chance(0.8) ? path : "\"" + path + "\"") + "," +
                   std::string(rng_.Pick(kEntryPoints));
            if (rng_.Chance(0.3)) {
                text += " " + std::to_string(rng_.Below(10));
            }
        }
    } else {
        // A quote after a two-letter extension would count as its third letter.
        text = roll < 0.8 || extension.size() < 3 ? path : "\"" + path + "\"";
    }
    // Now and then the list type, where only the first string is looked at.
    if (rng_.Chance(0.03)) {
        const std::array<std::string, 2> texts{text, Phrase(rng_, 2)};
        SetTexts(data_, texts);
        return reg::kMultiSz;
    }
    SetText(data_, text);
    return reg::kSz;
}

std::string ValueMaker::IconIndex() {
    const double roll = rng_.Unit();
    if (roll < 0.5) {
        return "0";
    }
    if (roll < 0.8) {
        return std::to_string(rng_.Below(40));
    }
    return "-" + std::to_string(rng_.Between(100, 32600));
}

// Texts naming something on C: that the path rules refuse.
void ValueMaker::RejectedPath() {
    const std::string& folder = folders_[rng_.Below(folders_.size())];
    const std::string word = CamelWords(rng_, 1);
    std::string text;
    switch (rng_.Below(10)) {
        case 0:
            text = PathText(folder, "");  // "C:\dir\"
            break;
        case 1:
            text = PathText(folder, "");
            text.pop_back();
            break;
        case 2:
            text = PathText(folder, word + ".html");
            break;
        case 3:
            text = PathText(folder, word + (rng_.Chance(0.5) ? ".dat:" : ".ini:") +
                                        (rng_.Chance(0.5) ? "Zone.Identifier" : "stream"));
            break;
        case 4:
            text = PathText("Windows\\System32", "rundll32.exe") + " " +
                   PathText(folder, word + ".dll") + "," + std::string(rng_.Pick(kEntryPoints));
            break;
        case 5:
            text = "\"" + PathText(folder, word + ".exe") + "\" \"" +
                   PathText(folder, AsciiLower(word) + ".txt") + "\"";
            break;
        case 6:
            text = (rng_.Chance(0.7) ? "D:\\" : "E:\\") + Join(folder, word + ".exe");
            break;
        case 7: {
            text = PathText(x86_folders_[rng_.Below(x86_folders_.size())], word + ".exe");
            if (rng_.Chance(0.3)) {
                text = "\"" + text + "\" " + std::string(rng_.Pick(kArguments));
            }
            break;
        }
        case 8:
            text = rng_.Chance(0.5) ? PathText(folder, AsciiLower(word) + ".txt.exe")
                                    : "\"" + PathText(folder, AsciiLower(word) + ".ini") + "\"";
            break;
        default:
            text = "\"" + PathText(folder, word + ".exe") + "\" /log=" + AsciiLower(word) + ".log";
            break;
    }
    SetText(data_, text);
}

// Paths on C: that the search never reaches with a path in hand: an expandable string
// (rendered as unsupported), the second string of a list, and value names that are
// paths (the rules then see the data, which is no path).
std::uint32_t ValueMaker::UnmatchedPath(std::string& name) {
    const RegistryGenerator::DriveFile& file = AnyFile();
    const std::string path = PathText(file.dir, file.name);
    switch (rng_.Below(4)) {
        case 0:
            SetText(data_, path);
            return reg::kExpandSz;
        case 1: {
            const std::array<std::string, 2> texts{Phrase(rng_, 1), path};
            SetTexts(data_, texts);
            return reg::kMultiSz;
        }
        case 2:
            name = path;
            SetNumber(data_, rng_.Between(1, 4), 4);
            return reg::kDword;
        default:
            name = path + (rng_.Chance(0.5) ? ".FriendlyAppName" : ".ApplicationCompany");
            SetText(data_, Phrase(rng_, rng_.Between(1, 3)));
            return reg::kSz;
    }
}

std::uint32_t ValueMaker::Oversized() {
    if (rng_.Chance(0.2)) {
        std::string text;
        while (text.size() < 4200) {
            text += Phrase(rng_, 8) + ". ";
        }
        SetText(data_, text);
        return reg::kSz;
    }
    SetRandomBytes(rng_, data_, rng_.Between(4097, 65536));
    return reg::kBinary;
}

std::uint32_t ValueMaker::Ordinary() {
    const double roll = rng_.Unit();
    if (roll < 0.53) {
        SetText(data_, OrdinaryText());
        return reg::kSz;
    }
    if (roll < 0.79) {
        const double kind = rng_.Unit();
        std::uint64_t number = 0;
        if (kind < 0.5) {
            number = rng_.Below(2);
        } else if (kind < 0.8) {
            number = rng_.Below(1000);
        } else {
            number = rng_.Next() & 0xFFFFFFFFu;
        }
        SetNumber(data_, number, 4);
        return reg::kDword;
    }
    if (roll < 0.89) {
        const double kind = rng_.Unit();
        std::size_t size = 0;
        if (kind < 0.03) {
            size = 0;
        } else if (kind < 0.70) {
            size = rng_.Between(1, 32);
        } else if (kind < 0.95) {
            size = rng_.Between(33, 512);
        } else {
            size = rng_.Between(513, 4096);
        }
        SetRandomBytes(rng_, data_, size);
        return reg::kBinary;
    }
    if (roll < 0.94) {
        SetText(data_, std::string(rng_.Pick(kEnvironmentFolders)) + OrdinaryFileName());
        return reg::kExpandSz;
    }
    if (roll < 0.97) {
        std::vector<std::string> texts(rng_.Between(1, 5));
        for (std::string& text : texts) {
            text = rng_.Chance(0.5) ? Phrase(rng_, 1) : Guid(rng_);
        }
        SetTexts(data_, texts);
        return reg::kMultiSz;
    }
    if (roll < 0.995) {
        SetNumber(data_, rng_.Next(), 8);
        return reg::kQword;
    }
    data_.clear();
    return reg::kNone;
}

std::string ValueMaker::OrdinaryFileName() {
    return AsciiLower(rng_.Pick(kSystemStems)) + std::string(rng_.Pick(kSystemSuffixes)) +
           (rng_.Chance(0.7) ? ".dll" : ".exe");
}

// Text that never contains a drive: the search must pass over it.
std::string ValueMaker::OrdinaryText() {
    const double roll = rng_.Unit();
    if (roll < 0.12) {
        return {};
    }
    if (roll < 0.37) {
        return Phrase(rng_, rng_.Between(1, 4));
    }
    if (roll < 0.47) {
        return VersionText(rng_);
    }
    if (roll < 0.59) {
        return Guid(rng_);
    }
    if (roll < 0.69) {
        return std::to_string(rng_.Below(rng_.Chance(0.5) ? 10 : 100000));
    }
    if (roll < 0.77) {
        return std::string(rng_.Pick(kEnvironmentFolders)) + OrdinaryFileName();
    }
    if (roll < 0.82) {
        return "@" + OrdinaryFileName() + ",-" + std::to_string(rng_.Between(100, 30000));
    }
    if (roll < 0.87) {
        return "https://www." + AsciiLower(rng_.Pick(kVendorStems)) + ".example/" +
               AsciiLower(rng_.Pick(kWords)) + "?id=" + Digits(rng_, 6);
    }
    if (roll < 0.92) {
        return std::string(rng_.Pick(kForeignWords)) + " " + std::string(rng_.Pick(kForeignWords));
    }
    if (roll < 0.96) {
        std::string text;
        const std::size_t length = rng_.Between(200, 2000);
        while (text.size() < length) {
            text += Phrase(rng_, 6) + ". ";
        }
        return text;
    }
    return "20" + Digits(rng_, 2) + "-0" + std::to_string(rng_.Between(1, 9)) + "-1" +
           Digits(rng_, 1) + " 1" + Digits(rng_, 1) + ":" + Digits(rng_, 2);
}

}  // namespace regvex::bench_generator
