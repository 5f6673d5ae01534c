// Export files that arrive through a pipe, as `--registry <(...)` hands them over.

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "backup/reg_file_reader.h"
#include "support/registry_dump.h"

namespace regvex::backup {
namespace {

TEST(RegFilePipe, APipeIsReadAsItComesAndAVersion5FileIsReadAheadForItsEncoding) {
    const text::Windows1252CodePage ansi;
    const std::string v5 = "Windows Registry Editor Version 5.00\n";
    // Past the first 64 KB, so that the encoding is only known after reading ahead.
    const std::string filler = ";" + std::string(100000, 'c') + "\n";
    const struct {
        std::string bytes;
        std::string expected;
    } cases[] = {
        {"REGEDIT4\n[HKCU\\a]\n\"v\"=\"\xE9\"\n", "HKEY_CURRENT_USER\\a\n  v=1:\\xc3\\xa9\\x00\n"},
        {v5 + filler + "[HKCU\\\xC3\xA9]", "HKEY_CURRENT_USER\\\\xc3\\xa9\n"},
        {v5 + "[HKCU\\\xC3\xA9]\n" + filler + ";\xE9", "HKEY_CURRENT_USER\\\\xc3\\x83\\xc2\\xa9\n"},
    };
    const std::filesystem::path fifo =
        std::filesystem::temp_directory_path() / ("regvex-pipe-test-" + std::to_string(::getpid()));
    for (const auto& c : cases) {
        ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
        std::thread writer([&] { std::ofstream(fifo, std::ios::binary) << c.bytes; });
        MemoryRegistry registry;
        const auto error = ImportRegFile(fifo, registry, ansi);
        if (error) {
            // Let the writer finish whatever the reader left unread.
            std::ifstream drain(fifo, std::ios::binary);
            const std::string rest{std::istreambuf_iterator<char>(drain), {}};
        }
        writer.join();
        std::filesystem::remove(fifo);
        ASSERT_FALSE(error.has_value()) << error->message;
        EXPECT_EQ(testing::DumpRegistry(registry), c.expected);
    }
}

}  // namespace
}  // namespace regvex::backup
