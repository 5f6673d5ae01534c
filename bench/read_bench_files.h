#pragma once
// The files that regvex_read_bench reads (see README.md): generated exports of a given
// size, the deletions of an export's keys and values, and files of awkward shapes.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

#include "reg_file_writer.h"
#include "registry_generator.h"
#include "text/ansi_code_page.h"

namespace regvex {

// An ANSI text file, written in large pieces.
class AnsiFile {
  public:
    explicit AnsiFile(const std::filesystem::path& file);
    void Write(std::string_view utf8);
    void Finish();

  private:
    void Flush();
    text::Windows1252CodePage ansi_;
    std::ofstream out_;
    std::string pending_;
};

// For every key: the key, a deletion of each of its values, and a deletion of the key.
class DeletionWriter final : public RegistrySink {
  public:
    explicit DeletionWriter(const std::filesystem::path& file);
    void Key(RootKeyHandle root, std::string_view path) override;
    void Value(std::string_view name, std::uint32_t, std::span<const std::uint8_t>) override;
    void Finish();

  private:
    void EndKey();
    AnsiFile file_;
    std::string key_;
};

struct ExportCount {
    std::size_t keys = 0;
    std::size_t values = 0;
};

// A generated export of about `megabytes`, its keys and values also handed to `also`
// when it is not null. Answers what was written.
ExportCount WriteExport(const std::filesystem::path& file, RegFileFormat format,
                        std::uint64_t megabytes, std::uint64_t seed, RegistrySink* also);

// values.reg, siblings.reg, deep.reg, nested.reg, and short_deletions.reg of
// `deletion_megabytes`, into `folder`.
void WriteShapes(const std::filesystem::path& folder, std::uint64_t deletion_megabytes);

}  // namespace regvex
