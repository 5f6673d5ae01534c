#pragma once
// What the task pane knows without a window: its groups and items, where each one sits,
// what a point hits, and the hover, press and keyboard-focus state. The Windows control
// feeds it mouse and key events and draws what it says; tests drive it directly.
// Coordinates are pixels of the pane's content: (0, 0) is its top left corner before
// scrolling.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace regvex::ui::taskpane {

struct PanePoint {
    int x = 0;
    int y = 0;
};

// Half-open: left and top are inside, right and bottom are not.
struct PaneRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool Empty() const { return right <= left || bottom <= top; }
    bool Contains(PanePoint p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    friend bool operator==(const PaneRect&, const PaneRect&) = default;
};

inline constexpr int kNoIcon = -1;

struct TaskItem {
    // Empty for a line of plain text, which is shown but never a link.
    std::string key;
    std::string text;
    std::string tooltip;
    // Index into the pane's image list, or kNoIcon.
    int icon = kNoIcon;

    bool IsLink() const { return !key.empty(); }
};

struct TaskGroup {
    // "&" marks the accelerator letter ("&Tasks"); "&&" is a literal ampersand.
    std::string caption;
    std::string key;
    std::vector<TaskItem> items;
    // Drawn with a strong header, as the group of the pane's main commands.
    bool special = false;
    bool collapsed = false;
};

// The accelerator letter of a caption, or 0 when it has none.
char32_t AcceleratorOf(std::string_view caption);

struct TextExtent {
    int width = 0;
    int height = 0;
};

// Size of a text broken into lines at word boundaries so that no line is wider than
// max_width (a single word longer than that may stick out).
using MeasureText = std::function<TextExtent(std::string_view text, int max_width)>;

// Pixel sizes of the pane's parts. The Windows control scales them to the font and the
// screen's resolution.
struct TaskPaneMetrics {
    int margin = 12;         // between the pane's edge and the groups
    int group_gap = 12;      // between one group's body and the next header
    int header_height = 25;  // caption bar
    int chevron_size = 19;   // the round button at the right of the caption bar
    int header_padding = 10;
    int body_padding_x = 12;
    int body_padding_y = 10;
    int item_gap = 7;  // between one item's row and the next
    int icon_size = 16;
    int icon_gap = 6;  // between an icon and its text
};

struct ItemPlace {
    PaneRect row;
    PaneRect icon;  // empty without an icon
    PaneRect text;
    // What the mouse hits: icon and text of a link, the text of plain text. Clicks right
    // of a short link's text miss it, as in the shell's own task panes.
    PaneRect hot;
};

struct GroupPlace {
    PaneRect header;
    PaneRect caption;  // where the caption text goes, left of the chevron
    PaneRect chevron;
    PaneRect body;  // empty while collapsed; then every item's rectangles are empty too
    std::vector<ItemPlace> items;
};

struct ItemRef {
    int group = -1;
    int item = -1;
    friend bool operator==(const ItemRef&, const ItemRef&) = default;
};

struct PaneHit {
    enum class Kind { kNothing, kHeader, kLink, kText };
    Kind kind = Kind::kNothing;
    int group = -1;
    int item = -1;  // -1 for a header
    friend bool operator==(const PaneHit&, const PaneHit&) = default;
};

// What a release of the mouse button or a key did.
struct PaneAction {
    enum class Kind { kNone, kActivate, kToggle };
    Kind kind = Kind::kNone;
    int group = -1;
    int item = -1;
    friend bool operator==(const PaneAction&, const PaneAction&) = default;
};

enum class FocusMove { kNext, kPrevious, kFirst, kLast };

// What the scroll bar asks of the view.
enum class ScrollCommand { kLineUp, kLineDown, kPageUp, kPageDown, kTop, kBottom };

// A wheel's notch, as the mouse reports it.
inline constexpr int kWheelNotch = 120;

class TaskPaneModel {
  public:
    // Without a measure, texts take no room; the Windows control always sets one.
    void SetMeasure(MeasureText measure);
    void SetMetrics(const TaskPaneMetrics& metrics);
    void SetWidth(int width);
    // Forgets hover, press and focus, which named items of the old groups, and scrolls to
    // the top.
    void SetGroups(std::vector<TaskGroup> groups);

    const std::vector<TaskGroup>& groups() const { return groups_; }
    const TaskPaneMetrics& metrics() const { return metrics_; }
    int width() const { return width_; }

    // Laid out again after every change above and after a group collapses or expands.
    const std::vector<GroupPlace>& places() const { return places_; }
    int ContentHeight() const { return content_height_; }

    PaneHit HitTest(PanePoint point) const;
    const TaskItem* Item(ItemRef ref) const;
    // The link or text item with this key, first in order.
    std::optional<ItemRef> FindItem(std::string_view key) const;
    int FindGroup(std::string_view key) const;

    // Collapsing drops the hover and the keyboard focus when they are in the group.
    bool SetCollapsed(int group, bool collapsed);

    // Mouse. Each answers whether something that is drawn changed.
    bool MouseMove(PanePoint point);
    bool MouseLeave();
    // Only headers and links can be pressed. Answers whether one is.
    bool MouseDown(PanePoint point);
    // Pressing and releasing on the same link activates it; on the same header, toggles
    // its group (already done when this returns).
    PaneAction MouseUp(PanePoint point);
    void CancelPress();

    const PaneHit& hover() const { return hover_; }
    const PaneHit& pressed() const { return pressed_; }

    // Keyboard. The focus only ever rests on links of expanded groups.
    const std::optional<ItemRef>& focus() const { return focus_; }
    bool SetFocus(ItemRef ref);
    // Without a focus, kNext goes to the first link and kPrevious to the last. At either
    // end the focus stays unless `wrap`. Answers whether the focus moved.
    bool MoveFocus(FocusMove move, bool wrap);
    bool CanMoveFocus(FocusMove move) const;
    // Focuses the first link of the group whose caption has this accelerator (letters
    // compared without regard to case), expanding the group when it is collapsed.
    // False when no group has it or the group has no link.
    bool FocusAccelerator(char32_t letter);
    // Enter or Space: the focused link.
    PaneAction ActivateFocus() const;

    // Scrolling. The view is `width` by `height` pixels without a scroll bar; content
    // taller than it is laid out `scroll_bar_width` narrower, to make room for the bar.
    // The position always stays within the content.
    void SetView(int width, int height, int scroll_bar_width);
    int view_height() const { return view_height_; }
    int scroll_top() const { return scroll_top_; }
    // Each answers whether the view moved.
    bool ScrollTo(int top);
    // A line is `line` pixels; a page is the view less a line, but at least a line.
    bool Scroll(ScrollCommand command, int line);
    // `delta` in wheel units (kWheelNotch a notch), `step` pixels a notch; what falls
    // short of a notch is kept for the next turn.
    bool ScrollWheel(int delta, int step);
    // Brings the focused link into view with an item gap around it, so that its focus
    // rectangle shows too.
    bool RevealFocus();

  private:
    void Layout();
    bool IsFocusable(ItemRef ref) const;
    std::vector<ItemRef> FocusOrder() const;
    std::optional<ItemRef> FocusTarget(FocusMove move, bool wrap) const;
    bool Toggle(int group);

    MeasureText measure_;
    TaskPaneMetrics metrics_;
    int width_ = 0;
    std::vector<TaskGroup> groups_;
    std::vector<GroupPlace> places_;
    int content_height_ = 0;
    PaneHit hover_;
    PaneHit pressed_;
    std::optional<ItemRef> focus_;
    int view_height_ = 0;
    int scroll_top_ = 0;
    int wheel_remainder_ = 0;
};

// The scroll position that brings `target` fully into a view of `view_height` pixels
// starting at `top`, moving as little as possible; the top of a target taller than the
// view wins. The result stays within the content.
int ScrollToReveal(const PaneRect& target, int top, int view_height, int content_height);

// The position kept within 0 .. content_height - view_height.
int ClampScroll(int top, int view_height, int content_height);

}  // namespace regvex::ui::taskpane
