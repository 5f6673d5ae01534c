// The scan: starting and stopping it, and what the main window makes of the search's
// events.

#include <exception>

#include "engine/caching_file_existence.h"
#include "scan/finding_verdict.h"
#include "text/concat.h"
#include "text/upper_case.h"
#include "text/utf8.h"
#include "ui/base/list_rows.h"
#include "ui/base/program_version.h"
#include "ui/frm_main.h"

namespace regvex::ui {

namespace {

constexpr std::string_view kStopScan = "Stop Scan";
constexpr std::string_view kBeginScan = "Begin Scan";
constexpr std::string_view kMenuStart = "&Start Scan";
constexpr std::string_view kMenuStop = "&Stop Scan";
constexpr double kKeyRepaintInterval = 0.1;

std::string ErrorsFound(int count) {
    return text::Concat({"(", std::to_string(count), " errors found)"});
}

}  // namespace

void frmMain::cmdStartStop_Click() {
    // A scan that runs handles its window's messages, so a second click arrives here
    // while the first one is still inside the search: it only asks the search to stop.
    const bool is_64_bit = system::Is64BitWindows(s_.system);
    std::uintptr_t redirection = 0;
    try {
        if (is_64_bit) {
            redirection = s_.redirection.Disable();
        }
        state_.bScanning = true;
        state_.ScanDrive =
            text::Concat({text::UpperCase(text::LeftChars(c_.Drive1.Drive(), 2)), "\\"});
        if (c_.cmdStartStop.Caption() == kStopScan) {
            // The outer click reverts the redirection with its own saved value.
            StopScan();
        } else {
            StartScan();
            if (is_64_bit) {
                s_.redirection.Revert(redirection);
            }
            s_.ignore.Unload();
            c_.form.Activate();
            ScreenScaling(false);
        }
    } catch (const std::exception&) {
        // A failing control or call leaves the window as it is; the program goes on.
    }
    // The scan's last texts and rows are on the screen when the click is done.
    s_.view.ShowHeldBack();
    state_.bScanning = false;
}

void frmMain::StopScan() {
    c_.form.SetCaption("Exiting...");
    s_.view.ShowHeldBack();
    cReg->StopSearch();
    s_.ignore.Unload();
    ScreenScaling(false);
}

void frmMain::StartScan() {
    c_.cmdStartStop.SetCaption(kStopScan);
    c_.lvwRegErrors.Clear();
    c_.lblStatus.SetCaption("Scanning Key:");
    c_.lblCurrentKey.SetCaption("");
    // A selected option reads as true, -1 as a number, which never equals 1: both scan
    // modes list the same findings. That is how the program has always scanned.
    bSafeScan_ = (c_.Option2.Value() ? -1 : 0) == 1;
    // Loaded, not shown, so that the findings can be held against its list.
    s_.ignore.lstIgnore();
    ScreenScaling(false);

    cReg->RootKey(kHkeyAll);
    cReg->SubKey("");
    cReg->SearchFlags(search_flags::kValueNames | search_flags::kValueData);
    cReg->SearchString(state_.ScanDrive);
    c_.form.SetCaption("Scanning...");
    scan_files_ = std::make_unique<CachingFileExistence>(s_.files);
    cReg->DoSearch();
    scan_files_.reset();
}

void frmMain::mnuStartStop_Click() {
    // Two tests, not one with an else: starting from the menu runs a scan, relabels the
    // item, and the second test then runs another whole scan. Kept as it has always been.
    if (c_.mnuStartStop.Caption() == kMenuStart) {
        cmdStartStop_Click();
        c_.mnuStartStop.SetCaption(kMenuStop);
    }
    if (c_.mnuStartStop.Caption() == kMenuStop) {
        cmdStartStop_Click();
        c_.mnuStartStop.SetCaption(kMenuStart);
    }
}

void frmMain::SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                          FoundKind lFound) {
    cReg_SearchFound(sRootKey, sKey, sValue, lFound);
}

void frmMain::SearchFinished(FinishReason lReason) {
    cReg_SearchFinished(lReason);
}

void frmMain::SearchKeyChanged(const std::string& sFullKeyName) {
    cReg_SearchKeyChanged(sFullKeyName);
}

std::span<const std::string> frmMain::ReadIgnoreList() {
    ListBox& entries = s_.ignore.lstIgnore();
    const int count = CountOfRows(entries.ItemCount());
    ignore_entries_.clear();
    for (int i = 0; i < count; ++i) {
        ignore_entries_.push_back(entries.Item(i));
    }
    return ignore_entries_;
}

void frmMain::cReg_SearchFound(std::string_view sRootKey, std::string_view sKey,
                               std::string_view sValue, FoundKind lFound) {
    try {
        const std::string status = scan::FindingStatus(lFound);
        FileExistence& files = scan_files_ ? *scan_files_ : s_.files;
        const scan::FindingRules rules{state_.ScanDrive, &files,
                                       [this] { return ReadIgnoreList(); }, bSafeScan_};
        if (!scan::IsListedFinding(rules, sKey, sValue)) {
            return;
        }
        c_.lvwRegErrors.AddRow(
            {status, std::string(sRootKey), std::string(sKey), std::string(sValue)});
        // Where the key ends in the subkey column: a value's name may hold backslashes.
        if (cReg) {
            c_.lvwRegErrors.SetTag(c_.lvwRegErrors.RowCount() - 1, cReg->FoundKeyPath());
        }
        AutoSizeListColumns(c_.lvwRegErrors);
        const std::string found = ErrorsFound(c_.lvwRegErrors.RowCount());
        c_.form.SetCaption(text::Concat({ProgramTitleAndVersion(), " ", found}));
        c_.lblStatus.SetCaption(text::Concat({"Scanning Key:  ", found}));
    } catch (const std::exception&) {
        // A finding that cannot be listed is passed over; the scan goes on.
    }
}

void frmMain::AutoSizeListColumns(CheckListView& list) {
    for (int column = 1; column < list.ColumnCount(); ++column) {
        list.AutoSizeColumn(column);
    }
    list.Refresh();
}

void frmMain::cReg_SearchKeyChanged(const std::string& sFullKeyName) {
    // At most ten repaints a second, and none while minimised. Just after midnight the
    // clock starts from 0 again while the next moment is still near 86,400, so the label
    // is not repainted again during that scan.
    const float now = s_.clock.SecondsSinceMidnight();
    if (dNextKeyUpdate_ < now) {
        dNextKeyUpdate_ = s_.clock.SecondsSinceMidnight() + kKeyRepaintInterval;
        if (!c_.form.IsMinimized()) {
            c_.lblCurrentKey.SetCaption(sFullKeyName);
        }
    }
}

void frmMain::cReg_SearchFinished(FinishReason lReason) {
    if (lReason == FinishReason::kFinished) {
        c_.lblCurrentKey.SetCaption(
            "Registry Vexlor has finished searching and found the following errors below:");
    } else if (lReason == FinishReason::kStopped) {
        c_.lblCurrentKey.SetCaption("Scan proccess stopped by user.");
    } else {
        const auto number = static_cast<std::int32_t>(lReason);
        c_.lblCurrentKey.SetCaption(
            text::Concat({"An Error occured! Err number = ", std::to_string(number)}));
    }
    c_.cmdStartStop.SetCaption(kBeginScan);
    c_.lblStatus.SetCaption("Search result:");
    c_.form.SetCaption(text::Concat({"Scan Complete ", ErrorsFound(c_.lvwRegErrors.RowCount())}));
}

void frmMain::SetProgressMax(int max) {
    c_.vbalProgressBar1.SetMax(max);
}

int frmMain::ProgressValue() const {
    return c_.vbalProgressBar1.Value();
}

void frmMain::SetProgressValue(int value) {
    c_.vbalProgressBar1.SetValue(value);
}

void frmMain::SetCurrentKey(const std::string& full_key_name) {
    c_.lblCurrentKey.SetCaption(full_key_name);
}

void frmMain::DoEvents() {
    s_.view.ScanPaused();
    s_.pump.DoEvents();
}

void frmMain::EndProcess() {
    s_.pump.EndProcess();
}

}  // namespace regvex::ui
