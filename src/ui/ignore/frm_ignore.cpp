#include "ui/ignore/frm_ignore.h"

#include <cmath>
#include <exception>
#include <utility>

#include "engine/run_time_error.h"
#include "ignore/ignore_list.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::ui::ignore {

namespace {

// These procedures go on with the next statement when one fails (a focus change on a
// hidden window, a list index that went stale): nothing they do is worth stopping for.
template <typename Statement>
void ResumeNext(Statement&& statement) {
    try {
        std::forward<Statement>(statement)();
    } catch (const std::exception&) {
    }
}

RunTimeError FileAccessError() {
    return RunTimeError(kPathFileAccessError, std::string(kPathFileAccessErrorText));
}

constexpr int kSubkeyColumn = 2;
constexpr int kValueColumn = 3;

void AddFromResults(const CheckListView& lvwRegErrors, int column, IgnoreWindow& ignore,
                    ProgramState& state) {
    // Without a selected row there is nothing to read; the pending string stays empty
    // and the add below says so.
    ResumeNext([&] {
        const int row = lvwRegErrors.SelectedRow();
        if (row >= 0) {
            state.pending_ignore = lvwRegErrors.Text(row, column);
        }
    });
    ResumeNext([&] { ignore.Form().cmdAdd_Click(); });
    ResumeNext([&] { ignore.Form().cmdApply_Click(); });
    state.pending_ignore.clear();
}

}  // namespace

void RemoveListDuplicates(ListBox& list) {
    ResumeNext([&] {
        if (list.ItemCount() <= 1) {
            return;
        }
        std::vector<std::string> items;
        items.reserve(static_cast<std::size_t>(list.ItemCount()));
        for (int i = 0; i < list.ItemCount(); ++i) {
            items.push_back(list.Item(i));
        }
        const std::vector<std::string> kept = regvex::ignore::WithoutDuplicateEntries(items);
        list.Clear();
        // Straight into the list: the horizontal extent stays as the load left it.
        for (const std::string& item : kept) {
            ResumeNext([&] { list.AddItem(item); });
        }
    });
}

frmIgnore::frmIgnore(IgnoreControls controls, IgnoreServices services)
    : c_(controls),
      s_(std::move(services)),
      load_scroll_(s_.scroll_metrics),
      add_scroll_(s_.scroll_metrics) {}

std::string frmIgnore::IgnoreFile() const {
    return regvex::ignore::IgnoreFilePath(s_.state.program_folder);
}

void frmIgnore::Form_Load() {
    load_scroll_.Init(c_.lstIgnore);
    c_.lstIgnore.Clear();

    const std::string path = IgnoreFile();
    bool present = true;
    if (!s_.files.Exists(path)) {
        present = s_.files.Write(path, {});
    }
    const std::optional<std::string> bytes =
        present ? s_.files.Read(path) : std::optional<std::string>();
    if (bytes) {
        for (const std::string& line : regvex::ignore::ReadIgnoreLines(*bytes, s_.code_page)) {
            ResumeNext([&] { load_scroll_.AddItem(line); });
        }
    } else {
        // The window still opens, with an empty list, so the user can see and fix it.
        ShowRunTimeError(s_.dialogs, s_.state.theme, FileAccessError());
    }

    RemoveListDuplicates(c_.lstIgnore);
    regvex::ignore::RemoveEmptyEntries(c_.lstIgnore);

    if (s_.resize_ignore) {
        s_.resize_ignore();
    }
}

// The layout is set once, at load; the window keeps it.
void frmIgnore::Form_Resize() {}

void frmIgnore::Form_QueryUnload() {
    if (s_.main_window_on_close) {
        s_.main_window_on_close();
    }
}

void frmIgnore::cmdAdd_Click() {
    add_scroll_.Init(c_.lstIgnore);
    if (!s_.state.pending_ignore.empty()) {
        ResumeNext([&] { c_.txtString.SetText(s_.state.pending_ignore); });
    }

    // Taken as typed: blanks count as characters.
    const std::string text = c_.txtString.Text();
    const std::size_t length = text::Utf16Length(text);
    if (length == 0) {
        Message(kEnterStringMessage);
        ResumeNext([&] { c_.txtString.SetFocus(); });
        return;
    }
    if (length == 1) {
        Message(kOneLetterMessage);
        ResumeNext([&] { c_.txtString.SetFocus(); });
        ResumeNext([&] { c_.txtString.SetSelection(length, 0); });
        return;
    }

    const std::string entry = text::UpperCase(text);
    bool present = false;
    ResumeNext([&] {
        for (int i = 0; i < c_.lstIgnore.ItemCount() && !present; ++i) {
            present = c_.lstIgnore.Item(i) == entry;
        }
    });
    if (present) {
        Message(kAlreadyAddedMessage);
        ResumeNext([&] { c_.txtString.SetFocus(); });
        ResumeNext([&] { c_.txtString.SetSelection(0, length); });
        return;
    }

    ResumeNext([&] { add_scroll_.AddItem(entry); });
    ResumeNext([&] { c_.txtString.SetText(""); });
}

void frmIgnore::cmdRemove_Click() {
    ResumeNext([&] {
        const int index = c_.lstIgnore.ListIndex();
        if (index >= 0) {
            c_.lstIgnore.RemoveItem(index);
        }
    });
}

void frmIgnore::cmdApply_Click() {
    const std::vector<std::string> entries = Entries();
    if (!s_.files.Write(IgnoreFile(), regvex::ignore::IgnoreFileBytes(entries, s_.code_page))) {
        // The list stays as it is, so nothing typed is lost and Apply can be tried again.
        throw FileAccessError();
    }
}

void frmIgnore::lstIgnore_MouseDown(int /*button*/, int /*shift*/, float /*x*/, float y) {
    // Rows are taken as 180 twips from the top of the list, whatever the font and however
    // far the list is scrolled.
    const float quotient = y / static_cast<float>(kIgnoreRowTwips);
    const double row = std::nearbyint(static_cast<double>(quotient));
    if (!(row >= 1) || row > c_.lstIgnore.ItemCount()) {
        return;
    }
    c_.lstIgnore.SetListIndex(static_cast<int>(row) - 1);
}

void frmIgnore::lstIgnore_MouseUp(int button, int /*shift*/, float x, float y) {
    if (button == mouse::kRight && s_.popup_file_menu) {
        s_.popup_file_menu(x, y);
    }
}

void frmIgnore::mnuAdd_Click() {
    cmdAdd_Click();
}

void frmIgnore::mnuRemove_Click() {
    cmdRemove_Click();
}

void frmIgnore::mnuClose_Click() {
    if (s_.unload_window) {
        s_.unload_window();
    }
}

std::vector<std::string> frmIgnore::Entries() const {
    std::vector<std::string> entries;
    const int count = c_.lstIgnore.ItemCount();
    entries.reserve(static_cast<std::size_t>(count > 0 ? count : 0));
    for (int i = 0; i < count; ++i) {
        entries.push_back(c_.lstIgnore.Item(i));
    }
    return entries;
}

void frmIgnore::Message(std::string_view prompt) {
    ShowMessage(s_.dialogs, s_.state.theme, prompt, mb::kOkOnly | mb::kExclamation, "");
}

void AddToIgnore_Click(const CheckListView& lvwRegErrors, IgnoreWindow& ignore,
                       ProgramState& state) {
    AddFromResults(lvwRegErrors, kValueColumn, ignore, state);
}

void AddSubkeyToIgnore_Click(const CheckListView& lvwRegErrors, IgnoreWindow& ignore,
                             ProgramState& state) {
    AddFromResults(lvwRegErrors, kSubkeyColumn, ignore, state);
}

}  // namespace regvex::ui::ignore
