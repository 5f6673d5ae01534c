#include "backup/reg_file_reader.h"

namespace regvex {

std::optional<RegFileError> ImportRegText(std::string_view, MemoryRegistry&,
                                          const text::AnsiCodePage&) {
    return RegFileError{0, "not implemented yet"};
}

std::optional<RegFileError> ImportRegFile(const std::filesystem::path&, MemoryRegistry&,
                                          const text::AnsiCodePage&) {
    return RegFileError{0, "not implemented yet"};
}

}  // namespace regvex
