#pragma once
// The system's ANSI code page: the encoding of the text files the program shares with
// older tools (the ignore list, "REGEDIT4" backups). Windows asks the system (CP_ACP);
// elsewhere the program uses Windows-1252, the code page of Western Windows systems.

#include <cstddef>
#include <string>
#include <string_view>

namespace regvex::text {

class AnsiCodePage {
  public:
    virtual ~AnsiCodePage() = default;

    virtual std::string ToUtf8(std::string_view ansi) const = 0;

    // Characters without an ANSI form are written as '?'. Answers false when that
    // happened, so callers can tell that the text would not survive a round trip.
    virtual bool FromUtf8(std::string_view utf8, std::string& ansi) const = 0;

    // Bytes the text takes in this code page as the system's byte-string registry calls
    // convert it: one per UTF-16 unit in a single-byte code page, whatever the character.
    virtual std::size_t AnsiLength(std::string_view utf8) const = 0;
};

class Windows1252CodePage final : public AnsiCodePage {
  public:
    std::string ToUtf8(std::string_view ansi) const override;
    bool FromUtf8(std::string_view utf8, std::string& ansi) const override;
    std::size_t AnsiLength(std::string_view utf8) const override;
};

// The code page that stands for the system's where there is no system to ask.
const AnsiCodePage& DefaultAnsiCodePage();

}  // namespace regvex::text
