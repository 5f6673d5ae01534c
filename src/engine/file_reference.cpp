#include "engine/file_reference.h"

#include <algorithm>
#include <array>
#include <vector>

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

std::optional<PathCut> CutReferencedPath(std::string_view upper_text, std::string_view scan_drive) {
    // A text that does not name the scanned drive is never accepted.
    const std::size_t drive = upper_text.find(scan_drive);
    if (drive == std::string_view::npos) {
        return std::nullopt;
    }
    // Quotes, program names and whatever else stands before the drive go.
    std::string s(upper_text.substr(drive));

    // The path as rebuilt from the whole text; the cuts below must arrive at it. The text
    // is upper case already, and so are its pieces.
    const std::string_view dir = FileDir(s);
    const std::string_view title = FileTitle(s);
    const std::string_view ext = FileExt(s);
    std::string expected;
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
    const std::size_t cut_length = s.size();
    // Only "%1" goes; a blank before it stays.
    for (std::size_t at = s.find("%1"); at != std::string::npos; at = s.find("%1", at)) {
        s.erase(at, 2);
    }

    if (s != expected) {
        return std::nullopt;
    }
    return PathCut{drive, cut_length, std::move(s)};
}

std::string ValidatePath(std::string_view text, std::string_view scan_drive) {
    std::optional<PathCut> cut = CutReferencedPath(text::UpperCase(text), scan_drive);
    return cut ? std::move(cut->path) : std::string(kRejected);
}

std::optional<TextSpan> ReferencedPathSpan(std::string_view text, std::string_view scan_drive) {
    // The cut is made in the upper-cased text; a few letters change their length in
    // bytes when upper-cased, so every boundary is carried back character by character.
    std::string upper;
    std::vector<std::size_t> original_at;  // per byte of `upper`, where its character starts
    upper.reserve(text.size());
    original_at.reserve(text.size() + 1);
    for (std::size_t pos = 0; pos < text.size();) {
        const std::size_t start = pos;
        const char32_t code_point = text::DecodeUtf8(text, pos);
        std::string one;
        if (code_point == text::kReplacementCharacter) {
            one.assign(text.substr(start, pos - start));
        } else {
            text::AppendUtf8(one, text::UpperCaseCodePoint(code_point));
        }
        upper += one;
        original_at.insert(original_at.end(), one.size(), start);
    }
    original_at.push_back(text.size());
    if (upper != text::UpperCase(text)) {
        // Upper-cased other than one character at a time: no boundary can be trusted.
        return std::nullopt;
    }
    const std::optional<PathCut> cut = CutReferencedPath(upper, scan_drive);
    if (!cut) {
        return std::nullopt;
    }
    // What "%1" took away can only have stood at the end of the path: anything else would
    // not have rebuilt the same path.
    std::string_view kept(upper);
    kept = kept.substr(cut->start, cut->length);
    if (kept.substr(0, cut->path.size()) != cut->path) {
        return std::nullopt;
    }
    for (std::string_view rest = kept.substr(cut->path.size()); !rest.empty();
         rest.remove_prefix(2)) {
        if (rest.substr(0, 2) != "%1") {
            return std::nullopt;
        }
    }
    const std::size_t begin = original_at[cut->start];
    const std::size_t end = original_at[cut->start + cut->path.size()];
    return TextSpan{begin, end - begin};
}

}  // namespace regvex
