#pragma once
// Writes a registry as regedit exports it: "Windows Registry Editor Version 5.00",
// UTF-16LE with a byte order mark, or "REGEDIT4" in the ANSI code page (Windows-1252
// here, characters outside it as '?'); CR LF line ends, hex data wrapped at regedit's
// width.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

#include "registry_generator.h"

namespace regvex {

enum class RegFileFormat { kVersion5, kRegedit4 };

class RegFileWriter final : public RegistrySink {
  public:
    explicit RegFileWriter(const std::filesystem::path& file,
                           RegFileFormat format = RegFileFormat::kVersion5);

    void Key(RootKeyHandle root, std::string_view path) override;
    void Value(std::string_view name, std::uint32_t type,
               std::span<const std::uint8_t> data) override;

    // Writes out what is left; throws when the file could not be written.
    void Finish();

    // Bytes of the file so far, those not yet written out included.
    std::uint64_t BytesWritten() const { return written_ + pending_.size(); }

    // One value as regedit writes it, with CR LF continuation lines but no final line end;
    // UTF-8 text, but text data in hex as the file's encoding stores it.
    static std::string ValueLine(std::string_view name, std::uint32_t type,
                                 std::span<const std::uint8_t> data,
                                 RegFileFormat format = RegFileFormat::kVersion5);

  private:
    void Write(std::string_view utf8);
    void Flush();

    std::filesystem::path file_;
    RegFileFormat format_;
    std::ofstream out_;
    std::string pending_;  // bytes in the file's encoding not yet written
    std::uint64_t written_ = 0;
};

}  // namespace regvex
