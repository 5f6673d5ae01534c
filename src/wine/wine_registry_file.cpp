#include "wine/wine_registry_file.h"

#include <algorithm>
#include <cstdint>
#include <streambuf>

#include "engine/registry.h"
#include "text/utf8.h"
#include "wine/wine_text.h"

namespace regvex::wine {

namespace {

constexpr std::string_view kHeader = "WINE REGISTRY Version 2";
constexpr std::string_view kRootComment = ";; All keys relative to ";

struct BadLine {
    std::string message;
};

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

void SkipBlanks(std::string_view line, std::size_t& pos) {
    while (pos < line.size() && IsBlank(line[pos])) {
        ++pos;
    }
}

bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

// A hexadecimal number of 1 to 8 digits at `pos`.
std::uint32_t ReadHex32(std::string_view line, std::size_t& pos, std::string_view what) {
    std::uint32_t value = 0;
    std::size_t digits = 0;
    while (pos < line.size() && HexDigit(line[pos]) >= 0) {
        if (++digits > 8) {
            throw BadLine{std::string(what) + " has more than 8 hexadecimal digits"};
        }
        value = (value << 4) | static_cast<std::uint32_t>(HexDigit(line[pos++]));
    }
    if (digits == 0) {
        throw BadLine{std::string(what) + " needs hexadecimal digits"};
    }
    return value;
}

class FileReader {
  public:
    FileReader(std::istream& in, WineKey& top, WineFileContents& contents)
        : in_(in), top_(top), contents_(contents) {}

    std::optional<std::string> Read(std::string_view default_root) {
        if (!NextLine() || !StartsWith(line_, kHeader)) {
            return "not a Wine registry file (it does not begin with \"" + std::string(kHeader) +
                   "\")";
        }
        contents_.root = std::string(default_root);
        while (NextLine()) {
            try {
                ReadLine();
            } catch (const BadLine& bad) {
                contents_.bad_lines.push_back({line_number_, bad.message});
            }
        }
        if (in_.bad()) {
            return "could not be read to its end";
        }
        return std::nullopt;
    }

  private:
    bool NextLine() {
        if (!std::getline(in_, line_)) {
            return false;
        }
        ++line_number_;
        if (!line_.empty() && line_.back() == '\r') {
            line_.pop_back();
        }
        return true;
    }

    void ReadLine() {
        std::size_t pos = 0;
        SkipBlanks(line_, pos);
        if (pos == line_.size()) {
            return;
        }
        switch (line_[pos]) {
            case ';':
                if (!seen_key_ && StartsWith(line_, kRootComment)) {
                    ReadRoot(line_.substr(kRootComment.size()));
                }
                return;
            case '#':
                // #time, #class and #arch say nothing the scan sees; #link makes the key a
                // link.
                if (key_ != nullptr && line_.compare(pos, std::string::npos, "#link") == 0) {
                    key_->link = true;
                }
                if (key_ != nullptr && contents_.record_lines &&
                    contents_.sections.back().values_line == line_number_) {
                    ++contents_.sections.back().values_line;
                }
                return;
            case '[':
                ReadKey(pos + 1);
                return;
            case '@':
            case '"':
                ReadValue(pos);
                return;
            default:
                throw BadLine{"neither a key, a value nor a comment"};
        }
    }

    void ReadRoot(std::string_view text) {
        std::size_t pos = 0;
        std::u16string units;
        const std::string line(text);
        ReadEscapedText(line, pos, '\0', units);
        std::string root = text::Utf16ToUtf8(units);
        constexpr std::string_view kRegistry = "REGISTRY\\";
        if (root.size() > kRegistry.size() &&
            std::equal(kRegistry.begin(), kRegistry.end(), root.begin(),
                       [](char a, char b) { return a == (b >= 'a' && b <= 'z' ? b - 32 : b); })) {
            contents_.root = root.substr(kRegistry.size());
        }
    }

    // "[]" is the file's root itself, which holds values too. The keys of a file come in
    // order, so each starts from the longest leading part it shares with the one before.
    void ReadKey(std::size_t pos) {
        seen_key_ = true;
        key_ = nullptr;
        if (!ReadEscapedUtf8(line_, pos, ']', name_)) {
            throw BadLine{"the key name has no closing \"]\""};
        }
        path_.assign(contents_.root).append("\\").append(name_);
        std::size_t shared = 0;
        while (shared < made_.size() && made_[shared].first <= path_.size() &&
               path_.compare(0, made_[shared].first, last_path_, 0, made_[shared].first) == 0 &&
               (made_[shared].first == path_.size() || path_[made_[shared].first] == '\\')) {
            ++shared;
        }
        made_.resize(shared);
        WineKey* key = shared == 0 ? &top_ : made_.back().second;
        std::size_t start = shared == 0 ? 0 : made_.back().first + 1;
        while (start <= path_.size()) {
            const std::size_t end = std::min(path_.find('\\', start), path_.size());
            const std::string_view name = std::string_view(path_).substr(start, end - start);
            if (!name.empty()) {
                if (text::Utf16Length(name) > reg::kMaxKeyNameChars) {
                    last_path_.clear();
                    made_.clear();
                    throw BadLine{"a key name is longer than 255 characters"};
                }
                key = &key->Child(name);
                made_.emplace_back(end, key);
            }
            start = end + 1;
        }
        last_path_.swap(path_);
        key_ = key;
        if (contents_.record_lines) {
            contents_.sections.push_back({key, line_number_, line_number_ + 1});
        }
    }

    void ReadValue(std::size_t pos) {
        const std::size_t first_line = line_number_;
        WineValue value;
        if (line_[pos] == '@') {
            ++pos;
        } else {
            ++pos;
            if (!ReadEscapedUtf8(line_, pos, '"', value.name)) {
                throw BadLine{"the value name has no closing quote"};
            }
            ++pos;
        }
        SkipBlanks(line_, pos);
        if (pos == line_.size() || line_[pos] != '=') {
            throw BadLine{"expected \"=\" after the value name"};
        }
        ++pos;
        SkipBlanks(line_, pos);
        // Read whole even without a key, so that its continued lines go with it.
        ReadData(pos, value);
        if (key_ == nullptr) {
            throw BadLine{"a value outside any key"};
        }
        if (contents_.record_lines) {
            contents_.values.push_back(
                {contents_.sections.size() - 1, value.name, first_line, line_number_ + 1});
        }
        key_->SetValue(std::move(value));
    }

    void ReadData(std::size_t pos, WineValue& value) {
        const std::string_view rest = std::string_view(line_).substr(pos);
        if (StartsWith(rest, "\"")) {
            value.type = reg::kSz;
            ReadString(pos + 1, value);
        } else if (StartsWith(rest, "str:\"")) {
            value.type = reg::kSz;
            ReadString(pos + 5, value);
        } else if (StartsWith(rest, "str(")) {
            pos += 4;
            value.type = ReadHex32(line_, pos, "the type in str(n)");
            if (line_.compare(pos, 3, "):\"") != 0) {
                throw BadLine{"expected \"):\\\"\" after the type in str(n)"};
            }
            ReadString(pos + 3, value);
        } else if (StartsWith(rest, "dword:")) {
            pos += 6;
            const std::uint32_t number = ReadHex32(line_, pos, "dword");
            value.type = reg::kDword;
            for (int shift = 0; shift < 32; shift += 8) {
                value.data.push_back(static_cast<std::uint8_t>(number >> shift));
            }
            CheckLineEnd(pos);
        } else if (StartsWith(rest, "hex:")) {
            value.type = reg::kBinary;
            ReadHexBytes(pos + 4, value);
        } else if (StartsWith(rest, "hex(")) {
            pos += 4;
            value.type = ReadHex32(line_, pos, "the type in hex(n)");
            if (line_.compare(pos, 2, "):") != 0) {
                throw BadLine{"expected \"):\" after the type in hex(n)"};
            }
            ReadHexBytes(pos + 2, value);
        } else {
            throw BadLine{"unknown kind of data"};
        }
    }

    void CheckLineEnd(std::size_t pos) const {
        SkipBlanks(line_, pos);
        if (pos != line_.size()) {
            throw BadLine{"unexpected text after the data"};
        }
    }

    // Stored as the server stores it: UTF-16 with a terminating NUL.
    void ReadString(std::size_t pos, WineValue& value) {
        if (!ReadEscapedUtf8(line_, pos, '"', name_)) {
            throw BadLine{"the string has no closing quote"};
        }
        CheckLineEnd(pos + 1);
        value.data.reserve(name_.size() + 1);
        value.data.assign(name_.begin(), name_.end());
        value.data.push_back(0);
    }

    // Comma-separated bytes; a line ending in a backslash goes on in the next line.
    void ReadHexBytes(std::size_t pos, WineValue& value) {
        std::vector<std::uint8_t>& bytes = value.data;
        bytes.reserve((line_.size() - pos) / 3 + 1);
        bool expect_byte = true;
        while (true) {
            // The usual form, "hh," at a time.
            while (expect_byte && pos + 2 < line_.size() && line_[pos + 2] == ',') {
                const int high = HexDigit(line_[pos]);
                const int low = HexDigit(line_[pos + 1]);
                if (high < 0 || low < 0) {
                    break;
                }
                bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
                pos += 3;
            }
            SkipBlanks(line_, pos);
            if (pos == line_.size()) {
                break;
            }
            if (line_[pos] == '\\') {
                CheckLineEnd(pos + 1);
                if (!NextLine()) {
                    throw BadLine{"the file ends inside a value's data"};
                }
                pos = 0;
                SkipBlanks(line_, pos);
                continue;
            }
            if (!expect_byte) {
                if (line_[pos] != ',') {
                    throw BadLine{"expected \",\" between the bytes of the data"};
                }
                ++pos;
                expect_byte = true;
                continue;
            }
            const int high = HexDigit(line_[pos]);
            if (high < 0) {
                throw BadLine{"expected a hexadecimal byte in the data"};
            }
            ++pos;
            int byte = high;
            if (pos < line_.size() && HexDigit(line_[pos]) >= 0) {
                byte = byte * 16 + HexDigit(line_[pos++]);
            }
            bytes.push_back(static_cast<std::uint8_t>(byte));
            expect_byte = false;
        }
        if (reg::IsTextType(value.type)) {
            const std::string utf8 = Utf8FromUtf16Bytes(
                std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
            bytes.assign(utf8.begin(), utf8.end());
        }
    }

    std::istream& in_;
    WineKey& top_;
    WineFileContents& contents_;
    std::string line_;
    std::size_t line_number_ = 0;
    bool seen_key_ = false;
    WineKey* key_ = nullptr;
    std::string name_;  // scratch for names and strings
    std::string path_;
    std::string last_path_;
    // The key made for each name of the last key's path, and where that name ends.
    std::vector<std::pair<std::size_t, WineKey*>> made_;
};

}  // namespace

std::optional<std::string> ReadWineRegistryFile(std::istream& in, std::string_view default_root,
                                                WineKey& top, WineFileContents& contents) {
    return FileReader(in, top, contents).Read(default_root);
}

std::optional<std::string> ReadWineRegistryText(std::string_view text,
                                                std::string_view default_root, WineKey& top,
                                                WineFileContents& contents) {
    // Read in place, as a prefix's system.reg runs to megabytes; the stream only reads.
    class ViewBuffer : public std::streambuf {
      public:
        explicit ViewBuffer(std::string_view view) {
            char* begin = const_cast<char*>(view.data());
            setg(begin, begin, begin + view.size());
        }
    };
    ViewBuffer buffer(text);
    std::istream in(&buffer);
    return ReadWineRegistryFile(in, default_root, top, contents);
}

}  // namespace regvex::wine
