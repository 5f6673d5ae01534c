#pragma once
// frmIgnore: the code of the ignore-list window. The list box is the list: the scan
// reads it there, so edits count before they are applied, as long as the window stays
// loaded. "Apply Changes" writes it back to the ignore file.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "text/ansi_code_page.h"
#include "ui/base/controls.h"
#include "ui/base/program_state.h"
#include "ui/base/services.h"
#include "ui/ignore/clb_hscroll.h"
#include "ui/ignore/ignore_window.h"

namespace regvex::ui::ignore {

inline constexpr std::string_view kIgnoreCaption = "Ignore List";
inline constexpr std::string_view kFrame1Caption = "Registry Vexlor Ignore List";
inline constexpr std::string_view kLabel1Caption = "Enter Text To Ignore:";
inline constexpr std::string_view kAddCaption = "Add";
inline constexpr std::string_view kLabel2Caption =
    "Select any item from the list below and click the remove button to remove that item.";
inline constexpr std::string_view kRemoveCaption = "Remove";
inline constexpr std::string_view kApplyCaption = "Apply Changes";
inline constexpr std::string_view kMnuFileCaption = "&File";
inline constexpr std::string_view kMnuAddCaption = "&Add";
inline constexpr std::string_view kMnuRemoveCaption = "&Remove";
inline constexpr std::string_view kMnuCloseCaption = "&Close";

inline constexpr std::string_view kEnterStringMessage = "Please enter a string to ignore.";
inline constexpr std::string_view kOneLetterMessage = "The string must be more than one letter.";
inline constexpr std::string_view kAlreadyAddedMessage = "This string has already been added.";

// The run-time error that a file which cannot be opened or written raises.
inline constexpr int kPathFileAccessError = 75;
inline constexpr std::string_view kPathFileAccessErrorText = "Path/File access error";

// Row height that the pointer rule assumes, whatever the list's font.
inline constexpr int kIgnoreRowTwips = 180;

// Mouse buttons as the handlers receive them.
namespace mouse {
inline constexpr int kLeft = 1;
inline constexpr int kRight = 2;
inline constexpr int kMiddle = 4;
}  // namespace mouse

struct IgnoreControls {
    Window& form;
    Captioned& Frame1;
    Label& Label1;
    TextBox& txtString;
    Button& cmdAdd;
    ListBox& lstIgnore;
    Label& Label2;
    Button& cmdRemove;
    Button& cmdApply;
    MenuItem& mnuFile;
    MenuItem& mnuAdd;
    MenuItem& mnuRemove;
    MenuItem& mnuClose;
};

struct IgnoreServices {
    MessageDialogs& dialogs;
    TextFiles& files;
    const text::AnsiCodePage& code_page;
    ProgramState& state;
    // The one argument-less call on the main window when the window closes.
    std::function<void()> main_window_on_close;
    // Pops mnuFile up as a context menu at a point of the list, in twips.
    std::function<void(float x_twips, float y_twips)> popup_file_menu;
    // Closes the window the way its close box does.
    std::function<void()> unload_window;
    // ResizeIgnore: lays the window out through the proportional form resizer.
    std::function<void()> resize_ignore;
    ScrollMetrics scroll_metrics;
};

// Removes repeated items, comparing without regard to case; the first of each stays,
// the order is kept.
void RemoveListDuplicates(ListBox& list);

class frmIgnore {
  public:
    frmIgnore(IgnoreControls controls, IgnoreServices services);
    frmIgnore(const frmIgnore&) = delete;
    frmIgnore& operator=(const frmIgnore&) = delete;

    void Form_Load();
    void Form_Resize();
    void Form_QueryUnload();

    void cmdAdd_Click();
    void cmdRemove_Click();
    // No handler of its own: a file that cannot be written raises run-time error 75 to
    // the caller, and the list stays as it is.
    void cmdApply_Click();

    // x and y in twips from the list's top left corner; shift: 1 shift, 2 ctrl, 4 alt.
    void lstIgnore_MouseDown(int button, int shift, float x, float y);
    void lstIgnore_MouseUp(int button, int shift, float x, float y);

    void mnuAdd_Click();
    void mnuRemove_Click();
    void mnuClose_Click();

    // The entries in list order, as a scan matches them.
    std::vector<std::string> Entries() const;
    std::string IgnoreFile() const;

    const IgnoreControls& controls() const { return c_; }

  private:
    void Message(std::string_view prompt);

    IgnoreControls c_;
    IgnoreServices s_;
    // One helper per procedure that adds items, as each binds its own afresh.
    CLBHScroll load_scroll_;
    CLBHScroll add_scroll_;
};

// The results list's context-menu commands: the selected row's value (column 3) or
// subkey (column 2) goes to the ignore list, loading the window hidden if need be, and
// the file is rewritten, even when the add was refused.
void AddToIgnore_Click(const CheckListView& lvwRegErrors, IgnoreWindow& ignore,
                       ProgramState& state);
void AddSubkeyToIgnore_Click(const CheckListView& lvwRegErrors, IgnoreWindow& ignore,
                             ProgramState& state);

}  // namespace regvex::ui::ignore
