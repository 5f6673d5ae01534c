#pragma once
// frmSearch: the code of the window that looks for a finding's missing file on its drive
// and puts a file the user picks in its place. The search runs on the window's one
// thread, a folder at a time, letting the window's messages through between folders so
// that Stop, Use This File and Cancel are handled while it runs.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "backup/missing_file_search.h"
#include "system/file_system.h"
#include "ui/base/controls.h"
#include "ui/base/services.h"

namespace regvex::ui::search {

inline constexpr std::string_view kSearchCaption = "Search for Missing File";
inline constexpr std::string_view kMissingLabel = "The file that this item names is missing:";
inline constexpr std::string_view kStopCaption = "Stop";
inline constexpr std::string_view kUseCaption = "Use This File";
inline constexpr std::string_view kCancelCaption = "Cancel";
inline constexpr std::string_view kPickFileMessage =
    "Please select the file you would like to use in place of the missing one.";

struct SearchControls {
    Window& form;
    Label& lblMissing;
    Label& lblPath;
    // Path, size and date of each file found; its check boxes are not used.
    CheckListView& lvwFound;
    Label& lblProgress;
    Button& cmdStop;
    Button& cmdUse;
    Button& cmdCancel;
};

// The finding the window is for.
struct MissingFile {
    // The missing path as the value's data write it.
    std::string path;
    // Puts `new_path` in its place; true when the value was written, false when the user
    // has been told why not.
    std::function<bool(const std::string& new_path)> use_file;
};

struct SearchServices {
    system::FileSystem& files;
    MessagePump& pump;
    MessageDialogs& dialogs;
    ColorRef theme;
    // A file's time (seconds since 1970, UTC) as the user's locale writes a date.
    std::function<std::string(std::int64_t)> date_text;
    // Closes the window; it goes once the handler that asked has returned.
    std::function<void()> close;
};

// "512 Bytes", "1.5 KB", "3.2 MB": the size as the candidates list shows it.
std::string SizeText(std::uint64_t bytes);

class frmSearch {
  public:
    frmSearch(SearchControls controls, SearchServices services, MissingFile missing);
    frmSearch(const frmSearch&) = delete;
    frmSearch& operator=(const frmSearch&) = delete;

    void Form_Load();
    // Runs the whole search, handling the window's messages between folders; returns when
    // it has finished or was stopped.
    void RunSearch();
    void cmdStop_Click();
    void cmdUse_Click();
    void cmdCancel_Click();
    // The window is closing, by its close box or its code: a running search stops.
    void Form_QueryUnload();

    bool searching() const { return searching_; }

  private:
    void ShowNewFound();
    void ShowProgress();
    void Message(std::string_view prompt, int style);

    SearchControls c_;
    SearchServices s_;
    MissingFile missing_;
    backup::MissingFileSearch search_;
    std::size_t shown_ = 0;
    bool searching_ = false;
    bool closing_ = false;
};

}  // namespace regvex::ui::search
