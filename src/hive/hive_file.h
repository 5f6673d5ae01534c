#pragma once
// Opens a hive file as a registry: checks that it is a hive and whole, recovers it in
// memory from its transaction logs when it was not written cleanly, and says what is
// wrong when it cannot be read. Neither the hive nor its logs are ever written.

#include <filesystem>
#include <memory>
#include <string>

#include "hive/hive_registry.h"
#include "text/ansi_code_page.h"

namespace regvex::hive {

struct OpenedHive {
    std::unique_ptr<HiveRegistry> registry;  // null when the file cannot be read as a hive
    std::string error;                       // then: the file's name and what is wrong
};

// Warnings (a hive read without its recent changes, damaged parts left out) go to
// `warn`, now and while the registry is read.
OpenedHive OpenHiveFile(const std::filesystem::path& file, WarningSink warn,
                        const text::AnsiCodePage& ansi = text::DefaultAnsiCodePage());

}  // namespace regvex::hive
