#include "engine/file_reference.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "engine/caching_file_existence.h"
#include "engine/drive_map.h"
#include "engine/path_exists.h"
#include "support/temp_folder.h"

namespace regvex {
namespace {

TEST(ValidatePath, CutsOnePlainFilePathOrRejects) {
    const struct {
        const char* text;
        const char* result;
    } cases[] = {
        {"C:\\Program Files\\App\\app.exe", "C:\\PROGRAM FILES\\APP\\APP.EXE"},
        {"\"C:\\Program Files\\App\\app.exe\" /start", "C:\\PROGRAM FILES\\APP\\APP.EXE"},
        {"C:\\App\\app.exe,0", "C:\\APP\\APP.EXE"},
        {"C:\\App\\setup.exe %1", "C:\\APP\\SETUP.EXE"},
        {"rundll32.exe C:\\Win\\shell32.dll,Control_RunDLL", "C:\\WIN\\SHELL32.DLL"},
        {"C:\\Win\\rundll32.exe C:\\Win\\x.dll,Entry", "Rejected"},
        {"C:\\App\\data.ini", "C:\\APP\\DATA.INI"},
        {"C:\\App\\page.html", "Rejected"},
        {"C:\\App\\", "Rejected"},
        {"C:\\a.txt.exe", "Rejected"},
        {"C:\\x\\y.dat:z", "Rejected"},
        {"D:\\App\\app.exe", "Rejected"},
        // Beyond the classic examples.
        {"c:\\lower\\case.dll", "C:\\LOWER\\CASE.DLL"},
        {"C:\\NoExtension", "Rejected"},
        {"C:\\App\\x.ini %1", "Rejected"},       // the blank before %1 stays
        {"C:\\App\\x.ini%1", "C:\\APP\\X.INI"},  // nothing is left of %1 without a blank
        {"C:\\App\\a.exe -x=c.y", "Rejected"},   // a further dot after the cut
        {"C:\\App\\a.exe /x", "C:\\APP\\A.EXE"},
        {"C:\\App\\Sound.wav|2", "C:\\APP\\SOUND.WAV"},
        {"C:\\App\\a.dll;C:\\App\\b.dll", "Rejected"},
        {"@C:\\App\\res.dll,-101", "C:\\APP\\RES.DLL"},
        {"C:\\\xC3\xA9t\xC3\xA9\\caf\xC3\xA9.exe", "C:\\\xC3\x89T\xC3\x89\\CAF\xC3\x89.EXE"},
        {"C:\\a\\b.\xC3\xA9\xC3\xA9\xC3\xA9x", "Rejected"},  // extension of three letters, é é é
        {"C:\\a\\b.\xC3\xA9\xC3\xA9\xC3\xA9", "C:\\A\\B.\xC3\x89\xC3\x89\xC3\x89"},
        {"*", "Rejected"},
        {"", "Rejected"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ValidatePath(c.text, "C:\\"), c.result) << c.text;
    }
}

TEST(ExtractPath, MarksThePartOfTheTextThePathCameFrom) {
    const struct {
        const char* text;
        bool names_drive;
        std::size_t start, length;
        const char* cut;
        const char* path;
    } cases[] = {
        {"\"C:\\Program Files\\App\\app.exe\" /start", true, 1, 28,
         "C:\\PROGRAM FILES\\APP\\APP.EXE", "C:\\PROGRAM FILES\\APP\\APP.EXE"},
        {"C:\\App\\app.exe,0", true, 0, 14, "C:\\APP\\APP.EXE", "C:\\APP\\APP.EXE"},
        // "%1" lies inside the part, though the path drops it.
        {"C:\\App\\x.ini%1", true, 0, 14, "C:\\APP\\X.INI", "C:\\APP\\X.INI"},
        // Dotless i and long s upper-case to one byte from two: places are in the text given.
        {"\xC4\xB1\xC4\xB1 C:\\a.exe", true, 5, 8, "C:\\A.EXE", "C:\\A.EXE"},
        {"C:\\\xC5\xBF.exe x", true, 0, 9, "C:\\S.EXE", "C:\\S.EXE"},
        {"C:\\Win\\rundll32.exe C:\\Win\\x.dll,Entry", true, 0, 19, "C:\\WIN\\RUNDLL32.EXE",
         "Rejected"},
        {"C:\\x\\y.dat:z", true, 0, 1, "C", "Rejected"},
        {"D:\\App\\app.exe", false, 0, 0, "C:\\", "Rejected"},
    };
    for (const auto& c : cases) {
        const PathExtraction x = ExtractPath(c.text, "C:\\");
        EXPECT_EQ(x.names_drive, c.names_drive) << c.text;
        EXPECT_EQ(x.start, c.start) << c.text;
        EXPECT_EQ(x.length, c.length) << c.text;
        EXPECT_EQ(x.cut, c.cut) << c.text;
        EXPECT_EQ(x.path, c.path) << c.text;
        EXPECT_EQ(x.path, ValidatePath(c.text, "C:\\")) << c.text;
    }
}

TEST(ValidatePath, HelpersSplitTheWholeText) {
    const struct {
        const char* path;
        const char* dir;
        const char* title;
        const char* ext;
    } cases[] = {
        {"C:\\A\\B.EXE", "C:\\A\\", "B", "EXE"},  {"C:\\A\\B.HTML", "C:\\A\\", "B", "HTM"},
        {"C:\\A\\B", "C:\\A\\", "B", ""},         {"B.EXE", "", "B", "EXE"},
        {"C:\\A.D\\B", "C:\\A.D\\", "A", "D\\B"},  // the last dot lies in a folder name
        {"C:\\A\\B.", "C:\\A\\", "B", ""},        {"", "", "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(GetFileDir(c.path), c.dir) << c.path;
        EXPECT_EQ(GetFileTitle(c.path), c.title) << c.path;
        EXPECT_EQ(GetFileExt(c.path), c.ext) << c.path;
    }
}

// The cutting rules applied literally, one step after the other, to check the faster
// version against.
std::string LiteralValidatePath(std::string s, const std::string& drive) {
    if (s.find(drive) == std::string::npos) {
        s = drive;
    }
    s.erase(0, s.find(drive));
    const std::string expected = GetFileDir(s) + GetFileTitle(s) + "." + GetFileExt(s);
    for (const char* ext :
         {".SYS", ".EXE", ".DLL", ".OCX", ".OCA", ".VXD", ".AX",  ".COM", ".CPL", ".TLB", ".SCR",
          ".BAT", ".DRV", ".MSI", ".ZIP", ".RAR", ".HLP", ".LNK", ".JPG", ".BMP", ".PDF", ".TXT"}) {
        if (const auto at = s.find(ext); at != std::string::npos) {
            s.erase(at + std::string(ext).size());
        }
    }
    for (const char c : std::string("/*?<>|,(;")) {
        if (const auto at = s.find(c); at != std::string::npos) {
            s.erase(at);
        }
    }
    if (s.find(':', 2) != std::string::npos) {
        s.erase(s.find(':'));
    }
    for (auto at = s.find("%1"); at != std::string::npos; at = s.find("%1", at)) {
        s.erase(at, 2);
    }
    return s == expected ? s : "Rejected";
}

TEST(ValidatePath, AgreesWithTheRulesAppliedOneByOne) {
    const char* pieces[] = {"C:\\", "D:\\",  "\\",  ".", ".EXE", ".DLL", ".TXT", ".AX", ".AXE",
                            ".SYS", ".HTML", "APP", "A", " ",    ",",    ";",    "(",   "/",
                            ":",    "%1",    "%",   "1", "\"",   ".EX",  "E"};
    std::uint64_t state = 12345;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        state = state * 6364136223846793005u + 1442695040888963407u;
        const int count = static_cast<int>((state >> 33) % 12);
        for (int i = 0; i < count; ++i) {
            state = state * 6364136223846793005u + 1442695040888963407u;
            text += pieces[(state >> 33) % std::size(pieces)];
        }
        ASSERT_EQ(ValidatePath(text, "C:\\"), LiteralValidatePath(text, "C:\\")) << text;
    }
}

class CountingFiles final : public FileExistence {
  public:
    explicit CountingFiles(std::vector<int> answers) : answers_(std::move(answers)) {}
    int Check(const std::string&) override { return answers_[calls++]; }
    std::size_t calls = 0;

  private:
    std::vector<int> answers_;
};

TEST(PathExists, OnlyAnExactOneMeansPresentAndOtherAnswersAreAskedTwice) {
    const struct {
        std::vector<int> answers;
        bool exists;
        std::size_t calls;
    } cases[] = {
        {{1}, true, 1},
        {{0, 1}, false, 2},
        {{-1, 1}, false, 2},
        {{2, 0}, false, 2},
    };
    for (const auto& c : cases) {
        CountingFiles files(c.answers);
        EXPECT_EQ(PathExists(files, "C:\\x"), c.exists);
        EXPECT_EQ(files.calls, c.calls);
    }
}

TEST(DriveMap, AnswersAsWindowsWouldForAMappedDrive) {
    testing::TempFolder drive;
    std::filesystem::create_directories(drive.path() / "Program Files" / "App");
    std::ofstream(drive.path() / "Program Files" / "App" / "App.exe").put('x');
    std::ofstream(drive.path() / "top.dll").put('x');

    DriveMapFileExistence files;
    files.Map('c', drive.path());
    const struct {
        const char* path;
        int answer;
    } cases[] = {
        {"C:\\Program Files\\App\\App.exe", 1},
        {"C:\\PROGRAM FILES\\APP\\APP.EXE", 1},
        {"c:/program files/app/app.exe", 1},
        {"C:\\Program Files\\\\App\\.\\App.exe", 1},
        {"C:\\Program Files\\Other\\..\\App\\App.exe", 1},
        {"C:\\..\\..\\top.dll", 1},  // ".." stops at the root
        {"C:\\top.dll. . ", 1},      // trailing dots and blanks of the last name
        {"C:\\Program Files\\App", 1},
        {"C:\\Program Files\\App\\", 1},
        {"C:\\", 1},
        {"C:\\Program Files\\App\\missing.exe", 0},
        {"C:\\top.dll\\App.exe", 0},  // a file is not a folder
        {"C:\\Program Files \\App\\App.exe", 0},
        {"C:\\Program Files\\App\\App.exe\"", 0},
        {"C:\\Program Files\\App\\App*.exe", 0},
        {"D:\\top.dll", 0},
        {"Rejected", 0},
        {"\\top.dll", 0},
        {"C:top.dll", 0},
        {"", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(files.Check(c.path), c.answer) << c.path;
    }
}

TEST(DriveMap, AFileAndAFolderNamedAlikeButForCaseAreBothThere) {
    testing::TempFolder drive;
    std::filesystem::create_directories(drive.path() / "SUB");
    if (std::filesystem::exists(drive.path() / "sub")) {
        GTEST_SKIP() << "this file system does not tell names apart by case";
    }
    // The file is made before its folder once and after it once, so that either can be
    // listed first.
    std::ofstream(drive.path() / "sub").put('x');
    std::ofstream(drive.path() / "SUB" / "in.dll").put('x');
    std::ofstream(drive.path() / "zed").put('x');
    std::filesystem::create_directories(drive.path() / "ZED");
    std::ofstream(drive.path() / "ZED" / "in.dll").put('x');

    DriveMapFileExistence files;
    files.Map('C', drive.path());
    for (const char* path : {"C:\\sub", "C:\\SUB", "C:\\sub\\in.dll", "C:\\zed\\in.dll"}) {
        EXPECT_EQ(files.Check(path), 1) << path;
    }
    EXPECT_EQ(files.Check("C:\\sub\\missing.dll"), 0);
}

class CountingAnswers final : public FileExistence {
  public:
    int Check(const std::string& path) override {
        ++asked[path];
        return path.ends_with(".EXE") ? 1 : 0;
    }
    std::map<std::string, int> asked;
};

TEST(CachingFileExistence, AsksThePlatformOncePerPathAndKeepsItsAnswer) {
    CountingAnswers platform;
    CachingFileExistence files(platform);
    const std::vector<std::pair<std::string, bool>> asks = {
        {"C:\\A.EXE", true},  {"C:\\B.DLL", false}, {"C:\\A.EXE", true},
        {"C:\\B.DLL", false}, {"c:\\a.exe", false}, {"Rejected", false},
    };
    for (const auto& [path, exists] : asks) {
        EXPECT_EQ(PathExists(files, path), exists) << path;
    }
    // Paths are remembered as written: the lower-case spelling is a question of its own.
    EXPECT_EQ(platform.asked,
              (std::map<std::string, int>{
                  {"C:\\A.EXE", 1}, {"C:\\B.DLL", 1}, {"Rejected", 1}, {"c:\\a.exe", 1}}));
}

}  // namespace
}  // namespace regvex
