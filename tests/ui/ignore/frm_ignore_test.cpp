#include "ui/ignore/frm_ignore.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "engine/run_time_error.h"
#include "support/memory_controls.h"
#include "support/scripted_services.h"
#include "ui/base/program_version.h"
#include "ui/ignore/ignore_window.h"

namespace regvex::ui::ignore {
namespace {

using Lines = std::vector<std::string>;
using regvex::testing::MemoryCaption;
using regvex::testing::MemoryListBox;
using regvex::testing::MemoryListView;
using regvex::testing::MemoryTextBox;
using regvex::testing::MemoryTextFiles;
using regvex::testing::MemoryWindow;
using regvex::testing::ScriptedDialogs;

const std::string kFolder = "C:\\Program Files\\Registry Vexlor";
const std::string kFile = kFolder + "\\Ignore.txt";
const ColorRef kTheme = Rgb(212, 212, 212);

// The window's controls in memory and the code over them.
struct IgnoreForm {
    explicit IgnoreForm(ScrollMetrics metrics = {}) {
        state.program_folder = kFolder;
        state.theme = kTheme;
        IgnoreServices services{
            dialogs,
            files,
            code_page,
            state,
            [this] { ++main_window_calls; },
            [this](float x, float y) { popups.emplace_back(x, y); },
            [this] { ++unloads; },
            [this] {
                ++resizes;
                items_at_resize = list.items;
            },
            metrics,
        };
        IgnoreControls controls{form,      frame,    label1,  txtString, cmdAdd,    list,    label2,
                                cmdRemove, cmdApply, mnuFile, mnuAdd,    mnuRemove, mnuClose};
        code = std::make_unique<frmIgnore>(controls, std::move(services));
    }

    void FileHolds(const std::string& bytes) { files.files[kFile] = bytes; }
    std::string File() const { return files.files.at(kFile); }

    ScriptedDialogs dialogs;
    MemoryTextFiles files;
    text::Windows1252CodePage code_page;
    ProgramState state;
    MemoryWindow form{"Ignore List"};
    MemoryCaption frame, label1, cmdAdd, label2, cmdRemove, cmdApply;
    MemoryCaption mnuFile, mnuAdd, mnuRemove, mnuClose;
    MemoryTextBox txtString;
    MemoryListBox list;
    int main_window_calls = 0;
    int unloads = 0;
    int resizes = 0;
    Lines items_at_resize;
    std::vector<std::pair<float, float>> popups;
    std::unique_ptr<frmIgnore> code;
};

TEST(FrmIgnoreLoad, ReadsTheFileIntoTheListByTheLoadingRules) {
    const struct {
        std::string bytes;
        Lines items;
    } cases[] = {
        {"abc\r\nABC\r\nx\r\n", {"ABC", "X"}},
        {"", {}},
        {"\r\n", {""}},
        {"a\rb\nc\r\n", {"A", "B\nC"}},
        {"Temp\r\n\r\nOldApp\r\n", {"TEMP", "OLDAPP"}},
        {"\xE9t\xE9\r\n", {"\xC3\x89T\xC3\x89"}},
    };
    for (const auto& c : cases) {
        IgnoreForm f;
        f.list.items = {"LEFT OVER"};
        f.FileHolds(c.bytes);
        f.code->Form_Load();
        EXPECT_EQ(f.list.items, c.items) << ::testing::PrintToString(c.bytes);
        EXPECT_EQ(f.files.writes, 0);
        EXPECT_TRUE(f.dialogs.shown.empty());
        // Laid out once, when the list is complete.
        EXPECT_EQ(f.resizes, 1);
        EXPECT_EQ(f.items_at_resize, c.items);
    }
}

TEST(FrmIgnoreLoad, AMissingFileIsCreatedEmpty) {
    IgnoreForm f;
    f.code->Form_Load();
    EXPECT_TRUE(f.list.items.empty());
    EXPECT_EQ(f.File(), "");
    EXPECT_EQ(f.files.writes, 1);
    EXPECT_TRUE(f.dialogs.shown.empty());
}

TEST(FrmIgnoreLoad, AFileThatCannotBeMadeOrReadIsReportedAndTheListStaysEmpty) {
    IgnoreForm missing;
    missing.files.read_only[kFile] = true;
    IgnoreForm unreadable;
    unreadable.FileHolds("OLDAPP\r\n");
    unreadable.files.unreadable = true;
    for (IgnoreForm* f : {&missing, &unreadable}) {
        f->code->Form_Load();
        EXPECT_TRUE(f->list.items.empty());
        ASSERT_EQ(f->dialogs.shown.size(), 1u);
        EXPECT_EQ(f->dialogs.shown[0].prompt, "Run-time error '75':\n\nPath/File access error");
        EXPECT_EQ(f->dialogs.shown[0].style, mb::kCritical);
        EXPECT_EQ(f->dialogs.shown[0].title, kProductName);
        EXPECT_EQ(f->resizes, 1);
    }
}

TEST(FrmIgnoreAdd, ChecksTheTextThenAddsItUpperCased) {
    const std::string kEnter(kEnterStringMessage);
    const std::string kOne(kOneLetterMessage);
    const std::string kAlready(kAlreadyAddedMessage);
    const struct {
        std::string typed;
        std::string message;  // empty when the text is added
        Lines items;
        std::string text_after;
        std::size_t selection_start;
        std::size_t selection_length;
    } cases[] = {
        {"te", "", {"TEMP", "TE"}, "", 99, 99},
        {"C:\\Old App\\a.dll", "", {"TEMP", "C:\\OLD APP\\A.DLL"}, "", 99, 99},
        {"  ", "", {"TEMP", "  "}, "", 99, 99},  // not trimmed
        {" temp", "", {"TEMP", " TEMP"}, "", 99, 99},
        {"\xC3\xA9t", "", {"TEMP", "\xC3\x89T"}, "", 99, 99},
        {"", kEnter, {"TEMP"}, "", 99, 99},
        {"a", kOne, {"TEMP"}, "a", 1, 0},
        {" ", kOne, {"TEMP"}, " ", 1, 0},
        {"\xC3\xA9", kOne, {"TEMP"}, "\xC3\xA9", 1, 0},  // one character in two bytes
        {"Temp", kAlready, {"TEMP"}, "Temp", 0, 4},
        {"TEMP", kAlready, {"TEMP"}, "TEMP", 0, 4},
        {"t\xC3\xA9mp", "", {"TEMP", "T\xC3\x89MP"}, "", 99, 99},
    };
    for (const auto& c : cases) {
        IgnoreForm f;
        f.list.items = {"TEMP"};
        f.txtString.SetText(c.typed);
        f.txtString.selection_start = 99;
        f.txtString.selection_length = 99;
        f.code->cmdAdd_Click();
        EXPECT_EQ(f.list.items, c.items) << c.typed;
        EXPECT_EQ(f.txtString.Text(), c.text_after) << c.typed;
        EXPECT_EQ(f.txtString.selection_start, c.selection_start) << c.typed;
        EXPECT_EQ(f.txtString.selection_length, c.selection_length) << c.typed;
        EXPECT_EQ(f.files.writes, 0) << c.typed;
        if (c.message.empty()) {
            EXPECT_TRUE(f.dialogs.shown.empty()) << c.typed;
            EXPECT_EQ(f.txtString.focused, 0) << c.typed;
            continue;
        }
        ASSERT_EQ(f.dialogs.shown.size(), 1u) << c.typed;
        const auto& shown = f.dialogs.shown[0];
        EXPECT_EQ(shown.prompt, c.message);
        EXPECT_EQ(shown.style, mb::kOkOnly | mb::kExclamation);
        EXPECT_EQ(shown.title, "");
        EXPECT_TRUE(shown.coloured);
        ASSERT_EQ(f.dialogs.last_colors.size(), 4u);
        const ColorRef black = Rgb(0, 0, 0);
        const ColorRef expected[] = {black, kTheme, black, kTheme};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(f.dialogs.last_colors[i].color, expected[i]) << i;
        }
        EXPECT_EQ(f.txtString.focused, 1) << c.typed;
    }
}

TEST(FrmIgnoreAdd, ThePendingStringGoesIntoTheTextBoxFirst) {
    IgnoreForm f;
    f.txtString.SetText("typed");
    f.state.pending_ignore = "C:\\OldApp\\a.dll";
    f.code->cmdAdd_Click();
    EXPECT_EQ(f.list.items, (Lines{"C:\\OLDAPP\\A.DLL"}));
    EXPECT_EQ(f.txtString.Text(), "");
    // Clearing it is the caller's business.
    EXPECT_EQ(f.state.pending_ignore, "C:\\OldApp\\a.dll");
}

TEST(FrmIgnoreAdd, TheExtentFollowsTheNewItemAloneEachTime) {
    IgnoreForm f;
    f.FileHolds("A-VERY-LONG-ENTRY-INDEED\r\n");
    f.code->Form_Load();
    const int after_load = f.list.horizontal_extent;
    f.txtString.SetText("te");
    f.code->cmdAdd_Click();
    // Each add measures against nothing wider yet: 200 / 15 + 17 + 2 = 32.33.
    EXPECT_LT(f.list.horizontal_extent, after_load);
    EXPECT_EQ(f.list.horizontal_extent, 32);
    EXPECT_EQ(f.list.scrolled_to_bottom, 2);
}

TEST(FrmIgnoreRemove, RemovesTheSelectedItemOnly) {
    const struct {
        int selected;
        Lines items;
    } cases[] = {
        {1, {"A", "C"}},
        {0, {"B", "C"}},
        {2, {"A", "B"}},
        {-1, {"A", "B", "C"}},
    };
    for (const auto& c : cases) {
        IgnoreForm f;
        f.list.items = {"A", "B", "C"};
        f.list.list_index = c.selected;
        f.list.horizontal_extent = 77;
        f.code->cmdRemove_Click();
        EXPECT_EQ(f.list.items, c.items) << c.selected;
        EXPECT_EQ(f.list.horizontal_extent, 77);
        EXPECT_TRUE(f.dialogs.shown.empty());
    }
}

TEST(FrmIgnoreApply, WritesTheListByteForByte) {
    const struct {
        Lines items;
        std::string bytes;
    } cases[] = {
        {{"ABC", "X"}, "ABC\r\nX\r\n"},
        {{"CAF\xC3\x89", "  ", ""}, "CAF\xC9\r\n  \r\n\r\n"},
        {{"B\nC"}, "B\nC\r\n"},
        {{}, ""},
    };
    for (const auto& c : cases) {
        IgnoreForm f;
        f.FileHolds("OLD CONTENT\r\n");
        f.list.items = c.items;
        f.code->cmdApply_Click();
        EXPECT_EQ(f.File(), c.bytes);
        EXPECT_EQ(f.list.items, c.items);
        EXPECT_TRUE(f.dialogs.shown.empty());
    }
}

TEST(FrmIgnoreApply, AFileThatCannotBeWrittenRaisesError75ToTheCallerAndNothingIsLost) {
    IgnoreForm f;
    f.FileHolds("OLD\r\n");
    f.files.read_only[kFile] = true;
    f.list.items = {"OLD", "NEW"};
    try {
        f.code->cmdApply_Click();
        ADD_FAILURE() << "no error raised";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.number(), 75);
        EXPECT_EQ(RunTimeErrorText(error.number(), error.what()),
                  "Run-time error '75':\n\nPath/File access error");
    }
    EXPECT_TRUE(f.dialogs.shown.empty());
    EXPECT_EQ(f.File(), "OLD\r\n");
    EXPECT_EQ(f.list.items, (Lines{"OLD", "NEW"}));

    f.files.read_only.clear();
    f.code->cmdApply_Click();
    EXPECT_EQ(f.File(), "OLD\r\nNEW\r\n");
}

TEST(FrmIgnoreMouse, MouseDownSelectsByFixedRowsOf180Twips) {
    const struct {
        float y;
        int selected;  // -1: nothing happens
    } cases[] = {
        {0, -1},    {89, -1}, {90, -1},             // row 0.5 rounds to 0
        {91, 0},    {100, 0}, {269, 0},  {270, 1},  // 1.5 rounds to 2
        {450, 1},                                   // 2.5 rounds to 2
        {451, 2},   {629, 2}, {630, -1},            // 3.5 rounds to 4: past the last item
        {5000, -1},
    };
    for (const int button : {mouse::kLeft, mouse::kRight, mouse::kMiddle}) {
        for (const auto& c : cases) {
            for (const int before : {-1, 1}) {
                IgnoreForm f;
                f.list.items = {"A", "B", "C"};
                f.list.list_index = before;
                f.code->lstIgnore_MouseDown(button, 0, 40, c.y);
                EXPECT_EQ(f.list.list_index, c.selected < 0 ? before : c.selected)
                    << "Y " << c.y << " button " << button << " before " << before;
            }
        }
    }
}

TEST(FrmIgnoreMouse, OnlyTheRightButtonPopsUpTheFileMenuWhereItWasReleased) {
    IgnoreForm f;
    f.code->lstIgnore_MouseUp(mouse::kLeft, 0, 30, 45);
    f.code->lstIgnore_MouseUp(mouse::kMiddle, 0, 30, 45);
    EXPECT_TRUE(f.popups.empty());
    f.code->lstIgnore_MouseUp(mouse::kRight, 1, 30, 45);
    ASSERT_EQ(f.popups.size(), 1u);
    EXPECT_EQ(f.popups[0], std::make_pair(30.0f, 45.0f));
}

TEST(CLBHScrollTest, ExtentIsWidthInPixelsPlusTheScrollBarPlusTwoRoundedHalfToEven) {
    const struct {
        std::int32_t width_twips;
        ScrollMetrics metrics;
        int extent;
    } cases[] = {
        {0, {15, 17}, 19},     {600, {15, 17}, 59},   {7, {15, 17}, 19},
        {8, {15, 17}, 20},     {5, {10, 17}, 20},      // 19.5 -> 20
        {15, {10, 17}, 20},                            // 20.5 -> 20
        {25, {10, 17}, 22},                            // 21.5 -> 22
        {1500, {10, 21}, 173}, {4000, {12, 16}, 351},  // 333.3 + 18
    };
    for (const auto& c : cases) {
        EXPECT_EQ(HorizontalExtentPixels(c.width_twips, c.metrics), c.extent)
            << c.width_twips << " / " << c.metrics.twips_per_pixel_x;
    }
}

TEST(CLBHScrollTest, OnlyAWiderItemMovesTheExtentWidthsRoundedHalfToEven) {
    MemoryListBox list;
    list.widths = {{"a", 10.5}, {"b", 11.5}, {"c", 12.5}, {"d", 9.0}, {"e", 12.6}};
    CLBHScroll scroll({1, 0});
    scroll.Init(list);
    for (const char* item : {"a", "b", "c", "d", "e"}) {
        scroll.AddItem(item);
    }
    // a: 10 -> 12; b: 12 -> 14; c: 12, not wider; d: 9; e: 13 -> 15.
    EXPECT_EQ(list.extents, (std::vector<int>{12, 14, 15}));
    EXPECT_EQ(list.items, (Lines{"a", "b", "c", "d", "e"}));
    EXPECT_EQ(list.scrolled_to_bottom, 5);

    // Binding again starts from nothing.
    scroll.Init(list);
    scroll.AddItem("d");
    EXPECT_EQ(list.extents.back(), 11);
}

TEST(RemoveListDuplicatesTest, KeepsTheFirstOfEachCaseInsensitiveGroupInOrder) {
    const struct {
        Lines before;
        Lines after;
    } cases[] = {
        {{"abc", "ABC", "x"}, {"abc", "x"}},
        {{"B", "a", "A", "b"}, {"B", "a"}},
        {{"", ""}, {""}},
        {{"ONLY"}, {"ONLY"}},
    };
    for (const auto& c : cases) {
        MemoryListBox list;
        list.items = c.before;
        list.horizontal_extent = 50;
        RemoveListDuplicates(list);
        EXPECT_EQ(list.items, c.after);
        EXPECT_EQ(list.horizontal_extent, 50);
        EXPECT_EQ(list.scrolled_to_bottom, 0);
    }
}

// The program's one window as the main window reaches it: loaded on first use.
class MemoryIgnoreWindow final : public IgnoreWindow {
  public:
    explicit MemoryIgnoreWindow(IgnoreForm& form) : form_(form) {}
    bool IsLoaded() const override { return loaded_; }
    frmIgnore& Form() override {
        if (!loaded_) {
            loaded_ = true;
            form_.code->Form_Load();
        }
        return *form_.code;
    }
    ListBox& lstIgnore() override {
        Form();
        return form_.list;
    }
    void Unload() override { loaded_ = false; }
    void Show() override {
        Form();
        shown = true;
    }
    bool shown = false;

  private:
    IgnoreForm& form_;
    bool loaded_ = false;
};

MemoryListView ResultsWithOneRow(int selected) {
    MemoryListView results;
    for (const char* caption : {"Status", "RootKey", "SubKey", "Value"}) {
        results.AddColumn({caption, "", ""});
    }
    results.AddRow({"Invalid Entry", "HKEY_CURRENT_USER", "Software\\OldApp\\Path",
                    "C:\\Program Files\\OldApp\\a.dll"});
    results.selected = selected;
    return results;
}

TEST(AddFromResults, TheSelectedRowsValueOrSubkeyIsAddedAndTheFileRewritten) {
    const struct {
        bool subkey;
        std::string file;
    } cases[] = {
        {false, "TEMP\r\nC:\\PROGRAM FILES\\OLDAPP\\A.DLL\r\n"},
        {true, "TEMP\r\nSOFTWARE\\OLDAPP\\PATH\r\n"},
    };
    for (const auto& c : cases) {
        IgnoreForm f;
        f.FileHolds("temp\r\n");
        MemoryIgnoreWindow window(f);
        const MemoryListView results = ResultsWithOneRow(0);
        if (c.subkey) {
            AddSubkeyToIgnore_Click(results, window, f.state);
        } else {
            AddToIgnore_Click(results, window, f.state);
        }
        EXPECT_TRUE(window.IsLoaded());
        EXPECT_FALSE(window.shown);
        EXPECT_EQ(f.File(), c.file);
        EXPECT_EQ(f.state.pending_ignore, "");
        EXPECT_TRUE(f.dialogs.shown.empty());
    }
}

TEST(AddFromResults, WithoutASelectedRowTheEditorAsksForTextAndTheFileIsRewrittenUnchanged) {
    IgnoreForm f;
    f.FileHolds("temp\r\n\r\nold");
    MemoryIgnoreWindow window(f);
    const MemoryListView results = ResultsWithOneRow(-1);
    AddToIgnore_Click(results, window, f.state);
    EXPECT_EQ(f.dialogs.Prompts(), (Lines{std::string(kEnterStringMessage)}));
    EXPECT_EQ(f.files.writes, 1);
    EXPECT_EQ(f.File(), "TEMP\r\nOLD\r\n");
    EXPECT_EQ(f.state.pending_ignore, "");
}

TEST(AddFromResults, AFileThatCannotBeWrittenIsPassedOverWithoutAMessage) {
    IgnoreForm f;
    f.FileHolds("TEMP\r\n");
    f.files.read_only[kFile] = true;
    MemoryIgnoreWindow window(f);
    AddSubkeyToIgnore_Click(ResultsWithOneRow(0), window, f.state);
    EXPECT_TRUE(f.dialogs.shown.empty());
    EXPECT_EQ(f.list.items, (Lines{"TEMP", "SOFTWARE\\OLDAPP\\PATH"}));
    EXPECT_EQ(f.File(), "TEMP\r\n");
    EXPECT_EQ(f.state.pending_ignore, "");
}

TEST(AddFromResults, ARefusedDuplicateStillRewritesTheFile) {
    IgnoreForm f;
    f.FileHolds("c:\\program files\\oldapp\\A.DLL");
    MemoryIgnoreWindow window(f);
    window.Form();
    f.list.items.push_back("UNAPPLIED");
    AddToIgnore_Click(ResultsWithOneRow(0), window, f.state);
    EXPECT_EQ(f.dialogs.Prompts(), (Lines{std::string(kAlreadyAddedMessage)}));
    EXPECT_EQ(f.File(), "C:\\PROGRAM FILES\\OLDAPP\\A.DLL\r\nUNAPPLIED\r\n");
    EXPECT_EQ(f.state.pending_ignore, "");
}

}  // namespace
}  // namespace regvex::ui::ignore
