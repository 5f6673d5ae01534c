#pragma once
// The parsing half of the registry export reader: turns the lines of a file into the
// changes it asks for, one at a time, without touching any registry.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "backup/reg_file_lines.h"
#include "backup/reg_file_reader.h"
#include "engine/root_keys.h"
#include "text/ansi_code_page.h"

namespace regvex::backup {

struct RegFileChange {
    enum class Kind { kOpenKey, kDeleteKey, kSetValue, kDeleteValue };

    Kind kind = Kind::kOpenKey;
    std::size_t line = 0;  // where the change was written, for errors while applying it
    // Keys.
    RootKeyHandle root = kHkeyAll;
    std::string path;
    // Values; they belong to the key of the last kOpenKey before them.
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
};

class RegFileParser {
  public:
    RegFileParser(RegFileLines& lines, const text::AnsiCodePage& ansi);

    // The header line; the first call.
    std::optional<RegFileError> ReadHeader();

    enum class Step { kChange, kEnd, kError };
    // Fills `change` with the next change, or `error` with the fault of the file. May throw
    // std::bad_alloc; every fault of the input itself is answered as kError.
    Step Next(RegFileChange& change, RegFileError& error);

  private:
    // A value line with its continuation lines joined, remembering where each physical
    // line starts so that a fault deep in a long hex list names the line it is on.
    struct JoinedLine {
        std::string text;
        std::vector<std::pair<std::size_t, std::size_t>> starts;  // (offset in text, line)
        std::size_t LineAt(std::size_t at) const;
    };

    void JoinContinuedLines(std::string_view first);
    void ParseKeyLine(std::string_view line, RegFileChange& change);
    void ParseValueLine(std::string_view line, RegFileChange& change);
    void ParseData(std::string_view data, std::size_t base, RegFileChange& change) const;
    void ParseHexData(std::string_view data, std::size_t base, RegFileChange& change) const;

    RegFileLines& lines_;
    const text::AnsiCodePage& ansi_;
    bool version5_ = true;
    bool in_key_ = false;
    JoinedLine joined_;
};

}  // namespace regvex::backup
