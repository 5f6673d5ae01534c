#include "ui/search/frm_search.h"

#include <cstdio>
#include <utility>

#include "text/concat.h"
#include "ui/base/program_version.h"

namespace regvex::ui::search {

using text::Concat;

namespace {

// The window's labels are drawn again at most this often, in folders: a drive has tens of
// thousands of them, and each new text is a trip to the display.
constexpr std::size_t kFoldersPerProgressText = 8;

std::string FilesFound(std::size_t count) {
    return count == 1 ? std::string("1 file") : Concat({std::to_string(count), " files"});
}

}  // namespace

std::string SizeText(std::uint64_t bytes) {
    if (bytes < 1024) {
        return Concat({std::to_string(bytes), " Bytes"});
    }
    char text[32];
    const double kilobytes = static_cast<double>(bytes) / 1024.0;
    if (kilobytes < 1024.0) {
        std::snprintf(text, sizeof(text), "%.1f KB", kilobytes);
    } else {
        std::snprintf(text, sizeof(text), "%.1f MB", kilobytes / 1024.0);
    }
    return text;
}

frmSearch::frmSearch(SearchControls controls, SearchServices services, MissingFile missing)
    : c_(controls),
      s_(std::move(services)),
      missing_(std::move(missing)),
      search_(s_.files, missing_.path) {}

void frmSearch::Form_Load() {
    c_.form.SetCaption(kSearchCaption);
    c_.lblMissing.SetCaption(kMissingLabel);
    c_.lblPath.SetCaption(missing_.path);
    c_.lvwFound.AddColumn({"File", "PATH", "Where a file of the same name was found"});
    c_.lvwFound.AddColumn({"Size", "SIZE", "The size of the file"});
    c_.lvwFound.AddColumn({"Date Modified", "DATE", "When the file was last written"});
    c_.lblProgress.SetCaption("");
    c_.cmdStop.SetCaption(kStopCaption);
    c_.cmdUse.SetCaption(kUseCaption);
    c_.cmdCancel.SetCaption(kCancelCaption);
}

void frmSearch::RunSearch() {
    if (searching_) {
        return;
    }
    searching_ = true;
    std::size_t steps = 0;
    auto phase = search_.phase();
    while (!closing_ && search_.Step()) {
        ShowNewFound();
        if (++steps % kFoldersPerProgressText == 1 || search_.phase() != phase) {
            ShowProgress();
            phase = search_.phase();
        }
        s_.pump.DoEvents();
    }
    searching_ = false;
    if (closing_) {
        return;
    }
    ShowNewFound();
    ShowProgress();
}

void frmSearch::ShowNewFound() {
    const auto& found = search_.found();
    for (; shown_ < found.size(); ++shown_) {
        const backup::FoundFile& file = found[shown_];
        c_.lvwFound.AddRow(
            {file.path, file.size ? SizeText(*file.size) : std::string(),
             file.modified && s_.date_text ? s_.date_text(*file.modified) : std::string()});
        for (int column = 0; column < c_.lvwFound.ColumnCount(); ++column) {
            c_.lvwFound.AutoSizeColumn(column);
        }
    }
}

void frmSearch::ShowProgress() {
    const std::size_t count = search_.found().size();
    switch (search_.phase()) {
        case backup::MissingFileSearch::Phase::kNamedFolders:
            c_.lblProgress.SetCaption(
                Concat({"Looking in the folders of the path: ", search_.folder(), " (",
                        FilesFound(count), " found)"}));
            return;
        case backup::MissingFileSearch::Phase::kDrive:
            c_.lblProgress.SetCaption(Concat(
                {"Searching the drive: ", search_.folder(), " (", FilesFound(count), " found)"}));
            return;
        case backup::MissingFileSearch::Phase::kDone:
            break;
    }
    const std::string folders = std::to_string(search_.folders_searched());
    if (search_.stopped()) {
        c_.lblProgress.SetCaption(
            Concat({"Search stopped: ", FilesFound(count), " found in ", folders, " folders."}));
    } else if (count == 0) {
        c_.lblProgress.SetCaption(Concat({"Search finished: no file named \"", search_.file_name(),
                                          "\" was found in ", folders, " folders."}));
    } else {
        c_.lblProgress.SetCaption(
            Concat({"Search finished: ", FilesFound(count), " found in ", folders, " folders."}));
    }
}

void frmSearch::cmdStop_Click() {
    if (searching_) {
        search_.Stop();
    }
}

void frmSearch::cmdUse_Click() {
    const int row = c_.lvwFound.SelectedRow();
    if (row < 0) {
        Message(kPickFileMessage, mb::kExclamation);
        return;
    }
    // The choice is made: what the search would still find no longer matters.
    cmdStop_Click();
    if (missing_.use_file && missing_.use_file(c_.lvwFound.Text(row, 0))) {
        closing_ = true;
        s_.close();
    }
}

void frmSearch::cmdCancel_Click() {
    search_.Stop();
    closing_ = true;
    s_.close();
}

void frmSearch::Form_QueryUnload() {
    search_.Stop();
    closing_ = true;
}

void frmSearch::Message(std::string_view prompt, int style) {
    ShowMessage(s_.dialogs, s_.theme, prompt, style, kProductName);
}

}  // namespace regvex::ui::search
