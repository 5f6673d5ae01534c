#pragma once
// The lines of a registry export file as UTF-8, read piece by piece so that the file is
// never held whole. The encoding follows from the first bytes:
//
// - a UTF-16LE byte order mark: UTF-16LE, as regedit writes version 5 files;
// - a UTF-8 byte order mark: UTF-8, malformed sequences read as U+FFFD;
// - no mark, the header "Windows Registry Editor Version 5.00", and only valid UTF-8 in
//   the whole file: UTF-8, as editors on Linux write such a file;
// - anything else without a mark: the ANSI code page.
//
// UTF-16BE, UTF-16LE without a mark and UTF-32 in either order are refused by name.

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "backup/reg_file_reader.h"
#include "text/ansi_code_page.h"

namespace regvex::backup {

// Where the bytes come from.
class ByteSource {
  public:
    virtual ~ByteSource() = default;
    // Up to `size` bytes into `buffer`; 0 only at the end. Throws std::runtime_error when
    // reading fails.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
    // Whether Rewind works: a pipe cannot go back.
    virtual bool CanRewind() const = 0;
    // Back to the first byte.
    virtual void Rewind() = 0;
};

class MemoryByteSource final : public ByteSource {
  public:
    explicit MemoryByteSource(std::string_view bytes) : bytes_(bytes) {}
    std::size_t Read(char* buffer, std::size_t size) override;
    bool CanRewind() const override { return true; }
    void Rewind() override { pos_ = 0; }

  private:
    std::string_view bytes_;
    std::size_t pos_ = 0;
};

class RegFileLines {
  public:
    // Reads `source` in pieces of `piece_bytes`.
    RegFileLines(ByteSource& source, const text::AnsiCodePage& ansi,
                 std::size_t piece_bytes = std::size_t{1} << 20);
    ~RegFileLines();
    RegFileLines(const RegFileLines&) = delete;
    RegFileLines& operator=(const RegFileLines&) = delete;

    // Settles the encoding; answers an error for one that is not read.
    std::optional<RegFileError> Open();

    // The next line without its line end, valid until the next call. After the last line,
    // or at a fault of the encoding (then error() tells it), answers false.
    bool Next(std::string_view& line);

    // The number of the line Next gave last, or of the line with the fault.
    std::size_t line_number() const { return line_number_; }
    const std::optional<RegFileError>& error() const { return error_; }

  private:
    enum class Encoding { kAnsi, kUtf8, kUtf8Repaired, kUtf16Le };

    // Appends to the piece in hand; false at the end of the source.
    bool Fill();
    std::optional<RegFileError> Detect();
    bool Version5HeaderFirst() const;
    // Reads the whole source once to see whether it is all valid UTF-8, and starts again.
    bool WholeSourceIsUtf8();
    bool NextRaw();
    std::string_view Decode();

    ByteSource* source_;
    const text::AnsiCodePage& ansi_;
    const std::size_t piece_bytes_;
    std::size_t next_piece_;
    // A copy of a source that cannot go back, made when the whole of it had to be read
    // ahead.
    std::unique_ptr<ByteSource> spool_;

    Encoding encoding_ = Encoding::kAnsi;
    std::string piece_;  // bytes read and not yet split into lines, from pos_
    std::size_t pos_ = 0;
    bool at_end_ = false;    // the source has nothing more
    bool after_cr_ = false;  // the last line ended with CR: a LF next belongs to it
    bool done_ = false;      // the last line was given
    std::string raw_;        // the current line's bytes
    std::string decoded_;    // ... as UTF-8 where they needed converting
    std::size_t line_number_ = 0;
    std::optional<RegFileError> error_;
};

}  // namespace regvex::backup
