// The view pieces a scan leans on: texts and a list that are drawn at the scan's pauses
// rather than at every change, and a results list whose columns follow the widest text
// added and whose cells read back whole.

#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "text/utf8.h"
#include "text/wide_text_win32.h"
#include "ui/base/throttled_text_win32.h"
#include "ui/base/win32_controls_win32.h"
#include "ui/check_list_control_win32.h"

namespace regvex::ui {
namespace {

using namespace std::chrono_literals;

int g_texts_shown = 0;
std::vector<bool> g_redraws;

LRESULT CALLBACK CountTexts(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                            DWORD_PTR) {
    if (message == WM_SETTEXT) {
        ++g_texts_shown;
    }
    return DefSubclassProc(window, message, wparam, lparam);
}

LRESULT CALLBACK CountRedraws(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                              DWORD_PTR) {
    if (message == WM_SETREDRAW) {
        g_redraws.push_back(wparam != FALSE);
    }
    return DefSubclassProc(window, message, wparam, lparam);
}

class ViewControlsTest : public ::testing::Test {
  protected:
    // One visible frame for all: taking a top-level window down costs Wine a while.
    static void SetUpTestSuite() {
        InitCommonControls();
        frame_ = new handles::UniqueWindow(
            CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 700, 500,
                            nullptr, nullptr, nullptr, nullptr));
    }
    static void TearDownTestSuite() {
        delete frame_;
        frame_ = nullptr;
    }

    HWND Child(const wchar_t* window_class, DWORD style) {
        child_.Reset(CreateWindowExW(0, window_class, L"", WS_CHILD | WS_VISIBLE | style, 10, 10,
                                     600, 400, frame_->get(), nullptr, nullptr, nullptr));
        return child_.get();
    }
    // A list of the results' four columns, with check boxes.
    HWND ResultsList(CheckListControl& results) {
        const HWND list = Child(WC_LISTVIEWW, LVS_REPORT);
        ListView_SetExtendedListViewStyle(list, LVS_EX_CHECKBOXES);
        results.Attach(list, nullptr);
        for (const char* caption : {"Status", "RootKey", "SubKey", "Value"}) {
            results.AddColumn({caption, "", ""});
        }
        return list;
    }

    static handles::UniqueWindow* frame_;
    handles::UniqueWindow child_;
};

handles::UniqueWindow* ViewControlsTest::frame_ = nullptr;

TEST_F(ViewControlsTest, WhileHeldTextsWaitForAPauseInTimeAndTheLastIsShownAtTheEnd) {
    const HWND label = Child(L"STATIC", SS_LEFT);
    SetWindowSubclass(label, CountTexts, 1, 0);
    g_texts_shown = 0;
    ThrottledText text;
    text.Attach(label);
    const auto shown = [&] { return std::make_pair(WindowTextOf(label), g_texts_shown); };

    text.SetCaption("before the scan");
    EXPECT_EQ(shown(), std::make_pair(std::string("before the scan"), 1));
    const auto start = Pace::Clock::now();
    text.AtPause(start);
    for (int i = 1; i <= 2000; ++i) {
        text.SetCaption("Key " + std::to_string(i));
    }
    EXPECT_EQ(text.Caption(), "Key 2000");
    EXPECT_EQ(shown(), std::make_pair(std::string("before the scan"), 1));
    text.AtPause(start + 50ms);  // too soon after the last one shown
    EXPECT_EQ(shown(), std::make_pair(std::string("before the scan"), 1));
    text.AtPause(start + 10s);
    EXPECT_EQ(shown(), std::make_pair(std::string("Key 2000"), 2));
    text.SetCaption("the end");
    text.Release();
    EXPECT_EQ(shown(), std::make_pair(std::string("the end"), 3));
    text.SetCaption("after the scan");
    EXPECT_EQ(shown(), std::make_pair(std::string("after the scan"), 4));
    RemoveWindowSubclass(label, CountTexts, 1);
}

TEST_F(ViewControlsTest, WhileHeldTheListIsDrawnAtPausesAndAlwaysAtTheEnd) {
    const HWND list = Child(WC_LISTVIEWW, LVS_REPORT);
    SetWindowSubclass(list, CountRedraws, 1, 0);
    CheckListControl results;
    results.Attach(list, nullptr);
    results.AddColumn({"Status", "", ""});
    const auto add_rows = [&] {
        for (int i = 0; i < 10; ++i) {
            results.AddRow({"Invalid Entry"});
        }
    };
    g_redraws.clear();
    add_rows();  // not held: the list draws as usual
    EXPECT_TRUE(g_redraws.empty());

    const auto start = Pace::Clock::now();
    results.AtPause(start);
    add_rows();
    results.AtPause(start + 100ms);
    EXPECT_EQ(g_redraws, (std::vector<bool>{false}));
    results.AtPause(start + 10s);
    EXPECT_EQ(g_redraws, (std::vector<bool>{false, true}));
    add_rows();
    results.Release();
    EXPECT_EQ(g_redraws, (std::vector<bool>{false, true, false, true}));
    add_rows();
    EXPECT_EQ(g_redraws.size(), 4u);
    EXPECT_EQ(results.RowCount(), 40);
    RemoveWindowSubclass(list, CountRedraws, 1);
}

TEST_F(ViewControlsTest, ColumnsGrowToTheWidestTextAndRowsKeepTheirTexts) {
    CheckListControl results;
    const HWND list = ResultsList(results);
    const std::string longest = "HKEY_LOCAL_MACHINE\\SOFTWARE\\A rather long key name \\ value";
    for (const std::string& key : {std::string("short"), longest, std::string("medium key")}) {
        results.AddRow({"Invalid Entry", "HKEY_CURRENT_USER", key, "C:\\gone.exe"});
        for (int column = 1; column < results.ColumnCount(); ++column) {
            results.AutoSizeColumn(column);
        }
    }

    const std::wstring wide = text::ToWide(longest);
    const int needed = static_cast<int>(
        SendMessageW(list, LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(wide.c_str())));
    EXPECT_GE(ListView_GetColumnWidth(list, 2), needed);
    EXPECT_LT(ListView_GetColumnWidth(list, 2), needed + 40);
    ASSERT_EQ(results.RowCount(), 3);
    EXPECT_EQ(results.Text(1, 2), longest);
    EXPECT_EQ(results.Text(2, 3), "C:\\gone.exe");

    results.Clear();
    EXPECT_EQ(results.RowCount(), 0);
}

// `length` UTF-16 units of path-like text, with quotes, accents, a euro sign and a
// character that takes two units; `mark` starts it, so every column differs.
std::string LongText(std::size_t length, char mark) {
    static const std::string kPieces[] = {
        "\\", "Dir", " ", "\"", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9D\x84\x9E"};
    std::string text;
    std::size_t units = 0;
    for (std::size_t i = 0; units < length; ++i) {
        const std::string& piece = units == 0 ? std::string(1, mark) : kPieces[i % 7];
        const std::size_t piece_units = text::Utf16Length(piece);
        text += units + piece_units <= length ? piece : std::string("x");
        units += units + piece_units <= length ? piece_units : 1;
    }
    return text;
}

TEST_F(ViewControlsTest, EveryColumnOfALongRowReadsBackWhole) {
    CheckListControl results;
    ResultsList(results);
    // Around the length that one read takes, and well beyond it.
    const std::size_t lengths[] = {0, 1, 1022, 1023, 1024, 1025, 2047, 4000, 12300};
    for (const std::size_t length : lengths) {
        const std::vector<std::string> texts = {LongText(length, 'S'), LongText(length + 1, 'R'),
                                                LongText(length, 'K'), LongText(length, 'V')};
        results.AddRow(texts);
        const int row = results.RowCount() - 1;
        for (int column = 0; column < 4; ++column) {
            EXPECT_EQ(results.Text(row, column), texts[static_cast<std::size_t>(column)])
                << length << " in column " << column;
        }
        const std::string status = LongText(length, 'D');
        results.SetText(row, 0, status);
        EXPECT_EQ(results.Text(row, 0), status) << length;
    }
}

}  // namespace
}  // namespace regvex::ui
