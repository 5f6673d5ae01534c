#include "backup/reg_file_lines.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "text/utf8.h"

namespace regvex::backup {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kVersion5Header = "Windows Registry Editor Version 5.00";
// Enough of the start of a file to find the header after any blank lines before it.
constexpr std::size_t kDetectionBytes = 64 * 1024;

// Follows UTF-8 across pieces of a text: whether every sequence so far is well formed.
class Utf8Check {
  public:
    // False from the first malformed sequence on.
    bool Feed(std::string_view bytes) {
        std::size_t i = 0;
        while (valid_ && i < bytes.size()) {
            if (pending_ == 0) {
                // Plain ASCII eight bytes at a time: most of any file.
                while (i + 8 <= bytes.size() && EightAscii(bytes.data() + i)) {
                    i += 8;
                }
                if (i == bytes.size()) {
                    break;
                }
            }
            Step(static_cast<unsigned char>(bytes[i++]));
        }
        return valid_;
    }
    // True when the bytes so far end on a whole character.
    bool Complete() const { return valid_ && pending_ == 0; }

  private:
    static bool EightAscii(const char* bytes) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, bytes, sizeof eight);
        return (eight & 0x8080808080808080u) == 0;
    }

    // The ranges of well-formed UTF-8 (The Unicode Standard, table 3-7).
    void Step(unsigned char c) {
        if (pending_ > 0) {
            if (c < low_ || c > high_) {
                valid_ = false;
                return;
            }
            --pending_;
            low_ = 0x80;
            high_ = 0xBF;
            return;
        }
        low_ = 0x80;
        high_ = 0xBF;
        if (c < 0x80) {
            return;
        }
        if (c >= 0xC2 && c <= 0xDF) {
            pending_ = 1;
        } else if (c >= 0xE0 && c <= 0xEF) {
            pending_ = 2;
            low_ = c == 0xE0 ? 0xA0 : 0x80;
            high_ = c == 0xED ? 0x9F : 0xBF;
        } else if (c >= 0xF0 && c <= 0xF4) {
            pending_ = 3;
            low_ = c == 0xF0 ? 0x90 : 0x80;
            high_ = c == 0xF4 ? 0x8F : 0xBF;
        } else {
            valid_ = false;
        }
    }

    int pending_ = 0;  // continuation bytes still to come
    unsigned char low_ = 0x80;
    unsigned char high_ = 0xBF;
    bool valid_ = true;
};

char16_t UnitAt(const char* bytes) {
    return static_cast<char16_t>(static_cast<unsigned char>(bytes[0]) |
                                 (static_cast<unsigned char>(bytes[1]) << 8));
}

// Unpaired surrogates become U+FFFD.
void AppendUtf16Le(std::string_view bytes, std::string& out) {
    const std::size_t units = bytes.size() / 2;
    for (std::size_t i = 0; i < units; ++i) {
        const char16_t unit = UnitAt(bytes.data() + 2 * i);
        if (unit < 0x80) {
            out.push_back(static_cast<char>(unit));
            continue;
        }
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units) {
            const char16_t next = UnitAt(bytes.data() + 2 * i + 2);
            if (next >= 0xDC00 && next <= 0xDFFF) {
                text::AppendUtf8(out, 0x10000 + ((unit - 0xD800u) << 10) + (next - 0xDC00u));
                ++i;
                continue;
            }
        }
        const bool surrogate = unit >= 0xD800 && unit <= 0xDFFF;
        text::AppendUtf8(out, surrogate ? text::kReplacementCharacter : char32_t{unit});
    }
}

RegFileError Unsupported(std::string_view encoding) {
    return RegFileError{1, "this encoding is not supported: " + std::string(encoding) +
                               " (save the file as UTF-16LE with a byte order mark, as "
                               "UTF-8 or in the ANSI code page)"};
}

// A copy of a pipe's bytes, in a temporary file or, failing that, in memory.
class SpoolSource final : public ByteSource {
  public:
    SpoolSource() : file_(std::tmpfile()) {}

    void Write(std::string_view bytes) {
        if (!file_) {
            memory_.append(bytes);
        } else if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
            throw std::runtime_error("a temporary copy of the input could not be written");
        }
    }
    std::size_t Read(char* buffer, std::size_t size) override {
        if (!file_) {
            const std::size_t count = std::min(size, memory_.size() - pos_);
            std::memcpy(buffer, memory_.data() + pos_, count);
            pos_ += count;
            return count;
        }
        const std::size_t count = std::fread(buffer, 1, size, file_.get());
        if (count == 0 && std::ferror(file_.get()) != 0) {
            throw std::runtime_error("the temporary copy of the input could not be read");
        }
        return count;
    }
    bool CanRewind() const override { return true; }
    void Rewind() override {
        pos_ = 0;
        if (file_ && std::fseek(file_.get(), 0, SEEK_SET) != 0) {
            throw std::runtime_error("the temporary copy of the input could not be read");
        }
    }

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> file_;
    std::string memory_;
    std::size_t pos_ = 0;
};

}  // namespace

std::size_t MemoryByteSource::Read(char* buffer, std::size_t size) {
    const std::size_t count = std::min(size, bytes_.size() - pos_);
    if (count != 0) {
        std::memcpy(buffer, bytes_.data() + pos_, count);
    }
    pos_ += count;
    return count;
}

RegFileLines::RegFileLines(ByteSource& source, const text::AnsiCodePage& ansi,
                           std::size_t piece_bytes)
    : source_(&source),
      ansi_(ansi),
      piece_bytes_(std::max<std::size_t>(piece_bytes, 1)),
      next_piece_(std::min<std::size_t>(piece_bytes_, 4096)) {}

RegFileLines::~RegFileLines() = default;

bool RegFileLines::Fill() {
    if (at_end_) {
        return false;
    }
    piece_.erase(0, pos_);
    pos_ = 0;
    // Small files are common (tests, backups): pieces grow from a few kilobytes.
    const std::size_t wanted = next_piece_;
    next_piece_ = std::min(2 * next_piece_, piece_bytes_);
    const std::size_t kept = piece_.size();
    piece_.resize(kept + wanted);
    const std::size_t count = source_->Read(piece_.data() + kept, wanted);
    piece_.resize(kept + count);
    at_end_ = count == 0;
    return count != 0;
}

std::optional<RegFileError> RegFileLines::Open() {
    // The start decides; a pipe may hand over less at a time.
    while (piece_.size() < kDetectionBytes && Fill()) {
    }
    return Detect();
}

std::optional<RegFileError> RegFileLines::Detect() {
    const std::string_view start(piece_);
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(start[i]); };
    if (start.starts_with("\xFF\xFE\0\0"sv)) {
        return Unsupported("UTF-32LE");
    }
    if (start.starts_with("\0\0\xFE\xFF"sv)) {
        return Unsupported("UTF-32BE");
    }
    if (start.starts_with("\xFF\xFE"sv)) {
        encoding_ = Encoding::kUtf16Le;
        pos_ = 2;
        return std::nullopt;
    }
    if (start.starts_with("\xFE\xFF"sv)) {
        return Unsupported("UTF-16BE");
    }
    if (start.starts_with("\xEF\xBB\xBF"sv)) {
        encoding_ = Encoding::kUtf8Repaired;
        pos_ = 3;
        return std::nullopt;
    }
    // Without a mark, the NULs around the first character, which is ASCII in any export,
    // tell the wide encodings.
    if (start.size() >= 4 && at(0) != 0 && at(1) == 0 && at(2) == 0 && at(3) == 0) {
        return Unsupported("UTF-32LE without a byte order mark");
    }
    if (start.size() >= 4 && at(0) == 0 && at(1) == 0 && at(2) == 0 && at(3) != 0) {
        return Unsupported("UTF-32BE without a byte order mark");
    }
    if (start.size() >= 2 && at(0) != 0 && at(1) == 0) {
        return Unsupported("UTF-16LE without a byte order mark");
    }
    if (start.size() >= 2 && at(0) == 0 && at(1) != 0) {
        return Unsupported("UTF-16BE without a byte order mark");
    }
    encoding_ = Version5HeaderFirst() && WholeSourceIsUtf8() ? Encoding::kUtf8 : Encoding::kAnsi;
    return std::nullopt;
}

bool RegFileLines::Version5HeaderFirst() const {
    std::string_view text(piece_);
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(first);
    if (!text.starts_with(kVersion5Header)) {
        return false;
    }
    text.remove_prefix(kVersion5Header.size());
    const std::size_t after = text.find_first_not_of(" \t");
    return after == std::string_view::npos || text[after] == '\r' || text[after] == '\n';
}

bool RegFileLines::WholeSourceIsUtf8() {
    Utf8Check check;
    bool valid = check.Feed(piece_);
    std::string buffer(std::min(piece_bytes_, kDetectionBytes), '\0');
    if (source_->CanRewind()) {
        while (valid && !at_end_) {
            const std::size_t count = source_->Read(buffer.data(), buffer.size());
            at_end_ = count == 0;
            valid = check.Feed(std::string_view(buffer.data(), count));
        }
        source_->Rewind();
    } else {
        // Read ahead to the end, keeping a copy to read the lines from.
        auto spool = std::make_unique<SpoolSource>();
        spool->Write(piece_);
        while (!at_end_) {
            const std::size_t count = source_->Read(buffer.data(), buffer.size());
            at_end_ = count == 0;
            spool->Write(std::string_view(buffer.data(), count));
            valid = valid && check.Feed(std::string_view(buffer.data(), count));
        }
        spool->Rewind();
        spool_ = std::move(spool);
        source_ = spool_.get();
    }
    piece_.clear();
    pos_ = 0;
    at_end_ = false;
    return valid && check.Complete();
}

bool RegFileLines::NextRaw() {
    if (done_) {
        return false;
    }
    raw_.clear();
    const std::size_t unit = encoding_ == Encoding::kUtf16Le ? 2 : 1;
    while (true) {
        if (piece_.size() - pos_ < unit) {
            if (Fill()) {
                continue;
            }
            done_ = true;
            if (piece_.size() != pos_) {
                line_number_ += 1;
                error_ =
                    RegFileError{line_number_, "the file ends in the middle of a UTF-16 character"};
                return false;
            }
            return true;  // the last line, after the last line end
        }
        const char* const data = piece_.data();
        const std::size_t end = piece_.size() - (piece_.size() - pos_) % unit;
        const auto is_unit = [&](std::size_t i, char c) {
            return data[i] == c && (unit == 1 || data[i + 1] == '\0');
        };
        if (after_cr_) {
            after_cr_ = false;
            if (is_unit(pos_, '\n')) {
                pos_ += unit;
                continue;
            }
        }
        std::size_t i = pos_;
        while (i < end && !is_unit(i, '\n') && !is_unit(i, '\r')) {
            i += unit;
        }
        raw_.append(data + pos_, i - pos_);
        if (i == end) {
            pos_ = end;
            continue;
        }
        after_cr_ = data[i] == '\r';
        pos_ = i + unit;
        return true;
    }
}

std::string_view RegFileLines::Decode() {
    switch (encoding_) {
        case Encoding::kUtf8:
            return raw_;
        case Encoding::kAnsi:
            if (text::IsAscii(raw_)) {
                return raw_;
            }
            decoded_ = ansi_.ToUtf8(raw_);
            return decoded_;
        case Encoding::kUtf8Repaired: {
            Utf8Check check;
            if (check.Feed(raw_) && check.Complete()) {
                return raw_;
            }
            decoded_.clear();
            for (std::size_t pos = 0; pos < raw_.size();) {
                text::AppendUtf8(decoded_, text::DecodeUtf8(raw_, pos));
            }
            return decoded_;
        }
        case Encoding::kUtf16Le:
            decoded_.clear();
            AppendUtf16Le(raw_, decoded_);
            return decoded_;
    }
    return raw_;
}

bool RegFileLines::Next(std::string_view& line) {
    if (!NextRaw()) {
        return false;
    }
    ++line_number_;
    line = Decode();
    return true;
}

}  // namespace regvex::backup
