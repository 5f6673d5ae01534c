#pragma once
// Words the generator builds names from, and the helpers that build them. Only the
// tables that more than one part of the generator draws from are here.

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace regvex::bench_generator {

class Random;

inline constexpr std::array<std::string_view, 128> kWords{
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

inline constexpr std::array<std::string_view, 16> kForeignWords{
    "Français", "Español", "Größe", "Ελληνικά", "Русский", "Übersicht", "Café",  "Ärger",
    "Øre",      "Łódź",    "Česky", "日本語",   "中文",    "한국어",    "Ñandú", "Straße"};

inline constexpr std::array<std::string_view, 26> kVendorStems{
    "Astra",   "Bright",  "Cobalt", "Delta",  "Ember",  "Falcon", "Granite", "Harbor", "Iris",
    "Juniper", "Kestrel", "Lumen",  "Maple",  "Nimbus", "Orbit",  "Pixel",   "Quartz", "Raven",
    "Summit",  "Tundra",  "Umbra",  "Vertex", "Willow", "Xenon",  "Yarrow",  "Zephyr"};
inline constexpr std::array<std::string_view, 20> kProductStems{
    "Photo", "Media",  "Cloud", "Disk", "Net",   "Print", "Audio", "Video", "Code",  "Mail",
    "Chat",  "Office", "Game",  "Scan", "Sound", "Web",   "Data",  "Power", "Smart", "Secure"};
inline constexpr std::array<std::string_view, 30> kSystemStems{
    "shell", "user",  "kernel", "gdi", "ole", "comctl", "win",   "net",  "crypt", "rpc",
    "ws2",   "msv",   "d3d",    "dx",  "mf",  "wmi",    "sec",   "cert", "print", "audio",
    "font",  "input", "ime",    "hid", "usb", "disk",   "power", "time", "wlan",  "bt"};
inline constexpr std::array<std::string_view, 16> kSystemSuffixes{
    "32",  "api", "svc", "core", "base", "ext", "ui", "host",
    "mgr", "srv", "cfg", "prov", "res",  "lib", "64", ""};

std::string AsciiLower(std::string_view text);
std::string Join(std::string_view a, std::string_view b);

std::string Guid(Random& rng);
std::string CamelWords(Random& rng, std::size_t count);
std::string Phrase(Random& rng, std::size_t count);
std::string VendorName(Random& rng);
std::string ProductName(Random& rng);
std::string Digits(Random& rng, std::size_t count);

}  // namespace regvex::bench_generator
