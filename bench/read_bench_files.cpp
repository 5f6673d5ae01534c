#include "read_bench_files.h"

#include <stdexcept>

namespace regvex {

namespace {

std::string Escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    return out;
}

// Passes keys and values on to the writer until the file reaches its size, and to a
// second sink for as long.
class CappedSink final : public RegistrySink {
  public:
    CappedSink(RegFileWriter& writer, std::uint64_t bytes, RegistrySink* also)
        : writer_(writer), bytes_(bytes), also_(also) {}

    void Key(RootKeyHandle root, std::string_view path) override {
        full_ = full_ || writer_.BytesWritten() >= bytes_;
        if (!full_) {
            writer_.Key(root, path);
            ++keys;
            if (also_ != nullptr) {
                also_->Key(root, path);
            }
        }
    }
    void Value(std::string_view name, std::uint32_t type,
               std::span<const std::uint8_t> data) override {
        if (!full_) {
            writer_.Value(name, type, data);
            ++values;
            if (also_ != nullptr) {
                also_->Value(name, type, data);
            }
        }
    }

    std::size_t keys = 0;
    std::size_t values = 0;

  private:
    RegFileWriter& writer_;
    std::uint64_t bytes_;
    RegistrySink* also_;
    bool full_ = false;
};

}  // namespace

AnsiFile::AnsiFile(const std::filesystem::path& file) : out_(file, std::ios::binary) {
    if (!out_) {
        throw std::runtime_error("cannot create " + file.string());
    }
}

void AnsiFile::Write(std::string_view utf8) {
    std::string ansi;
    ansi_.FromUtf8(utf8, ansi);
    pending_ += ansi;
    if (pending_.size() > (1u << 20)) {
        Flush();
    }
}

void AnsiFile::Finish() {
    Flush();
    out_.close();
    if (!out_) {
        throw std::runtime_error("a file could not be written");
    }
}

void AnsiFile::Flush() {
    out_.write(pending_.data(), static_cast<std::streamsize>(pending_.size()));
    pending_.clear();
}

DeletionWriter::DeletionWriter(const std::filesystem::path& file) : file_(file) {
    file_.Write("REGEDIT4\r\n");
}

void DeletionWriter::Key(RootKeyHandle root, std::string_view path) {
    EndKey();
    key_ = RootKeyName(root) + (path.empty() ? "" : "\\" + std::string(path));
    file_.Write("\r\n[" + key_ + "]\r\n");
}

void DeletionWriter::Value(std::string_view name, std::uint32_t, std::span<const std::uint8_t>) {
    file_.Write((name.empty() ? "@" : "\"" + Escaped(name) + "\"") + "=-\r\n");
}

void DeletionWriter::Finish() {
    EndKey();
    file_.Finish();
}

void DeletionWriter::EndKey() {
    if (!key_.empty()) {
        file_.Write("[-" + key_ + "]\r\n");
    }
}

// A generated export of about `megabytes`; the generator is asked for somewhat more keys
// than fit, per megabyte as measured on its registries.
ExportCount WriteExport(const std::filesystem::path& file, RegFileFormat format,
                        std::uint64_t megabytes, std::uint64_t seed, RegistrySink* also) {
    const std::size_t keys_per_megabyte = format == RegFileFormat::kVersion5 ? 680 : 1450;
    GeneratorOptions options;
    options.seed = seed;
    options.keys = static_cast<std::size_t>(megabytes) * keys_per_megabyte;
    options.values = options.keys * 5;
    RegFileWriter writer(file, format);
    CappedSink sink(writer, megabytes * (1u << 20), also);
    RegistryGenerator(options).Generate(sink);
    writer.Finish();
    return ExportCount{sink.keys, sink.values};
}

void WriteShapes(const std::filesystem::path& folder, std::uint64_t deletion_megabytes) {
    {
        // Short lines, where what each change costs beyond its text shows most.
        AnsiFile file(folder / "short_deletions.reg");
        file.Write("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Gone]\r\n");
        const std::uint64_t bytes = deletion_megabytes << 20;
        std::uint64_t written = 0;
        for (std::uint64_t i = 0; written < bytes; ++i) {
            const std::string line = i % 100 == 99
                                         ? "[-HKEY_CURRENT_USER\\Gone\\k" + std::to_string(i) +
                                               "]\r\n[HKEY_CURRENT_USER\\Gone]\r\n"
                                         : "\"v" + std::to_string(i % 1000) + "\"=-\r\n";
            file.Write(line);
            written += line.size();
        }
        file.Finish();
    }
    {
        AnsiFile file(folder / "values.reg");
        file.Write("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Many values]\r\n");
        for (int i = 0; i < 100'000; ++i) {
            file.Write("\"value " + std::to_string(i) + "\"=dword:0000002a\r\n");
        }
        file.Finish();
    }
    {
        AnsiFile file(folder / "siblings.reg");
        file.Write("REGEDIT4\r\n");
        for (int i = 200'000; i-- > 0;) {
            file.Write("\r\n[HKEY_CURRENT_USER\\Siblings\\key " + std::to_string(i) +
                       "]\r\n\"v\"=\"x\"\r\n");
        }
        file.Finish();
    }
    {
        // A chain 512 levels deep with 40 more keys at every level.
        AnsiFile file(folder / "deep.reg");
        file.Write("REGEDIT4\r\n");
        std::string chain = "HKEY_CURRENT_USER\\Deep";
        for (int level = 2; level <= 512; ++level) {
            for (int leaf = 0; leaf < 40; ++leaf) {
                file.Write("\r\n[" + chain + "\\leaf " + std::to_string(leaf) + "]\r\n");
            }
            chain += "\\level " + std::to_string(level);
            file.Write("\r\n[" + chain + "]\r\n\"v\"=\"x\"\r\n");
        }
        file.Finish();
    }
    {
        AnsiFile file(folder / "nested.reg");
        std::string line = "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER";
        for (int i = 0; i < 100'000; ++i) {
            line += "\\k";
        }
        file.Write(line + "]\r\n");
        file.Finish();
    }
}

}  // namespace regvex
