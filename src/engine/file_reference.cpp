#include "engine/file_reference.h"

#include <algorithm>
#include <array>

#include "text/char_set.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex {

namespace {

// The order is part of the rule: each cut works on what the earlier ones left.
constexpr std::array<std::string_view, 22> kCutExtensions{
    ".SYS", ".EXE", ".DLL", ".OCX", ".OCA", ".VXD", ".AX",  ".COM", ".CPL", ".TLB", ".SCR",
    ".BAT", ".DRV", ".MSI", ".ZIP", ".RAR", ".HLP", ".LNK", ".JPG", ".BMP", ".PDF", ".TXT"};

constexpr text::CharSet kCutCharacters("/*?<>|,(;");

}  // namespace

namespace {

std::string_view FileDir(std::string_view path) {
    const std::size_t slash = path.rfind('\\');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

std::string_view FileTitle(std::string_view path) {
    if (const std::size_t dot = path.rfind('.'); dot != std::string_view::npos) {
        path = path.substr(0, dot);
    }
    if (const std::size_t slash = path.rfind('\\'); slash != std::string_view::npos) {
        path = path.substr(slash + 1);
    }
    return path;
}

std::string_view FileExt(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? std::string_view()
                                         : text::LeftChars(path.substr(dot + 1), 3);
}

// For each extension in list order: when it occurs in what the earlier cuts left, cut
// right after its first occurrence. Cuts only shorten the text from its end, so an
// extension's first occurrence is the same in the whole text and in what is left, as
// long as it still fits; and every extension starts with a dot, so only the text's few
// dots need looking at.
void CutAfterExtensions(std::string& s) {
    std::array<std::size_t, kCutExtensions.size()> first_end;
    first_end.fill(std::string::npos);
    for (std::size_t dot = s.find('.'); dot != std::string::npos; dot = s.find('.', dot + 1)) {
        for (std::size_t i = 0; i < kCutExtensions.size(); ++i) {
            const std::string_view extension = kCutExtensions[i];
            // The letter after the dot rules out nearly every extension at once.
            if (first_end[i] == std::string::npos && dot + extension.size() <= s.size() &&
                s[dot + 1] == extension[1] &&
                s.compare(dot + 2, extension.size() - 2, extension, 2) == 0) {
                first_end[i] = dot + kCutExtensions[i].size();
            }
        }
    }
    std::size_t length = s.size();
    for (const std::size_t end : first_end) {
        if (end <= length) {
            length = end;
        }
    }
    s.resize(length);
}

}  // namespace

std::string GetFileDir(std::string_view path) {
    return std::string(FileDir(path));
}

std::string GetFileTitle(std::string_view path) {
    return std::string(FileTitle(path));
}

std::string GetFileExt(std::string_view path) {
    return std::string(FileExt(path));
}

namespace {

// The rules themselves, for ValidatePath and ExtractPath alike. `s` is left as the cuts
// left it, "%1" removed; `drive` is where the drive stands in the upper-cased text and
// `kept` how many of its bytes from there the cuts kept.
void CutToPath(std::string_view text, std::string_view scan_drive, std::string& s,
               std::string& expected, std::size_t& drive, std::size_t& kept, bool& names_drive) {
    s = text::UpperCase(text);

    // A text that does not name the scanned drive ends up rejected below.
    drive = s.find(scan_drive);
    names_drive = drive != std::string::npos;
    if (!names_drive) {
        s = std::string(scan_drive);
        drive = 0;
    }
    // Quotes, program names and whatever else stands before the drive go.
    s.erase(0, drive);

    // The path as rebuilt from the whole text; the cuts below must arrive at it. The text
    // is upper case already, and so are its pieces.
    const std::string_view dir = FileDir(s);
    const std::string_view title = FileTitle(s);
    const std::string_view ext = FileExt(s);
    expected.clear();
    expected.reserve(dir.size() + title.size() + 1 + ext.size());
    expected.append(dir).append(title).append(".").append(ext);

    CutAfterExtensions(s);
    // Each cut only shortens the text, so together they cut at the first of them.
    if (const std::size_t at = kCutCharacters.FindFirstIn(s); at != std::string::npos) {
        s.erase(at);
    }
    // Any colon from the third character on cuts at the first colon, which in a text
    // that starts with the drive is the drive's own: such texts are rejected.
    if (s.find(':', 2) != std::string::npos) {
        s.erase(s.find(':'));
    }
    kept = s.size();
    // Only "%1" goes; a blank before it stays.
    for (std::size_t at = s.find("%1"); at != std::string::npos; at = s.find("%1", at)) {
        s.erase(at, 2);
    }
}

}  // namespace

std::string ValidatePath(std::string_view text, std::string_view scan_drive) {
    std::string s;
    std::string expected;
    std::size_t drive = 0;
    std::size_t kept = 0;
    bool names_drive = false;
    CutToPath(text, scan_drive, s, expected, drive, kept, names_drive);
    if (s != expected) {
        return std::string(kRejected);
    }
    return s;
}

PathExtraction ExtractPath(std::string_view text, std::string_view scan_drive) {
    PathExtraction out;
    std::size_t drive = 0;
    std::size_t kept = 0;
    CutToPath(text, scan_drive, out.cut, out.expected, drive, kept, out.names_drive);
    out.path = out.cut == out.expected ? out.cut : std::string(kRejected);
    if (out.names_drive) {
        // Upper-casing can change a character's length in bytes, so the places found in
        // the upper-cased text are carried back to the text as given.
        out.start = text::OffsetBeforeUpperCase(text, drive);
        out.length = text::OffsetBeforeUpperCase(text, drive + kept) - out.start;
    }
    return out;
}

std::optional<TextSpan> ReferencedPathSpan(std::string_view text, std::string_view scan_drive) {
    std::string path;
    std::string expected;
    std::size_t drive = 0;
    std::size_t kept = 0;
    bool names_drive = false;
    CutToPath(text, scan_drive, path, expected, drive, kept, names_drive);
    if (!names_drive || path != expected) {
        return std::nullopt;
    }
    // What "%1" took away must have stood after the path: only then is the path one run
    // of bytes of the text.
    const std::string upper = text::UpperCase(text);
    const std::string_view cut = std::string_view(upper).substr(drive, kept);
    if (cut.substr(0, path.size()) != path) {
        return std::nullopt;
    }
    for (std::string_view rest = cut.substr(path.size()); !rest.empty(); rest.remove_prefix(2)) {
        if (rest.substr(0, 2) != "%1") {
            return std::nullopt;
        }
    }
    // Upper-casing can change a character's length in bytes, so the places found in the
    // upper-cased text are carried back to the text as given.
    const std::size_t begin = text::OffsetBeforeUpperCase(text, drive);
    const std::size_t end = text::OffsetBeforeUpperCase(text, drive + path.size());
    return TextSpan{begin, end - begin};
}

}  // namespace regvex
