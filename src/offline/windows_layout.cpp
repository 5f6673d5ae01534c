#include "offline/windows_layout.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "text/upper_case.h"
#include "text/utf8_path.h"

namespace regvex::offline {

namespace {

constexpr std::string_view kProfileList = "Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
// Where each Windows since Vista, and before it XP, keeps a user's classes.
constexpr std::string_view kUserClassesFiles[] = {
    "AppData/Local/Microsoft/Windows/UsrClass.dat",
    "Local Settings/Application Data/Microsoft/Windows/UsrClass.dat"};

// The text of a string value of a hive's key, without its terminators; empty when there
// is none.
std::string ReadText(Registry& hive, std::string_view path, std::string_view name) {
    ScopedKey key;
    if (ScopedKey::Open(hive, kHkeyLocalMachine, path, reg::kKeyRead, key) != reg::kSuccess) {
        return {};
    }
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    if (hive.QueryValue(key.get(), name, type, data) != reg::kSuccess || !reg::IsTextType(type)) {
        return {};
    }
    std::string text(data.begin(), data.end());
    text.resize(std::strlen(text.c_str()));
    return text;
}

bool ReadDword(Registry& hive, std::string_view path, std::string_view name,
               std::uint32_t& number) {
    ScopedKey key;
    if (ScopedKey::Open(hive, kHkeyLocalMachine, path, reg::kKeyRead, key) != reg::kSuccess) {
        return false;
    }
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    if (hive.QueryValue(key.get(), name, type, data) != reg::kSuccess || type != reg::kDword ||
        data.size() != 4) {
        return false;
    }
    number = 0;
    for (std::size_t i = data.size(); i-- > 0;) {
        number = number << 8 | static_cast<std::uint32_t>(data[i]);
    }
    return true;
}

bool KeyExists(Registry& hive, std::string_view path) {
    ScopedKey key;
    return ScopedKey::Open(hive, kHkeyLocalMachine, path, reg::kKeyRead, key) == reg::kSuccess;
}

std::vector<std::string> SubkeyNames(Registry& hive, std::string_view path) {
    std::vector<std::string> names;
    ScopedKey key;
    if (ScopedKey::Open(hive, kHkeyLocalMachine, path, reg::kKeyRead, key) != reg::kSuccess) {
        return names;
    }
    std::string name;
    for (std::uint32_t i = 0; hive.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
        names.push_back(name);
    }
    return names;
}

bool StartsWithCaseless(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           text::UpperCase(text.substr(0, prefix.size())) == text::UpperCase(prefix);
}

// A profile's folder as a path below the partition's root: "C:\Users\Ann" and
// "%SystemDrive%\Users\Ann" both give "Users/Ann"; "%SystemRoot%" is the Windows folder.
std::string ProfileFolderBelowRoot(std::string image_path) {
    if (StartsWithCaseless(image_path, "%SystemDrive%")) {
        image_path.erase(0, std::strlen("%SystemDrive%"));
    } else if (StartsWithCaseless(image_path, "%SystemRoot%")) {
        image_path.replace(0, std::strlen("%SystemRoot%"), "Windows");
    } else if (image_path.size() >= 2 && image_path[1] == ':') {
        image_path.erase(0, 2);
    }
    std::replace(image_path.begin(), image_path.end(), '\\', '/');
    image_path.erase(0, image_path.find_first_not_of('/'));
    return image_path;
}

std::string LastName(std::string_view path) {
    const std::size_t slash = path.find_last_of('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

bool IsUserSid(std::string_view sid) {
    return sid.rfind("S-1-5-21-", 0) == 0;
}

struct Profile {
    std::string sid;
    std::string folder_name;
    bool has_classes = false;
};

}  // namespace

std::filesystem::path FindCaseless(const std::filesystem::path& folder, std::string_view relative) {
    std::filesystem::path found = folder;
    std::size_t start = 0;
    while (start <= relative.size()) {
        const std::size_t end = std::min(relative.find('/', start), relative.size());
        const std::string_view name = relative.substr(start, end - start);
        start = end + 1;
        if (name.empty()) {
            if (end == relative.size()) {
                break;
            }
            continue;
        }
        std::error_code error;
        const std::filesystem::path exact = found / text::PathFromUtf8(name);
        if (std::filesystem::exists(exact, error)) {
            found = exact;
            continue;
        }
        const std::string upper = text::UpperCase(name);
        std::filesystem::path match;
        for (std::filesystem::directory_iterator it(found, error), last; !error && it != last;
             it.increment(error)) {
            if (text::UpperCase(text::Utf8FromPath(it->path().filename())) == upper) {
                match = it->path();
                break;
            }
        }
        if (match.empty()) {
            return {};
        }
        found = match;
    }
    return found;
}

bool MountWindows(const std::filesystem::path& root, std::string_view user,
                  const HiveOpener& open_hive, WindowsSystem& system, std::string& error) {
    const std::filesystem::path config = FindCaseless(root, "Windows/System32/config");
    const std::filesystem::path software_file =
        config.empty() ? config : FindCaseless(config, "SOFTWARE");
    const std::filesystem::path system_file =
        config.empty() ? config : FindCaseless(config, "SYSTEM");
    if (software_file.empty() && system_file.empty()) {
        error = "\"" + text::Utf8FromPath(root) +
                "\" is not the root of a Windows partition: it has no "
                "Windows\\System32\\config\\SOFTWARE or SYSTEM";
        return false;
    }
    MountedRegistry& registry = system.registry;
    const auto mount = [&](const std::filesystem::path& file,
                           const RegistryPlace& at) -> Registry* {
        std::unique_ptr<Registry> hive = open_hive(file, error);
        if (!hive) {
            return nullptr;
        }
        registry.Mount(at, *hive, {kHkeyLocalMachine, ""});
        system.hives.push_back(std::move(hive));
        return system.hives.back().get();
    };

    Registry* software = nullptr;
    if (!software_file.empty() &&
        (software = mount(software_file, {kHkeyLocalMachine, "SOFTWARE"})) == nullptr) {
        return false;
    }
    if (!system_file.empty()) {
        Registry* system_hive = mount(system_file, {kHkeyLocalMachine, "SYSTEM"});
        if (system_hive == nullptr) {
            return false;
        }
        std::uint32_t current = 0;
        if (ReadDword(*system_hive, "Select", "Current", current) && current < 1000) {
            char control_set[16];
            std::snprintf(control_set, sizeof control_set, "ControlSet%03u", current);
            registry.Link({kHkeyLocalMachine, "SYSTEM\\CurrentControlSet"},
                          {kHkeyLocalMachine, std::string("SYSTEM\\") + control_set});
            if (KeyExists(*system_hive,
                          std::string(control_set) + "\\Hardware Profiles\\Current")) {
                registry.Link(
                    {kHkeyCurrentConfig, ""},
                    {kHkeyLocalMachine, "SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current"});
            }
        }
    }
    if (const auto file = FindCaseless(config, "DEFAULT");
        !config.empty() && !file.empty() && !mount(file, {kHkeyUsers, ".DEFAULT"})) {
        return false;
    }

    std::vector<Profile> profiles;
    if (software != nullptr) {
        for (const std::string& sid : SubkeyNames(*software, kProfileList)) {
            const std::string folder = ProfileFolderBelowRoot(
                ReadText(*software, std::string(kProfileList) + "\\" + sid, "ProfileImagePath"));
            const std::filesystem::path home =
                folder.empty() ? std::filesystem::path() : FindCaseless(root, folder);
            const std::filesystem::path ntuser =
                home.empty() ? home : FindCaseless(home, "NTUSER.DAT");
            if (ntuser.empty()) {
                continue;
            }
            if (!mount(ntuser, {kHkeyUsers, sid})) {
                return false;
            }
            Profile profile{sid, LastName(folder), false};
            for (const std::string_view classes_file : kUserClassesFiles) {
                if (const auto file = FindCaseless(home, classes_file); !file.empty()) {
                    if (!mount(file, {kHkeyUsers, sid + "_Classes"})) {
                        return false;
                    }
                    profile.has_classes = true;
                    break;
                }
            }
            system.profiles.push_back(profile.folder_name);
            profiles.push_back(std::move(profile));
        }
    }

    const Profile* current = nullptr;
    bool ambiguous = false;
    if (!user.empty()) {
        const auto it = std::find_if(profiles.begin(), profiles.end(), [&](const Profile& p) {
            return text::UpperCase(p.folder_name) == text::UpperCase(user);
        });
        current = it == profiles.end() ? nullptr : &*it;
    } else {
        for (const Profile& profile : profiles) {
            if (IsUserSid(profile.sid)) {
                if (current != nullptr) {
                    current = nullptr;
                    ambiguous = true;
                    break;
                }
                current = &profile;
            }
        }
    }
    if (current == nullptr && (ambiguous || !user.empty())) {
        error = ambiguous ? "which user is HKEY_CURRENT_USER? Choose with --user NAME among: "
                          : "no profile \"" + std::string(user) + "\" on \"" +
                                text::Utf8FromPath(root) + "\"; the profiles are: ";
        for (std::size_t i = 0; i < profiles.size(); ++i) {
            error += (i == 0 ? "" : ", ") + profiles[i].folder_name;
        }
        if (profiles.empty()) {
            error += "(none)";
        }
        return false;
    }
    if (current != nullptr) {
        system.current_user = current->folder_name;
        registry.Link({kHkeyCurrentUser, ""}, {kHkeyUsers, current->sid});
    }
    if (software != nullptr) {
        if (current != nullptr && current->has_classes) {
            registry.Merge({kHkeyClassesRoot, ""}, {kHkeyUsers, current->sid + "_Classes"},
                           {kHkeyLocalMachine, "SOFTWARE\\Classes"});
        } else {
            registry.Link({kHkeyClassesRoot, ""}, {kHkeyLocalMachine, "SOFTWARE\\Classes"});
        }
    }
    return true;
}

}  // namespace regvex::offline
