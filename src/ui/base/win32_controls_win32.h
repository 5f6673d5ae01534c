#pragma once
// The control interfaces over real windows.

#include <windows.h>

#include <string>
#include <vector>

#include "ui/base/controls.h"
#include "ui/base/throttled_text_win32.h"

namespace regvex::ui {

// The whole text of a window, however long.
std::string WindowTextOf(HWND window);

// A menu item's caption, however long; `flags` says whether `item` is a position or an
// identifier (MF_BYPOSITION, MF_BYCOMMAND).
std::string MenuItemCaption(HMENU menu, UINT item, UINT flags);

// The text of a window: labels, buttons, frames, the form itself.
class WindowText : public Captioned {
  public:
    explicit WindowText(HWND window = nullptr) : window_(window) {}
    void Attach(HWND window) { window_ = window; }
    HWND hwnd() const { return window_; }
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    HWND window_;
};

// A window itself to its code. The main window's caption counts the findings while a
// scan runs, so it is shown at the scan's pauses.
class FormWindow final : public Window {
  public:
    explicit FormWindow(HWND window = nullptr) { Attach(window); }
    void Attach(HWND window) { text_.Attach(window); }
    std::string Caption() const override { return text_.Caption(); }
    void SetCaption(std::string_view caption) override { text_.SetCaption(caption); }
    bool IsMinimized() const override;
    void Activate() override;
    ThrottledText& caption() { return text_; }

  private:
    ThrottledText text_;
};

// A menu item by its identifier, or a menu of the bar by its position. With the window
// that shows the bar, the bar is drawn again after a change.
class MenuItemText final : public MenuItem {
  public:
    MenuItemText() = default;
    MenuItemText(HMENU menu, UINT item, bool by_position = false, HWND window = nullptr) {
        Attach(menu, item, by_position, window);
    }
    void Attach(HMENU menu, UINT item, bool by_position = false, HWND window = nullptr) {
        menu_ = menu;
        item_ = item;
        by_position_ = by_position;
        window_ = window;
    }
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    HMENU menu_ = nullptr;
    UINT item_ = 0;
    bool by_position_ = false;
    HWND window_ = nullptr;
};

class RadioButton final : public OptionButton {
  public:
    void Attach(HWND window) { window_ = window; }
    bool Value() const override;
    void SetValue(bool selected) override;

  private:
    HWND window_ = nullptr;
};

class ProgressControl final : public ProgressBar {
  public:
    void Attach(HWND window) { window_ = window; }
    int Max() const override { return max_; }
    void SetMax(int max) override;
    int Value() const override { return value_; }
    void SetValue(int value) override;

  private:
    HWND window_ = nullptr;
    int max_ = 100;
    int value_ = 0;
};

// The drive selector: the system's drives as "c: [LABEL]".
class DriveCombo final : public DriveList {
  public:
    void Attach(HWND combo) { combo_ = combo; }
    // Fills the list and selects the system drive.
    void Fill();
    std::string Drive() const override;

  private:
    HWND combo_ = nullptr;
};

}  // namespace regvex::ui
