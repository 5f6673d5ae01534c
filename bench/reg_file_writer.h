#pragma once
// Writes a registry as regedit exports it: "Windows Registry Editor Version 5.00",
// UTF-16LE with a byte order mark, CR LF line ends, hex data wrapped at regedit's width.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

#include "registry_generator.h"

namespace regvex {

class RegFileWriter final : public RegistrySink {
  public:
    explicit RegFileWriter(const std::filesystem::path& file);

    void Key(RootKeyHandle root, std::string_view path) override;
    void Value(std::string_view name, std::uint32_t type,
               std::span<const std::uint8_t> data) override;

    // Writes out what is left; throws when the file could not be written.
    void Finish();

    // One value as regedit writes it, with CR LF continuation lines but no final line end.
    static std::string ValueLine(std::string_view name, std::uint32_t type,
                                 std::span<const std::uint8_t> data);

  private:
    void Write(std::string_view utf8);
    void Flush();

    std::filesystem::path file_;
    std::ofstream out_;
    std::string pending_;  // UTF-16LE bytes not yet written
};

}  // namespace regvex
