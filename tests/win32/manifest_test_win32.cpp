// The rights each built program asks Windows for, read out of its manifest resource as
// Windows reads it before the program starts.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"

namespace regvex {
namespace {

// The text of the program's manifest, or empty when it has none.
std::string ManifestOf(const std::string& program) {
    const handles::UniqueModule module(
        LoadLibraryExW(text::ToWide(program).c_str(), nullptr,
                       LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    if (!module) {
        ADD_FAILURE() << program << " cannot be loaded: error " << GetLastError();
        return {};
    }
    const HRSRC found = FindResourceW(module.get(), MAKEINTRESOURCEW(1), RT_MANIFEST);
    const HGLOBAL loaded = found == nullptr ? nullptr : LoadResource(module.get(), found);
    const void* bytes = loaded == nullptr ? nullptr : LockResource(loaded);
    if (bytes == nullptr) {
        return {};
    }
    return std::string(static_cast<const char*>(bytes), SizeofResource(module.get(), found));
}

TEST(Manifests, TheWindowAsksForTheHighestRightsAndTheCommandLineForTheInvokers) {
    const struct {
        std::string program;
        std::string level;
    } cases[] = {
        // An administrator's Fix needs the full token to delete under HKEY_LOCAL_MACHINE.
        {REGVEX_PROGRAM_EXE, "highestAvailable"},
        // Scripts decide how the command line runs; it reports what it was refused.
        {REGVEX_CLI_EXE, "asInvoker"},
    };
    for (const auto& c : cases) {
        const std::string manifest = ManifestOf(c.program);
        EXPECT_NE(manifest.find("<requestedExecutionLevel level=\"" + c.level + "\""),
                  std::string::npos)
            << c.program << ":\n"
            << manifest;
    }
}

}  // namespace
}  // namespace regvex
