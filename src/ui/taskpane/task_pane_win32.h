#pragma once
// The task pane as a Windows child control: collapsible groups of link items with icons,
// in the manner of the shell's own task panes. It draws itself with GDI in the system's
// colours, shows a tooltip per item that has one, scrolls when its groups are taller
// than it, and takes the font given by WM_SETFONT.
//
//     TaskPane pane;
//     pane.Create(main_window, kTaskPaneId, rect);
//     pane.SetOnItemClick([](std::string_view key) { ... });
//     pane.SetGroups(std::move(groups));  // items carry TaskIcon numbers
//
// Keyboard: Tab, Shift+Tab, Up and Down move between links; Enter or Space follows one;
// the accelerator letter of a group's caption (with or without Alt) goes to its first
// link. A parent that wants Alt+letter to reach the pane from elsewhere hands its
// WM_SYSCHAR letters to HandleAccelerator.

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "ui/base/window_kit_win32.h"
#include "ui/taskpane/task_pane_colors.h"
#include "ui/taskpane/task_pane_model.h"

namespace regvex::ui::taskpane {

class TaskPane final : public WindowImpl {
  public:
    TaskPane() = default;
    ~TaskPane() override;

    // A visible child of `parent` with the given control id, in parent client
    // coordinates. False when the window cannot be made.
    bool Create(HWND parent, int control_id, const RECT& rect);
    // The tooltip window, with one tool per item that has a tooltip.
    HWND tooltip() const { return tooltip_.get(); }

    void SetGroups(std::vector<TaskGroup> groups);
    // Called with the key of the link the user follows, after the pane has drawn itself.
    void SetOnItemClick(std::function<void(std::string_view key)> on_click);

    bool SetGroupCollapsed(std::string_view group_key, bool collapsed);
    bool IsGroupCollapsed(std::string_view group_key) const;

    // Where an item or a group's caption bar is now, in the pane's client coordinates.
    // Nothing for an unknown key or an item of a collapsed group.
    std::optional<RECT> ItemRect(std::string_view key) const;
    std::optional<RECT> ItemRect(int group, int item) const;
    std::optional<RECT> HeaderRect(std::string_view group_key) const;

    // Focuses the first link of the group with this accelerator letter. False when no
    // group has it, so that the caller can pass the letter on (to its menu).
    bool HandleAccelerator(wchar_t letter);

    int scroll_position() const { return model_.scroll_top(); }
    const TaskPaneModel& model() const { return model_; }

  private:
    // Pixels a line of the scroll bar moves, at 96 dots per inch.
    static constexpr int kScrollLine = 16;

    // Each family answers the messages it handles; the rest go to DefWindowProcW.
    LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) override;
    std::optional<LRESULT> OnWindowMessage(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> OnPaintMessage(UINT message, WPARAM wparam);
    std::optional<LRESULT> OnMouseMessage(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> OnScrollMessage(UINT message, WPARAM wparam);
    std::optional<LRESULT> OnKeyboardMessage(UINT message, WPARAM wparam, LPARAM lparam);

    void UpdateFonts(HFONT font);
    void UpdateMetrics();
    void Relayout();
    void UpdateScrollBar();
    // After the model's view moved, when it did.
    void Scrolled(bool moved);
    void RebuildTools();
    void UpdateToolRects();
    void Redraw();
    void RefreshHover();
    void OnKeyDown(WPARAM key);
    void Follow(const PaneAction& action);

    void Paint(HDC dc, const RECT& client) const;
    void PaintGroup(HDC dc, std::size_t index, const PanePalette& palette) const;
    bool ShowCues() const;
    int Scale(int pixels) const;
    RECT ToClient(const PaneRect& rect) const;
    PanePoint ToContent(LPARAM lparam) const;

    handles::UniqueWindow tooltip_;
    TaskPaneModel model_;
    std::function<void(std::string_view)> on_click_;

    // The font handed over by WM_SETFONT belongs to the caller; the others are ours.
    HFONT font_ = nullptr;
    handles::UniqueFont default_font_;
    handles::UniqueFont bold_font_;
    handles::UniqueFont underline_font_;
    handles::UniqueDc measure_dc_;

    handles::UniqueImageList images_;

    int dpi_ = 96;
    bool laying_out_ = false;
    bool tracking_mouse_ = false;
    // Focus rectangles and accelerator underlines show once the keyboard is used.
    bool keyboard_cues_ = false;
    std::optional<POINT> last_mouse_;
    // The item of each tool, by the tool's id.
    std::vector<ItemRef> tools_;
};

}  // namespace regvex::ui::taskpane
