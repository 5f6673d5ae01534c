#include "reg_file_writer.h"

#include <cstring>
#include <stdexcept>

#include "engine/registry.h"
#include "text/ansi_code_page.h"
#include "text/utf8.h"

namespace regvex {

namespace {

// Hex lines break after the comma that reaches this column, so that with the trailing
// backslash no line passes 80 columns; continuation lines start two blanks in.
constexpr std::size_t kHexWrapColumn = 77;
constexpr std::size_t kFlushBytes = 1 << 20;

constexpr char kLowerHex[] = "0123456789abcdef";

std::string Escaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    return out;
}

std::string NamePart(std::string_view name) {
    if (name.empty()) {
        return "@=";
    }
    std::string part = "\"";
    part += Escaped(name);
    part += "\"=";
    return part;
}

// Written as "text" only when the data is that text and one terminating NUL: anything
// else would not come back byte for byte.
bool IsPlainString(std::span<const std::uint8_t> data) {
    return !data.empty() && data.back() == 0 &&
           std::memchr(data.data(), 0, data.size() - 1) == nullptr;
}

std::string TypePrefix(std::uint32_t type) {
    if (type == reg::kBinary) {
        return "hex:";
    }
    std::string digits;
    do {
        digits.insert(digits.begin(), kLowerHex[type & 0x0F]);
        type >>= 4;
    } while (type != 0);
    return "hex(" + digits + "):";
}

void AppendUtf16(std::string& out, std::string_view utf8) {
    for (const char16_t unit : text::Utf8ToUtf16(utf8)) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    }
}

void AppendAnsi(std::string& out, std::string_view utf8) {
    static const text::Windows1252CodePage kAnsi;
    std::string ansi;
    kAnsi.FromUtf8(utf8, ansi);
    out.append(ansi);
}

void AppendEncoded(std::string& out, std::string_view utf8, RegFileFormat format) {
    if (format == RegFileFormat::kVersion5) {
        AppendUtf16(out, utf8);
    } else {
        AppendAnsi(out, utf8);
    }
}

}  // namespace

RegFileWriter::RegFileWriter(const std::filesystem::path& file, RegFileFormat format)
    : file_(file), format_(format), out_(file, std::ios::binary | std::ios::trunc) {
    if (!out_) {
        throw std::runtime_error("cannot create " + file.string());
    }
    if (format_ == RegFileFormat::kVersion5) {
        pending_ = "\xFF\xFE";
        Write("Windows Registry Editor Version 5.00\r\n");
    } else {
        Write("REGEDIT4\r\n");
    }
}

void RegFileWriter::Key(RootKeyHandle root, std::string_view path) {
    std::string line = "\r\n[" + RootKeyName(root);
    if (!path.empty()) {
        line.push_back('\\');
        line.append(path);
    }
    line.append("]\r\n");
    Write(line);
}

void RegFileWriter::Value(std::string_view name, std::uint32_t type,
                          std::span<const std::uint8_t> data) {
    std::string line = ValueLine(name, type, data, format_);
    line.append("\r\n");
    Write(line);
}

std::string RegFileWriter::ValueLine(std::string_view name, std::uint32_t type,
                                     std::span<const std::uint8_t> data, RegFileFormat format) {
    std::string line = NamePart(name);
    if (type == reg::kSz && IsPlainString(data)) {
        const std::string_view text(reinterpret_cast<const char*>(data.data()), data.size() - 1);
        return line + "\"" + Escaped(text) + "\"";
    }
    if (type == reg::kDword && data.size() == 4) {
        line.append("dword:");
        for (int i = 3; i >= 0; --i) {
            line.push_back(kLowerHex[data[static_cast<std::size_t>(i)] >> 4]);
            line.push_back(kLowerHex[data[static_cast<std::size_t>(i)] & 0x0F]);
        }
        return line;
    }
    // Text types are stored as UTF-8 here but in the file's encoding in the file.
    std::string encoded;
    if (reg::IsTextType(type)) {
        AppendEncoded(encoded,
                      std::string_view(reinterpret_cast<const char*>(data.data()), data.size()),
                      format);
        data = std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(encoded.data()),
                                             encoded.size());
    }
    line.append(TypePrefix(type));
    std::size_t column = text::Utf16Length(line);
    for (std::size_t i = 0; i < data.size(); ++i) {
        line.push_back(kLowerHex[data[i] >> 4]);
        line.push_back(kLowerHex[data[i] & 0x0F]);
        if (i + 1 == data.size()) {
            break;
        }
        line.push_back(',');
        column += 3;
        if (column >= kHexWrapColumn) {
            line.append("\\\r\n  ");
            column = 2;
        }
    }
    return line;
}

void RegFileWriter::Finish() {
    Write("\r\n");
    Flush();
    out_.close();
    if (!out_) {
        throw std::runtime_error("cannot write " + file_.string());
    }
}

void RegFileWriter::Write(std::string_view utf8) {
    AppendEncoded(pending_, utf8, format_);
    if (pending_.size() >= kFlushBytes) {
        Flush();
    }
}

void RegFileWriter::Flush() {
    out_.write(pending_.data(), static_cast<std::streamsize>(pending_.size()));
    written_ += pending_.size();
    pending_.clear();
    if (!out_) {
        throw std::runtime_error("cannot write " + file_.string());
    }
}

}  // namespace regvex
