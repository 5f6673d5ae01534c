#include "registry_generator.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <random>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "engine/registry.h"
#include "text/upper_case.h"

namespace regvex {

namespace {

// Raw std::mt19937_64 output with reductions of our own: the standard distributions
// give different numbers on different standard libraries.
class Random {
  public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t Next() { return engine_(); }
    // The modulo's bias is below 2^-40 for every bound used here.
    std::size_t Below(std::size_t bound) {
        return bound == 0 ? 0 : static_cast<std::size_t>(Next() % bound);
    }
    std::size_t Between(std::size_t low, std::size_t high) { return low + Below(high - low + 1); }
    double Unit() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
    bool Chance(double probability) { return Unit() < probability; }
    // Early indexes far more often than late ones, as with popular files and busy keys.
    std::size_t Skewed(std::size_t bound, int power) {
        double u = Unit();
        double p = u;
        for (int i = 1; i < power; ++i) {
            p *= u;
        }
        return std::min(bound - 1, static_cast<std::size_t>(p * static_cast<double>(bound)));
    }
    template <typename T, std::size_t N>
    const T& Pick(const std::array<T, N>& items) {
        return items[Below(N)];
    }

  private:
    std::mt19937_64 engine_;
};

// Seeds of the independent streams, so that the drive does not change with the registry
// size and the tree's shape does not change with the number of values.
constexpr std::uint64_t kDriveStream = 0x9E3779B97F4A7C15ULL;
constexpr std::uint64_t kValueStream = 0xC2B2AE3D27D4EB4FULL;

constexpr std::array<std::string_view, 128> kWords{
    "Accessibility", "Account",  "Active",      "Adapter",  "Advanced",     "Agent",
    "Alert",         "App",      "Application", "Audio",    "Auto",         "Backup",
    "Bluetooth",     "Boot",     "Browser",     "Cache",    "Capabilities", "Category",
    "Certificate",   "Channel",  "Class",       "Client",   "Cloud",        "Color",
    "Component",     "Config",   "Connection",  "Console",  "Control",      "Crash",
    "Credential",    "Current",  "Data",        "Default",  "Desktop",      "Device",
    "Diagnostics",   "Display",  "Document",    "Domain",   "Driver",       "Explorer",
    "Extension",     "Feature",  "File",        "Filter",   "Folder",       "Font",
    "Group",         "Handler",  "Hardware",    "History",  "Host",         "Icon",
    "Input",         "Install",  "Interface",   "Keyboard", "Language",     "Launch",
    "Layout",        "License",  "Local",       "Location", "Logon",        "Machine",
    "Media",         "Menu",     "Monitor",     "Mouse",    "Network",      "Notification",
    "Option",        "Package",  "Parameters",  "Path",     "Performance",  "Plugin",
    "Policy",        "Power",    "Preference",  "Print",    "Profile",      "Property",
    "Protocol",      "Provider", "Proxy",       "Recent",   "Registration", "Remote",
    "Resource",      "Root",     "Schedule",    "Search",   "Security",     "Server",
    "Service",       "Session",  "Setting",     "Setup",    "Shell",        "Shortcut",
    "Sound",         "Startup",  "State",       "Storage",  "Stream",       "Sync",
    "System",        "Task",     "Telemetry",   "Theme",    "Time",         "Tool",
    "Update",        "User",     "Version",     "Video",    "View",         "Volume",
    "Wallpaper",     "Window",   "Wireless",    "Zone",     "Cursor",       "Event",
    "Job",           "Mapping"};

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

constexpr std::array<std::string_view, 16> kForeignWords{
    "Français", "Español", "Größe", "Ελληνικά", "Русский", "Übersicht", "Café",  "Ärger",
    "Øre",      "Łódź",    "Česky", "日本語",   "中文",    "한국어",    "Ñandú", "Straße"};

constexpr std::array<std::string_view, 26> kVendorStems{
    "Astra",   "Bright",  "Cobalt", "Delta",  "Ember",  "Falcon", "Granite", "Harbor", "Iris",
    "Juniper", "Kestrel", "Lumen",  "Maple",  "Nimbus", "Orbit",  "Pixel",   "Quartz", "Raven",
    "Summit",  "Tundra",  "Umbra",  "Vertex", "Willow", "Xenon",  "Yarrow",  "Zephyr"};
constexpr std::array<std::string_view, 10> kVendorSuffixes{
    "Soft",  "Labs",  " Systems", " Software", " Media",
    "Works", " Tech", " Games",   "Data",      " Networks"};
constexpr std::array<std::string_view, 20> kProductStems{
    "Photo", "Media",  "Cloud", "Disk", "Net",   "Print", "Audio", "Video", "Code",  "Mail",
    "Chat",  "Office", "Game",  "Scan", "Sound", "Web",   "Data",  "Power", "Smart", "Secure"};
constexpr std::array<std::string_view, 20> kProductSuffixes{
    "Studio", "Player", "Editor", "Manager", "Sync",     "Backup", "Viewer",
    "Reader", "Tools",  "Suite",  "Center",  "Updater",  "Driver", "Helper",
    "Agent",  "Client", "Server", "Console", "Designer", "Monitor"};
constexpr std::array<std::string_view, 20> kFileWords{
    "core", "ui",   "helper", "update", "uninst", "setup", "launcher", "service", "plugin", "codec",
    "res",  "lang", "engine", "net",    "crypt",  "shell", "sync",     "log",     "cfg",    "host"};
constexpr std::array<std::string_view, 30> kSystemStems{
    "shell", "user",  "kernel", "gdi", "ole", "comctl", "win",   "net",  "crypt", "rpc",
    "ws2",   "msv",   "d3d",    "dx",  "mf",  "wmi",    "sec",   "cert", "print", "audio",
    "font",  "input", "ime",    "hid", "usb", "disk",   "power", "time", "wlan",  "bt"};
constexpr std::array<std::string_view, 16> kSystemSuffixes{
    "32",  "api", "svc", "core", "base", "ext", "ui", "host",
    "mgr", "srv", "cfg", "prov", "res",  "lib", "64", ""};
constexpr std::array<std::string_view, 12> kArguments{
    "/start",   "-minimized",       "/background", "--silent",          "-k netsvcs",
    "/n",       "-Embedding",       "/automation", "/uninstall /quiet", "-tray",
    "/autorun", "--profile default"};
constexpr std::array<std::string_view, 10> kEntryPoints{
    "Control_RunDLL", "OpenAs_RunDLL",        "LaunchSetup",  "ShowDialog",
    "DllInstall",     "ImageView_Fullscreen", "PrintUIEntry", "InstallHinfSection",
    "RunAsNewUser",   "Options_RunDLL"};
constexpr std::array<std::string_view, 12> kComSubkeys{"InprocServer32",
                                                       "LocalServer32",
                                                       "DefaultIcon",
                                                       "ProgID",
                                                       "VersionIndependentProgID",
                                                       "TypeLib",
                                                       "Implemented Categories",
                                                       "ToolboxBitmap32",
                                                       "MiscStatus",
                                                       "Version",
                                                       "ProxyStubClsid32",
                                                       "Elevation"};
constexpr std::array<std::string_view, 5> kExtensionSubkeys{
    "OpenWithProgids", "ShellNew", "PersistentHandler", "OpenWithList", "ShellEx"};
constexpr std::array<std::string_view, 8> kVerbs{"open", "edit",    "print",  "runas",
                                                 "play", "explore", "openas", "printto"};
constexpr std::array<std::string_view, 3> kVerbSubkeys{"command", "ddeexec", "DropTarget"};
constexpr std::array<std::string_view, 6> kEnvironmentFolders{"%SystemRoot%\\System32\\",
                                                              "%SystemRoot%\\",
                                                              "%ProgramFiles%\\",
                                                              "%CommonProgramFiles%\\",
                                                              "%USERPROFILE%\\AppData\\Local\\",
                                                              "%windir%\\SysWOW64\\"};

// The extensions at which the path rules cut a text; only paths with one of them may
// carry anything after the path.
constexpr std::array<std::string_view, 22> kCutExtensions{
    "sys", "exe", "dll", "ocx", "oca", "vxd", "ax",  "com", "cpl", "tlb", "scr",
    "bat", "drv", "msi", "zip", "rar", "hlp", "lnk", "jpg", "bmp", "pdf", "txt"};

bool IsCutExtension(std::string_view extension) {
    return std::find(kCutExtensions.begin(), kCutExtensions.end(), extension) !=
           kCutExtensions.end();
}

std::string AsciiLower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return out;
}

std::string AsciiUpper(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return out;
}

std::string SwapAsciiCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        } else if (c >= 'A' && c <= 'Z') {
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

std::string VersionText(Random& rng) {
    return std::to_string(rng.Between(1, 20)) + "." + std::to_string(rng.Below(10)) + "." +
           std::to_string(rng.Below(30000)) + "." + std::to_string(rng.Below(1000));
}

std::string Digits(Random& rng, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(static_cast<char>('0' + rng.Below(10)));
    }
    return out;
}

// ---------------------------------------------------------------------------------------
// The drive.

enum class FileKind { kSystem, kDriver, kFont, kApp, kData, kHelp, kPicture, kDotNet };

struct WeightedExtension {
    std::string_view extension;
    int weight;
};

std::string_view PickExtension(Random& rng, FileKind kind) {
    static constexpr std::array<WeightedExtension, 10> kSystem{{{"dll", 70},
                                                                {"exe", 14},
                                                                {"cpl", 3},
                                                                {"ocx", 3},
                                                                {"drv", 2},
                                                                {"tlb", 2},
                                                                {"scr", 2},
                                                                {"ax", 2},
                                                                {"msc", 1},
                                                                {"inf", 1}}};
    static constexpr std::array<WeightedExtension, 14> kApp{{{"exe", 25},
                                                             {"dll", 43},
                                                             {"ini", 5},
                                                             {"dat", 4},
                                                             {"xml", 4},
                                                             {"cfg", 2},
                                                             {"log", 2},
                                                             {"ico", 3},
                                                             {"chm", 2},
                                                             {"hlp", 1},
                                                             {"txt", 4},
                                                             {"ocx", 2},
                                                             {"ax", 1},
                                                             {"pdf", 2}}};
    static constexpr std::array<WeightedExtension, 6> kData{
        {{"ini", 25}, {"dat", 25}, {"xml", 20}, {"log", 10}, {"db", 10}, {"txt", 10}}};
    const auto pick = [&rng](std::span<const WeightedExtension> table) {
        int total = 0;
        for (const WeightedExtension& row : table) {
            total += row.weight;
        }
        int roll = static_cast<int>(rng.Below(static_cast<std::size_t>(total)));
        for (const WeightedExtension& row : table) {
            if (roll < row.weight) {
                return row.extension;
            }
            roll -= row.weight;
        }
        return table.back().extension;
    };
    switch (kind) {
        case FileKind::kSystem:
            return pick(kSystem);
        case FileKind::kDriver:
            return "sys";
        case FileKind::kFont:
            return rng.Chance(0.7) ? "ttf" : "fon";
        case FileKind::kApp:
            return pick(kApp);
        case FileKind::kData:
            return pick(kData);
        case FileKind::kHelp:
            return rng.Chance(0.5) ? "hlp" : "chm";
        case FileKind::kPicture:
            return rng.Chance(0.7) ? "jpg" : "bmp";
        case FileKind::kDotNet:
            return rng.Chance(0.85) ? "dll" : "exe";
    }
    return "dat";
}

// Files made in Windows' own folders carry a tag, so that they never stand in for a
// real system file: an empty KERNELBASE.DLL in C:\Windows stops Wine from starting.
constexpr std::string_view kSystemTag = "vx";

std::string FileTitle(Random& rng, FileKind kind, std::string_view product) {
    switch (kind) {
        case FileKind::kSystem:
        case FileKind::kDriver:
        case FileKind::kDotNet:
            return std::string(kSystemTag) + std::string(rng.Pick(kSystemStems)) +
                   std::string(rng.Pick(kSystemSuffixes));
        case FileKind::kFont:
            return std::string(kSystemTag) + AsciiLower(rng.Pick(kWords)) +
                   (rng.Chance(0.3) ? "bd" : "");
        case FileKind::kHelp:
        case FileKind::kPicture:
            return std::string(kSystemTag) + CamelWords(rng, rng.Between(1, 2));
        case FileKind::kApp: {
            if (rng.Chance(0.3)) {
                std::string compact;
                for (const char c : product) {
                    if (c != ' ') {
                        compact.push_back(c);
                    }
                }
                return compact;
            }
            std::string title(rng.Pick(kFileWords));
            if (rng.Chance(0.3)) {
                title = std::string(rng.Pick(kProductStems)) + std::string(rng.Pick(kFileWords));
            }
            if (rng.Chance(0.2)) {
                title += rng.Chance(0.5) ? "32" : "64";
            }
            return title;
        }
        case FileKind::kData: {
            std::string title = AsciiLower(rng.Pick(kWords));
            if (rng.Chance(0.3)) {
                title += "_" + AsciiLower(rng.Pick(kWords));
            }
            return title;
        }
    }
    return "file";
}

class DriveBuilder {
  public:
    DriveBuilder(Random& rng, std::vector<RegistryGenerator::DriveFile>& existing,
                 std::vector<RegistryGenerator::DriveFile>& missing)
        : rng_(rng), existing_(existing), missing_(missing) {}

    // False when the folder is already known under any letter case.
    bool AddFolder(const std::string& dir) { return folders_.insert(text::UpperCase(dir)).second; }

    void AddFiles(const std::string& dir, FileKind kind, std::size_t existing_count,
                  std::size_t missing_count, std::string_view product = {}) {
        Add(dir, kind, existing_count, existing_, product);
        Add(dir, kind, missing_count, missing_, product);
    }

  private:
    void Add(const std::string& dir, FileKind kind, std::size_t count,
             std::vector<RegistryGenerator::DriveFile>& into, std::string_view product) {
        for (std::size_t made = 0, tries = 0; made < count && tries < count * 8; ++tries) {
            const std::string_view extension = PickExtension(rng_, kind);
            std::string name = FileTitle(rng_, kind, product) + "." + std::string(extension);
            if (!names_.insert(text::UpperCase(Join(dir, name))).second) {
                continue;
            }
            into.push_back({dir, std::move(name), IsCutExtension(extension)});
            ++made;
        }
    }

    Random& rng_;
    std::vector<RegistryGenerator::DriveFile>& existing_;
    std::vector<RegistryGenerator::DriveFile>& missing_;
    std::unordered_set<std::string> folders_;
    std::unordered_set<std::string> names_;
};

// ---------------------------------------------------------------------------------------
// The tree.

enum class NameKind : std::uint8_t { kGeneric, kGuidList, kGuid, kExtension, kShell, kVerb };

constexpr std::uint32_t kNoKey = 0xFFFFFFFF;

struct TreeKey {
    std::string name;
    std::uint32_t parent = kNoKey;
    std::uint32_t first_child = kNoKey;
    std::uint32_t last_child = kNoKey;
    std::uint32_t next_sibling = kNoKey;
    std::uint8_t root = 0;
    std::uint8_t depth = 1;
    NameKind kind = NameKind::kGeneric;
};

// A key right below a root; `weight` is its share of the keys one level further down.
struct TopKey {
    std::string_view name;
    NameKind kind;
    double weight;
};

constexpr std::array<TopKey, 13> kClassesTop{{{"CLSID", NameKind::kGuidList, 800},
                                              {"Interface", NameKind::kGuidList, 300},
                                              {"TypeLib", NameKind::kGuidList, 100},
                                              {"AppID", NameKind::kGuidList, 100},
                                              {"*", NameKind::kGeneric, 5},
                                              {"Directory", NameKind::kGeneric, 5},
                                              {"Drive", NameKind::kGeneric, 3},
                                              {"Folder", NameKind::kGeneric, 5},
                                              {"MIME", NameKind::kGeneric, 10},
                                              {"SystemFileAssociations", NameKind::kGeneric, 20},
                                              {"Installer", NameKind::kGeneric, 40},
                                              {"Applications", NameKind::kGeneric, 20},
                                              {"Local Settings", NameKind::kGeneric, 5}}};
constexpr std::array<TopKey, 11> kUserTop{{{"Software", NameKind::kGeneric, 60},
                                           {"Control Panel", NameKind::kGeneric, 10},
                                           {"AppEvents", NameKind::kGeneric, 8},
                                           {"Console", NameKind::kGeneric, 2},
                                           {"Environment", NameKind::kGeneric, 1},
                                           {"EUDC", NameKind::kGeneric, 1},
                                           {"Keyboard Layout", NameKind::kGeneric, 2},
                                           {"Network", NameKind::kGeneric, 1},
                                           {"Printers", NameKind::kGeneric, 3},
                                           {"System", NameKind::kGeneric, 5},
                                           {"Volatile Environment", NameKind::kGeneric, 1}}};
// No HARDWARE: Windows builds it at every start as a volatile key, below which nothing
// can be imported.
constexpr std::array<TopKey, 5> kMachineTop{{{"SOFTWARE", NameKind::kGeneric, 60},
                                             {"SYSTEM", NameKind::kGeneric, 35},
                                             {"SAM", NameKind::kGeneric, 1},
                                             {"SECURITY", NameKind::kGeneric, 1},
                                             {"BCD00000000", NameKind::kGeneric, 1}}};

struct RootShape {
    RootKeyHandle handle;
    double share;  // of all keys
};

// Emission order; the share of HKEY_LOCAL_MACHINE takes whatever rounding leaves.
constexpr std::array<RootShape, 4> kRoots{{{kHkeyClassesRoot, 0.30},
                                           {kHkeyCurrentUser, 0.10},
                                           {kHkeyLocalMachine, 0.45},
                                           {kHkeyUsers, 0.15}}};

// Of the keys below the top level, the share at each depth from 2 to 8.
constexpr std::array<double, 7> kDepthShares{0.10, 0.18, 0.22, 0.20, 0.14, 0.10, 0.06};

class TreeBuilder {
  public:
    TreeBuilder(Random& rng, std::vector<TreeKey>& keys) : rng_(rng), keys_(keys) {}

    void Build(std::size_t total) {
        std::vector<std::size_t> budgets(kRoots.size());
        std::size_t assigned = 0;
        for (std::size_t r = 0; r < kRoots.size(); ++r) {
            budgets[r] = static_cast<std::size_t>(static_cast<double>(total) * kRoots[r].share);
            assigned += budgets[r];
        }
        budgets[2] += total - assigned;
        for (std::size_t r = 0; r < kRoots.size(); ++r) {
            BuildRoot(static_cast<std::uint8_t>(r), budgets[r]);
        }
    }

  private:
    void BuildRoot(std::uint8_t root, std::size_t budget) {
        std::vector<std::vector<std::uint32_t>> by_depth(9);
        std::vector<double> top_weights;  // running totals, to draw parents at depth 2
        const auto top = [&](std::string_view name, NameKind kind, double weight) {
            if (by_depth[1].size() < budget) {
                by_depth[1].push_back(Add(root, kNoKey, std::string(name), kind));
                top_weights.push_back((top_weights.empty() ? 0 : top_weights.back()) + weight);
            }
        };
        switch (kRoots[root].handle) {
            case kHkeyClassesRoot: {
                for (const TopKey& key : kClassesTop) {
                    top(key.name, key.kind, key.weight);
                }
                // File extensions and program identifiers make up much of the top level.
                const std::size_t extra = budget / 12;
                for (std::size_t i = 0; i < extra; ++i) {
                    if (rng_.Chance(0.6)) {
                        top("." + AsciiLower(rng_.Pick(kWords)).substr(0, rng_.Between(2, 4)) +
                                (rng_.Chance(0.3) ? Digits(rng_, 1) : ""),
                            NameKind::kExtension, 1);
                    } else {
                        top(ProgId(), NameKind::kGeneric, 1);
                    }
                }
                break;
            }
            case kHkeyCurrentUser:
                for (const TopKey& key : kUserTop) {
                    top(key.name, key.kind, key.weight);
                }
                break;
            case kHkeyLocalMachine:
                for (const TopKey& key : kMachineTop) {
                    top(key.name, key.kind, key.weight);
                }
                break;
            default: {
                const std::string sid = "S-1-5-21-" + Digits(rng_, 10) + "-" + Digits(rng_, 10) +
                                        "-" + Digits(rng_, 9) + "-1001";
                top(".DEFAULT", NameKind::kGeneric, 30);
                top(sid, NameKind::kGeneric, 50);
                top(sid + "_Classes", NameKind::kGeneric, 15);
                top("S-1-5-18", NameKind::kGeneric, 10);
                top("S-1-5-19", NameKind::kGeneric, 3);
                top("S-1-5-20", NameKind::kGeneric, 3);
                break;
            }
        }
        const std::size_t below = budget - by_depth[1].size();
        std::array<std::size_t, 9> counts{};
        std::size_t assigned = 0;
        for (std::size_t d = 2; d <= 8; ++d) {
            counts[d] = static_cast<std::size_t>(static_cast<double>(below) * kDepthShares[d - 2]);
            assigned += counts[d];
        }
        counts[4] += below - assigned;
        for (std::size_t d = 2; d <= 8; ++d) {
            // A depth without parents hands its keys on to the deepest level that has some.
            std::size_t parent_depth = d - 1;
            while (by_depth[parent_depth].empty()) {
                --parent_depth;
            }
            const std::vector<std::uint32_t>& parents = by_depth[parent_depth];
            for (std::size_t i = 0; i < counts[d]; ++i) {
                std::uint32_t parent = 0;
                if (parent_depth == 1) {
                    const double roll = rng_.Unit() * top_weights.back();
                    const auto at = std::upper_bound(top_weights.begin(), top_weights.end(), roll);
                    parent = parents[std::min<std::size_t>(
                        static_cast<std::size_t>(at - top_weights.begin()), parents.size() - 1)];
                } else {
                    parent = parents[rng_.Skewed(parents.size(), 2)];
                }
                auto [name, kind] = ChildName(keys_[parent].kind);
                by_depth[parent_depth + 1].push_back(Add(root, parent, std::move(name), kind));
            }
        }
    }

    std::string ProgId() {
        return std::string(rng_.Pick(kVendorStems)) + "." + CamelWords(rng_, 1) +
               (rng_.Chance(0.5) ? "." + std::to_string(rng_.Between(1, 12)) : "");
    }

    std::pair<std::string, NameKind> ChildName(NameKind parent_kind) {
        switch (parent_kind) {
            case NameKind::kGuidList:
                return {Guid(rng_), NameKind::kGuid};
            case NameKind::kGuid:
                if (rng_.Chance(0.8)) {
                    return {std::string(rng_.Pick(kComSubkeys)), NameKind::kGeneric};
                }
                break;
            case NameKind::kExtension:
                if (rng_.Chance(0.7)) {
                    return {std::string(rng_.Pick(kExtensionSubkeys)), NameKind::kGeneric};
                }
                break;
            case NameKind::kShell:
                return {std::string(rng_.Pick(kVerbs)), NameKind::kVerb};
            case NameKind::kVerb:
                if (rng_.Chance(0.8)) {
                    return {std::string(rng_.Pick(kVerbSubkeys)), NameKind::kGeneric};
                }
                break;
            case NameKind::kGeneric:
                break;
        }
        const double roll = rng_.Unit();
        if (roll < 0.55) {
            return {CamelWords(rng_, rng_.Between(1, 3)), NameKind::kGeneric};
        }
        if (roll < 0.63) {
            return {VendorName(rng_), NameKind::kGeneric};
        }
        if (roll < 0.71) {
            return {Digits(rng_, 4), NameKind::kGeneric};
        }
        if (roll < 0.81) {
            return {Guid(rng_), NameKind::kGuid};
        }
        if (roll < 0.86) {
            return {Phrase(rng_, 2), NameKind::kGeneric};
        }
        if (roll < 0.89) {
            return {"shell", NameKind::kShell};
        }
        if (roll < 0.91) {
            return {std::string(rng_.Pick(kForeignWords)), NameKind::kGeneric};
        }
        if (roll < 0.96) {
            return {AsciiLower(rng_.Pick(kWords)), NameKind::kGeneric};
        }
        return {ProgId(), NameKind::kGeneric};
    }

    std::uint32_t Add(std::uint8_t root, std::uint32_t parent, std::string name, NameKind kind) {
        // Sibling names differ in more than letter case, as the registry demands.
        const std::string scope = std::to_string(parent == kNoKey ? root : parent + 16u) +
                                  (parent == kNoKey ? "r|" : "|");
        if (!sibling_names_.insert(scope + text::UpperCase(name)).second) {
            for (std::size_t n = 2;; ++n) {
                std::string numbered = name + std::to_string(n);
                if (sibling_names_.insert(scope + text::UpperCase(numbered)).second) {
                    name = std::move(numbered);
                    break;
                }
            }
        }
        const auto index = static_cast<std::uint32_t>(keys_.size());
        TreeKey& key = keys_.emplace_back();
        key.name = std::move(name);
        key.parent = parent;
        key.root = root;
        key.kind = kind;
        if (parent != kNoKey) {
            TreeKey& up = keys_[parent];
            key.depth = static_cast<std::uint8_t>(up.depth + 1);
            if (up.first_child == kNoKey) {
                up.first_child = index;
            } else {
                keys_[up.last_child].next_sibling = index;
            }
            up.last_child = index;
        }
        return index;
    }

    Random& rng_;
    std::vector<TreeKey>& keys_;
    std::unordered_set<std::string> sibling_names_;
};

// ---------------------------------------------------------------------------------------
// The values.

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

class ValueMaker {
  public:
    ValueMaker(Random& rng, const std::vector<RegistryGenerator::DriveFile>& existing,
               const std::vector<RegistryGenerator::DriveFile>& missing,
               const std::vector<std::string>& folders, const std::vector<std::string>& x86_folders,
               GenerationSummary& summary)
        : rng_(rng),
          existing_(existing),
          missing_(missing),
          folders_(folders),
          x86_folders_(x86_folders),
          summary_(summary) {}

    void MakeValues(RegistrySink& sink, std::size_t count) {
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
            if (roll < 0.05) {
                type = FileReference(reached);
            } else if (roll < 0.06) {
                RejectedPath();
                ++summary_.rejected_paths;
            } else if (roll < 0.063) {
                type = UnmatchedPath(name);
                ++summary_.rejected_paths;
            } else if (roll < 0.0631) {
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

  private:
    std::string ValueName() {
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

    std::string UniqueName(std::string name) {
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
    std::string PathText(std::string_view dir, std::string_view name) {
        std::string rest = Join(dir, name);
        const double roll = rng_.Unit();
        if (roll >= 0.85) {
            rest = AsciiUpper(rest);
        } else if (roll >= 0.7) {
            rest = AsciiLower(rest);
        }
        return (rng_.Chance(0.1) ? "c:\\" : "C:\\") + rest;
    }

    const RegistryGenerator::DriveFile& AnyFile() {
        const auto& pool = rng_.Chance(0.5) ? existing_ : missing_;
        return pool[rng_.Skewed(pool.size(), 2)];
    }

    std::uint32_t FileReference(bool reached) {
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
        const std::string_view extension =
            std::string_view(file.name).substr(file.name.rfind('.') + 1);
        std::string text;
        const double roll = rng_.Unit();
        if (!file.path_rules_cut_extension) {
            // Nothing may follow such a path but an icon index.
            text = extension == "ico" && roll < 0.5 ? path + "," + std::to_string(rng_.Below(8))
                                                    : path;
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
                text = rng_.Chance(0.2) ? path + " \"%1\""
                                        : "\"" + path + std::string(rng_.Pick(kOpen));
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

    std::string IconIndex() {
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
    void RejectedPath() {
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
                text =
                    "\"" + PathText(folder, word + ".exe") + "\" /log=" + AsciiLower(word) + ".log";
                break;
        }
        SetText(data_, text);
    }

    // Paths on C: that the search never reaches with a path in hand: an expandable string
    // (rendered as unsupported), the second string of a list, and value names that are
    // paths (the rules then see the data, which is no path).
    std::uint32_t UnmatchedPath(std::string& name) {
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

    std::uint32_t Oversized() {
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

    std::uint32_t Ordinary() {
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

    std::string OrdinaryFileName() {
        return AsciiLower(rng_.Pick(kSystemStems)) + std::string(rng_.Pick(kSystemSuffixes)) +
               (rng_.Chance(0.7) ? ".dll" : ".exe");
    }

    // Text that never contains a drive: the search must pass over it.
    std::string OrdinaryText() {
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
            return std::string(rng_.Pick(kForeignWords)) + " " +
                   std::string(rng_.Pick(kForeignWords));
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

    Random& rng_;
    const std::vector<RegistryGenerator::DriveFile>& existing_;
    const std::vector<RegistryGenerator::DriveFile>& missing_;
    const std::vector<std::string>& folders_;
    const std::vector<std::string>& x86_folders_;
    GenerationSummary& summary_;
    std::vector<std::uint8_t> data_;
    std::vector<std::string> used_names_;
};

// Folders of the drive on disk, matched without regard to case as Windows matches them.
class DiskFolders {
  public:
    explicit DiskFolders(std::filesystem::path root) : root_(std::move(root)) {}

    // The on-disk folder for a folder of the registry's text, created where missing.
    std::filesystem::path Resolve(const std::string& dir) {
        std::filesystem::path current = root_;
        std::size_t start = 0;
        while (start < dir.size()) {
            std::size_t end = dir.find('\\', start);
            if (end == std::string::npos) {
                end = dir.size();
            }
            const std::string name = dir.substr(start, end - start);
            Listing& listing = ListingOf(current);
            const std::string upper = text::UpperCase(name);
            auto found = listing.find(upper);
            if (found == listing.end()) {
                const std::string on_disk = SwapAsciiCase(name);
                std::filesystem::create_directory(current / on_disk);
                found = listing.emplace(upper, on_disk).first;
            }
            current /= found->second;
            start = end + 1;
        }
        return current;
    }

    // True when a file was made; false when one of that name, in any case, was there.
    bool CreateFile(const std::filesystem::path& folder, const std::string& name) {
        Listing& listing = ListingOf(folder);
        const std::string upper = text::UpperCase(name);
        if (listing.count(upper) != 0) {
            return false;
        }
        const std::string on_disk = SwapAsciiCase(name);
        std::ofstream file(folder / on_disk, std::ios::binary);
        if (!file) {
            throw std::runtime_error("cannot create " + (folder / on_disk).string());
        }
        listing.emplace(upper, on_disk);
        return true;
    }

  private:
    using Listing = std::unordered_map<std::string, std::string>;

    Listing& ListingOf(const std::filesystem::path& folder) {
        auto [it, fresh] = listings_.try_emplace(folder.string());
        if (fresh) {
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                const std::string name = entry.path().filename().string();
                it->second.emplace(text::UpperCase(name), name);
            }
        }
        return it->second;
    }

    std::filesystem::path root_;
    std::unordered_map<std::string, Listing> listings_;
};

}  // namespace

RegistryGenerator::RegistryGenerator(GeneratorOptions options) : options_(options) {
    if (options_.keys < 64) {
        throw std::invalid_argument("the generator needs at least 64 keys");
    }
    Random rng(options_.seed ^ kDriveStream);
    DriveBuilder drive(rng, existing_, missing_);

    // Windows' own folders: large, and referenced most.
    struct SystemFolder {
        std::string_view dir;
        FileKind kind;
        std::size_t files;
    };
    static constexpr std::array<SystemFolder, 8> kSystemFolders{{
        {"Windows\\System32", FileKind::kSystem, 1200},
        {"Windows\\SysWOW64", FileKind::kSystem, 600},
        {"Windows\\System32\\drivers", FileKind::kDriver, 200},
        {"Windows", FileKind::kSystem, 60},
        {"Windows\\Fonts", FileKind::kFont, 120},
        {"Windows\\Microsoft.NET\\Framework64\\v4.0.30319", FileKind::kDotNet, 100},
        {"Windows\\Help", FileKind::kHelp, 30},
        {"Windows\\Web\\Wallpaper\\Windows", FileKind::kPicture, 12},
    }};
    for (const SystemFolder& folder : kSystemFolders) {
        drive.AddFolder(std::string(folder.dir));
        drive.AddFiles(std::string(folder.dir), folder.kind, folder.files, folder.files * 3 / 4);
    }

    static constexpr std::array<std::string_view, 2> kUsers{"Alice", "José"};
    for (std::size_t v = 0; v < 160; ++v) {
        const std::string vendor = VendorName(rng);
        const std::string vendor_dir = "Program Files\\" + vendor;
        if (!drive.AddFolder(vendor_dir)) {
            continue;
        }
        const std::size_t products = rng.Between(1, 3);
        for (std::size_t p = 0; p < products; ++p) {
            const std::string product = ProductName(rng);
            const std::string dir = Join(vendor_dir, product);
            if (!drive.AddFolder(dir)) {
                continue;
            }
            folders_.push_back(dir);
            x86_folders_.push_back("Program Files (x86)\\" + vendor + "\\" + product);
            // A quarter of the products were uninstalled: their folders are gone.
            const bool installed = rng.Chance(0.75);
            const std::size_t files = rng.Between(4, 20);
            drive.AddFiles(dir, FileKind::kApp, installed ? files : 0,
                           installed ? files * 2 / 5 : files, product);
            static constexpr std::array<std::string_view, 3> kSubfolders{"bin", "plugins", "lang"};
            for (const std::string_view sub : kSubfolders) {
                if (rng.Chance(0.2)) {
                    const std::string subdir = Join(dir, sub);
                    drive.AddFolder(subdir);
                    const std::size_t count = rng.Between(2, 10);
                    drive.AddFiles(subdir, FileKind::kApp, installed ? count : 0,
                                   installed ? count / 3 : count, product);
                }
            }
            if (rng.Chance(0.25)) {
                const std::string data_dir = "ProgramData\\" + vendor + "\\" + product;
                drive.AddFolder(data_dir);
                const std::size_t count = rng.Between(2, 8);
                drive.AddFiles(data_dir, FileKind::kData, installed ? count : 0,
                               installed ? count / 2 : count);
            }
            if (rng.Chance(0.2)) {
                const std::string app_data =
                    "Users\\" + std::string(rng.Pick(kUsers)) +
                    (rng.Chance(0.5) ? "\\AppData\\Local\\" : "\\AppData\\Roaming\\") + vendor +
                    "\\" + product;
                drive.AddFolder(app_data);
                const std::size_t count = rng.Between(2, 6);
                drive.AddFiles(app_data, FileKind::kData, installed ? count : 0,
                               installed ? count / 2 : count);
            }
        }
        if (rng.Chance(0.2)) {
            const std::string common = "Program Files\\Common Files\\" + vendor;
            drive.AddFolder(common);
            drive.AddFiles(common, FileKind::kApp, rng.Between(2, 8), rng.Between(1, 4), vendor);
        }
    }
}

GenerationSummary RegistryGenerator::Generate(RegistrySink& sink) const {
    GenerationSummary summary;
    std::vector<TreeKey> keys;
    keys.reserve(options_.keys);
    Random tree_rng(options_.seed);
    TreeBuilder(tree_rng, keys).Build(options_.keys);

    // Values lie in keys at random, a fifth of them in a few busy keys.
    Random value_rng(options_.seed ^ kValueStream);
    std::vector<std::uint32_t> value_counts(keys.size(), 0);
    std::vector<std::uint32_t> busy(std::max<std::size_t>(1, keys.size() / 100));
    for (std::uint32_t& key : busy) {
        key = static_cast<std::uint32_t>(value_rng.Below(keys.size()));
    }
    for (std::size_t i = 0; i < options_.values; ++i) {
        const std::size_t key = value_rng.Chance(0.2) ? busy[value_rng.Below(busy.size())]
                                                      : value_rng.Below(keys.size());
        ++value_counts[key];
    }

    ValueMaker maker(value_rng, existing_, missing_, folders_, x86_folders_, summary);
    std::string path;
    const auto emit = [&](auto& self, std::uint32_t index) -> void {
        const TreeKey& key = keys[index];
        const std::size_t mark = path.size();
        if (!path.empty()) {
            path.push_back('\\');
        }
        path.append(key.name);
        sink.Key(kRoots[key.root].handle, path);
        ++summary.keys;
        maker.MakeValues(sink, value_counts[index]);
        for (std::uint32_t child = key.first_child; child != kNoKey;
             child = keys[child].next_sibling) {
            self(self, child);
        }
        path.resize(mark);
    };
    for (std::uint32_t index = 0; index < keys.size(); ++index) {
        if (keys[index].parent == kNoKey) {
            emit(emit, index);
        }
    }
    return summary;
}

std::size_t RegistryGenerator::CreateFiles(const std::filesystem::path& drive_root) const {
    std::filesystem::create_directories(drive_root);
    DiskFolders folders(drive_root);
    std::size_t created = 0;
    for (const DriveFile& file : existing_) {
        if (folders.CreateFile(folders.Resolve(file.dir), file.name)) {
            ++created;
        }
    }
    return created;
}

}  // namespace regvex
