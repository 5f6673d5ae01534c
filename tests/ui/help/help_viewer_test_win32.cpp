// The HTML Help engine for real. Under Wine (mshtml switched off) the engine opens its
// whole window, contents and index included, and only the page itself stays blank; so a
// shown help is a window of the engine's own class with the help's title and contents.

#include "ui/help/help_viewer_win32.h"

#include <commctrl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/help/help_file.h"

namespace regvex::ui::help {
namespace {

std::string WindowsPath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

const std::string kCompiledHelp = WindowsPath(REGVEX_HELP_CHM);
const std::string kHelpContents = WindowsPath(REGVEX_HELP_CONTENT_DIR "/regvexlor.hhc");

std::wstring ClassOf(HWND window) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

BOOL CALLBACK CollectHelpWindow(HWND window, LPARAM list) {
    if (ClassOf(window) == L"HH Parent") {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    }
    return TRUE;
}

// The help windows of this thread: the engine makes its windows on the thread that asks.
std::vector<HWND> HelpWindows() {
    std::vector<HWND> found;
    EnumThreadWindows(GetCurrentThreadId(), CollectHelpWindow, reinterpret_cast<LPARAM>(&found));
    return found;
}

struct ChildSearch {
    std::wstring window_class;
    HWND found = nullptr;
};

BOOL CALLBACK MatchChild(HWND window, LPARAM data) {
    auto* search = reinterpret_cast<ChildSearch*>(data);
    if (ClassOf(window) == search->window_class) {
        search->found = window;
        return FALSE;
    }
    return TRUE;
}

HWND FindDescendant(HWND parent, const wchar_t* window_class) {
    ChildSearch search{window_class};
    EnumChildWindows(parent, MatchChild, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::string Title(HWND window) {
    wchar_t title[256] = {};
    GetWindowTextW(window, title, 256);
    return text::FromWide(title);
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// The folder of this test program, which holds no help file.
std::string OwnFolder() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path);
    return text::FromWide(folder.substr(0, folder.find_last_of(L'\\')));
}

std::string TempFile(const std::string& name, const std::string& bytes) {
    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    const std::string path = text::FromWide(folder) + name;
    std::ofstream(std::filesystem::path(text::ToWide(path)), std::ios::binary) << bytes;
    return path;
}

class OwnerWindow : public handles::UniqueWindow {
  public:
    OwnerWindow()
        : handles::UniqueWindow(CreateWindowExW(0, L"STATIC", L"Registry Vexlor",
                                                WS_OVERLAPPEDWINDOW, 0, 0, 400, 300, nullptr,
                                                nullptr, GetModuleHandleW(nullptr), nullptr)) {}
};

// A program folder without its help file, and a file that the engine cannot open.
TEST(HelpViewer, AnswersFalseWhenThereIsNoHelpToShow) {
    const std::string broken = TempFile("regvexlor-broken-help.chm", "This is not a help file.");
    OwnerWindow owner;
    HelpViewer viewer;
    for (const std::string& path : {HelpFilePath(OwnFolder()), broken}) {
        EXPECT_FALSE(viewer.Show(owner.get(), path)) << path;
        EXPECT_TRUE(HelpWindows().empty()) << path;
    }
    DeleteFileW(text::ToWide(broken).c_str());
}

class RealHelp : public ::testing::Test {
  protected:
    void SetUp() override {
        if (std::string(REGVEX_HELP_CHM).empty()) {
            GTEST_SKIP() << "chmcmd was not found when the build was set up: no help file";
        }
    }
};

TEST_F(RealHelp, OpensInTheCallersWindowWithItsTitleAndContents) {
    OwnerWindow owner;
    HelpViewer viewer;
    ASSERT_TRUE(viewer.Show(owner.get(), kCompiledHelp));

    const std::vector<HWND> windows = HelpWindows();
    ASSERT_EQ(windows.size(), 1u);
    const HWND help = windows.front();
    EXPECT_EQ(GetWindow(help, GW_OWNER), owner.get());
    EXPECT_EQ(Title(help), REGVEX_HELP_TITLE);

    // Every topic of the contents made it into the engine's contents tree.
    std::ifstream contents(kHelpContents, std::ios::binary);
    const std::string source((std::istreambuf_iterator<char>(contents)),
                             std::istreambuf_iterator<char>());
    const HWND tree = FindDescendant(help, L"SysTreeView32");
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(static_cast<std::size_t>(SendMessageW(tree, TVM_GETCOUNT, 0, 0)),
              CountOf(source, "<LI>"));

    // A page further in goes to the same window.
    EXPECT_TRUE(viewer.ShowTopic(owner.get(), kCompiledHelp, "results.htm#menu"));
    EXPECT_EQ(HelpWindows().size(), 1u);

    viewer.CloseAll();
    EXPECT_TRUE(HelpWindows().empty());
}

TEST_F(RealHelp, ClosesItsWindowsAndReleasesTheEngineWhenItGoes) {
    OwnerWindow owner;
    {
        HelpViewer viewer;
        ASSERT_TRUE(viewer.Show(owner.get(), kCompiledHelp));
        ASSERT_EQ(HelpWindows().size(), 1u);
    }
    EXPECT_TRUE(HelpWindows().empty());
    EXPECT_EQ(GetModuleHandleW(L"hhctrl.ocx"), nullptr);
}

}  // namespace
}  // namespace regvex::ui::help
