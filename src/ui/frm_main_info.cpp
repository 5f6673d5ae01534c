// "Info On This Item": the selected finding explained, from the value as the registry
// holds it now, by the same rules the scan applied.

#include <exception>
#include <span>
#include <string>
#include <utility>

#include "scan/finding_explanation.h"
#include "ui/base/program_version.h"
#include "ui/frm_main.h"

namespace regvex::ui {

namespace {

constexpr std::string_view kSelectFirst =
    "Please select an item in the list of results first, then choose \"Info On This Item\" "
    "again.";

}  // namespace

void frmMain::mnuInfo_Click() {
    const CheckListView& list = c_.lvwRegErrors;
    const int row = list.SelectedRow();
    if (row < 0 || row >= list.RowCount()) {
        Message(kSelectFirst, mb::kExclamation, kProductName);
        return;
    }
    try {
        std::string key;
        std::string name;
        scan::SplitFoundKey(list.Text(row, 2), list.Tag(row), key, name);
        scan::ValueToExplain value =
            scan::ReadValueToExplain(s_.registry, state_.masks.KeyQueryMask, list.Text(row, 1),
                                     std::move(key), std::move(name), list.Text(row, 3));
        // The list as the scan would read it, the window loaded hidden for it when it is not
        // loaded, as a scan loads it; and unloaded again, as after a scan.
        const bool ignore_was_loaded = s_.ignore.IsLoaded();
        const std::span<const std::string> entries = ReadIgnoreList();
        const scan::ExplainContext context{state_.ScanDrive, &s_.files, entries, ""};
        const std::string text = scan::ExplanationText(
            scan::ExplainFinding(std::move(value), context), scan::ControlsMadeVisible);
        if (!ignore_was_loaded) {
            s_.ignore.Unload();
        }
        s_.view.ShowInfo(text);
    } catch (const std::exception& error) {
        ShowRunTimeError(s_.dialogs, state_.theme, error);
    }
}

void frmMain::lvwRegErrors_DblClick() {
    mnuInfo_Click();
}

}  // namespace regvex::ui
