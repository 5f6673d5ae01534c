// A value's data rendered as text and the file path cut out of that text, for any type,
// any bytes and any scanned drive. The input is laid out as: one byte for the type, one
// for the drive letter (A to Z), then the data. The cut is checked against the rules
// applied literally, one step after the other.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/file_reference.h"
#include "engine/value_data_text.h"
#include "text/upper_case.h"

namespace {

using namespace regvex;

std::string LiteralValidatePath(std::string_view text, const std::string& drive) {
    std::string s = text::UpperCase(text);
    if (s.find(drive) == std::string::npos) {
        s = drive;
    }
    s.erase(0, s.find(drive));
    const std::string expected = GetFileDir(s) + GetFileTitle(s) + "." + GetFileExt(s);
    for (const std::string_view ext :
         {".SYS", ".EXE", ".DLL", ".OCX", ".OCA", ".VXD", ".AX",  ".COM", ".CPL", ".TLB", ".SCR",
          ".BAT", ".DRV", ".MSI", ".ZIP", ".RAR", ".HLP", ".LNK", ".JPG", ".BMP", ".PDF", ".TXT"}) {
        if (const auto at = s.find(ext); at != std::string::npos) {
            s.erase(at + ext.size());
        }
    }
    for (const char c : std::string_view("/*?<>|,(;")) {
        if (const auto at = s.find(c); at != std::string::npos) {
            s.erase(at);
        }
    }
    if (s.find(':', 2) != std::string::npos) {
        s.erase(s.find(':'));
    }
    for (auto at = s.find("%1"); at != std::string::npos; at = s.find("%1", at)) {
        s.erase(at, 2);
    }
    return s == expected ? s : std::string(kRejected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::uint32_t type = data[0];
    const std::string drive{static_cast<char>('A' + data[1] % 26), ':', '\\'};
    // The enumeration always hands over at least one byte.
    static constexpr std::array<std::uint8_t, 1> kCleared{0};
    const std::span<const std::uint8_t> value =
        size > 2 ? std::span<const std::uint8_t>(data + 2, size - 2) : kCleared;

    const std::string text = ValueDataToText(type, value);
    const std::string path = ValidatePath(text, drive);
    if (path != kRejected && !path.starts_with(drive)) {
        __builtin_trap();  // an accepted path always lies on the scanned drive
    }
    if (path != LiteralValidatePath(text, drive)) {
        __builtin_trap();
    }
    return 0;
}
