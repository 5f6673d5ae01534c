#pragma once
// Cuts the one file path that a found value's text names out of that text, or refuses
// the text as "Rejected". These rules decide what the program reports.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace regvex {

inline constexpr std::string_view kRejected = "Rejected";

// `scan_drive` is the scanned drive's root in upper case, for example "C:\".
std::string ValidatePath(std::string_view text, std::string_view scan_drive);

// ValidatePath's answer with how it was reached, for telling the user.
struct PathExtraction {
    std::string path;  // ValidatePath's answer: the path, or "Rejected"
    bool names_drive = false;
    // The part of the text (bytes of the text as given) that the cuts kept, from the
    // drive on; "%1" that was dropped from it is inside.
    std::size_t start = 0;
    std::size_t length = 0;
    // What the cuts kept, upper-cased and without "%1", and the path rebuilt from the
    // folder, name and three-letter extension of everything from the drive on. The text
    // is accepted when the two are equal.
    std::string cut;
    std::string expected;
};

PathExtraction ExtractPath(std::string_view text, std::string_view scan_drive);

// Bytes `length` from `start` of a text.
struct TextSpan {
    std::size_t start = 0;
    std::size_t length = 0;
};
// The bytes of `text` (as it stands, not upper-cased) that ValidatePath reads as the
// path: replacing them replaces that path and nothing else. Nothing when the text is
// rejected, or when "%1" was taken out of the path itself rather than after it.
std::optional<TextSpan> ReferencedPathSpan(std::string_view text, std::string_view scan_drive);

// Up to and including the last backslash; empty when there is none.
std::string GetFileDir(std::string_view path);
// Without the last dot and what follows it, then only what follows the last backslash.
std::string GetFileTitle(std::string_view path);
// The first three characters after the last dot; empty when there is no dot.
std::string GetFileExt(std::string_view path);

}  // namespace regvex
