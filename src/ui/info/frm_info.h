#pragma once
// frmInfo: the code of "Info On This Item", the window that explains one finding in
// words, lets the user copy the explanation, and closes.

#include <functional>
#include <string>
#include <string_view>

#include "ui/base/controls.h"
#include "ui/base/services.h"
#include "ui/info/clipboard.h"

namespace regvex::ui::info {

inline constexpr std::string_view kInfoCaption = "Info On This Item";
inline constexpr std::string_view kCopyCaption = "&Copy";
inline constexpr std::string_view kCloseCaption = "Close";
inline constexpr std::string_view kNotCopied =
    "The text could not be put on the clipboard. Another program may be holding it; try "
    "again in a moment.";

struct InfoControls {
    Window& form;
    // Read-only, several lines, in a font whose characters are all equally wide.
    Captioned& txtInfo;
};

// What only the window itself can do.
class InfoView {
  public:
    virtual ~InfoView() = default;
    virtual void SetWindowIcon() = 0;
    // Unloads the window; Form_QueryUnload runs on the way.
    virtual void Close() = 0;
};

struct InfoServices {
    InfoView& view;
    Clipboard& clipboard;
    MessageDialogs& dialogs;
    ColorRef theme;
    // The one argument-less call on the main window whenever the window closes.
    std::function<void()> main_window_on_close;
};

class frmInfo {
  public:
    // `explanation`: lines ended by '\n'.
    frmInfo(InfoControls controls, InfoServices services, std::string explanation);
    frmInfo(const frmInfo&) = delete;
    frmInfo& operator=(const frmInfo&) = delete;

    void Form_Load();
    void Form_QueryUnload();
    void cmdCopy_Click();
    void cmdClose_Click();

  private:
    InfoControls c_;
    InfoServices s_;
    std::string explanation_;
};

}  // namespace regvex::ui::info
