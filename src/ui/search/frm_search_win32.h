#pragma once
// The search for a missing file on Windows: real controls under frmSearch's code, shown
// modal over the main window. The search starts as soon as the window is up.

#include <windows.h>

#include <memory>

#include "system/file_system.h"
#include "ui/base/services.h"
#include "ui/base/window_kit_win32.h"
#include "ui/search/frm_search.h"

namespace regvex::ui::search {

// The controls' identifiers, for anyone who needs to find them (tests). Cancel answers to
// Escape as well.
enum SearchControlId : int {
    kIdSearchCancel = IDCANCEL,
    kIdSearchMissing = 101,
    kIdSearchPath,
    kIdSearchFound,
    kIdSearchProgress,
    kIdSearchStop,
    kIdSearchUse,
};

// The window's class name, for anyone who needs to find it.
inline constexpr wchar_t kSearchWindowClass[] = L"RegvexlorMissingFileSearch";

// A time of a file as the user's locale writes a date and a time, in local time.
std::string LocalFileTimeText(std::int64_t unix_seconds);

class Win32SearchWindow final : private WindowImpl {
  public:
    struct Dependencies {
        MessageDialogs& dialogs;
        ColorRef theme;
        system::FileSystem& files;
        // Lets the program's windows handle their messages between two folders.
        MessagePump& pump;
    };

    explicit Win32SearchWindow(Dependencies dependencies);
    ~Win32SearchWindow() override;
    Win32SearchWindow(const Win32SearchWindow&) = delete;
    Win32SearchWindow& operator=(const Win32SearchWindow&) = delete;

    // Shows the window over `owner`, runs the search and returns when the window has
    // closed. The owner is disabled meanwhile. A WM_QUIT that arrives meanwhile closes the
    // window and is posted again for the caller's loop.
    void ShowModal(HWND owner, MissingFile missing);

    // The window while it is up, or null.
    HWND Handle() const { return hwnd(); }

  private:
    struct Shown;

    LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) override;
    void Load(HWND owner, MissingFile missing);
    // Runs a handler of frmSearch; a close asked for meanwhile happens once the outermost
    // one is done, as the search may still be on the stack.
    void RunHandler(void (frmSearch::*handler)());
    void OnCommand(int id, int code);
    void Close();
    void Destroy();

    Dependencies deps_;
    std::unique_ptr<Shown> shown_;
    int busy_ = 0;
    bool close_pending_ = false;
};

}  // namespace regvex::ui::search
