// The task pane's mouse, scroll bar, wheel and keyboard messages, handed to its model.

#include "ui/taskpane/task_pane_win32.h"

#include <windowsx.h>

#include <string>

namespace regvex::ui::taskpane {

namespace {

static_assert(kWheelNotch == WHEEL_DELTA);

std::optional<ScrollCommand> ScrollCommandOf(WORD request) {
    switch (request) {
        case SB_LINEUP:
            return ScrollCommand::kLineUp;
        case SB_LINEDOWN:
            return ScrollCommand::kLineDown;
        case SB_PAGEUP:
            return ScrollCommand::kPageUp;
        case SB_PAGEDOWN:
            return ScrollCommand::kPageDown;
        case SB_TOP:
            return ScrollCommand::kTop;
        case SB_BOTTOM:
            return ScrollCommand::kBottom;
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<LRESULT> TaskPane::OnMouseMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    const HWND window = hwnd();
    switch (message) {
        case WM_MOUSEMOVE:
            last_mouse_ = POINT{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            if (!tracking_mouse_) {
                TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, window, 0};
                tracking_mouse_ = TrackMouseEvent(&track) != FALSE;
            }
            if (model_.MouseMove(ToContent(lparam))) {
                SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                             MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
                Redraw();
            }
            return 0;
        case WM_MOUSELEAVE:
            tracking_mouse_ = false;
            last_mouse_.reset();
            if (model_.MouseLeave()) {
                Redraw();
            }
            return 0;
        case WM_SETCURSOR:
            if (reinterpret_cast<HWND>(wparam) == window && LOWORD(lparam) == HTCLIENT) {
                const bool pointing = model_.hover().kind != PaneHit::Kind::kNothing;
                SetCursor(LoadCursorW(nullptr, pointing ? IDC_HAND : IDC_ARROW));
                return TRUE;
            }
            return std::nullopt;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            keyboard_cues_ = false;
            if (GetFocus() != window) {
                SetFocus(window);
            }
            if (model_.MouseDown(ToContent(lparam))) {
                SetCapture(window);
            }
            Redraw();
            return 0;
        case WM_LBUTTONUP: {
            // Decided before the capture goes: releasing it cancels the press.
            const PaneAction action = model_.MouseUp(ToContent(lparam));
            if (GetCapture() == window) {
                ReleaseCapture();
            }
            Follow(action);
            return 0;
        }
        case WM_CAPTURECHANGED:
            model_.CancelPress();
            return 0;
        default:
            return std::nullopt;
    }
}

std::optional<LRESULT> TaskPane::OnScrollMessage(UINT message, WPARAM wparam) {
    const int line = Scale(kScrollLine);
    switch (message) {
        case WM_MOUSEWHEEL: {
            UINT lines = 3;
            SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
            const int step =
                lines == WHEEL_PAGESCROLL ? model_.view_height() : static_cast<int>(lines) * line;
            Scrolled(model_.ScrollWheel(GET_WHEEL_DELTA_WPARAM(wparam), step));
            return 0;
        }
        case WM_VSCROLL: {
            const WORD request = LOWORD(wparam);
            if (request == SB_THUMBTRACK || request == SB_THUMBPOSITION) {
                SCROLLINFO info{};
                info.cbSize = sizeof(info);
                info.fMask = SIF_TRACKPOS;
                GetScrollInfo(hwnd(), SB_VERT, &info);
                Scrolled(model_.ScrollTo(info.nTrackPos));
            } else if (const auto command = ScrollCommandOf(request)) {
                Scrolled(model_.Scroll(*command, line));
            }
            return 0;
        }
        default:
            return std::nullopt;
    }
}

std::optional<LRESULT> TaskPane::OnKeyboardMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_GETDLGCODE: {
            LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
            const auto* msg = reinterpret_cast<const MSG*>(lparam);
            if (msg != nullptr && msg->message == WM_KEYDOWN) {
                // Tab stays in the pane until its last link, then the dialog moves on.
                const bool back = GetKeyState(VK_SHIFT) < 0;
                if (msg->wParam == VK_TAB &&
                    model_.CanMoveFocus(back ? FocusMove::kPrevious : FocusMove::kNext)) {
                    code |= DLGC_WANTTAB;
                }
                if (msg->wParam == VK_RETURN && model_.focus()) {
                    code |= DLGC_WANTMESSAGE;
                }
            }
            return code;
        }
        case WM_KEYDOWN:
            OnKeyDown(wparam);
            return 0;
        case WM_CHAR:
            if (wparam > L' ') {
                HandleAccelerator(static_cast<wchar_t>(wparam));
            }
            return 0;
        case WM_SYSCHAR:
            if (wparam > L' ' && HandleAccelerator(static_cast<wchar_t>(wparam))) {
                return 0;
            }
            return std::nullopt;
        case WM_SETFOCUS:
            if (GetKeyState(VK_TAB) < 0) {
                keyboard_cues_ = true;
                if (!model_.focus()) {
                    model_.MoveFocus(
                        GetKeyState(VK_SHIFT) < 0 ? FocusMove::kLast : FocusMove::kFirst, false);
                }
                Scrolled(model_.RevealFocus());
            }
            Redraw();
            return 0;
        case WM_KILLFOCUS:
            Redraw();
            return 0;
        default:
            return std::nullopt;
    }
}

void TaskPane::OnKeyDown(WPARAM key) {
    keyboard_cues_ = true;
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    switch (key) {
        case VK_TAB:
            // Reached only when no dialog takes Tab on, so it goes round within the pane.
            model_.MoveFocus(shift ? FocusMove::kPrevious : FocusMove::kNext, true);
            break;
        case VK_DOWN:
            model_.MoveFocus(FocusMove::kNext, false);
            break;
        case VK_UP:
            model_.MoveFocus(FocusMove::kPrevious, false);
            break;
        case VK_HOME:
            model_.MoveFocus(FocusMove::kFirst, false);
            break;
        case VK_END:
            model_.MoveFocus(FocusMove::kLast, false);
            break;
        case VK_RETURN:
        case VK_SPACE:
            Follow(model_.ActivateFocus());
            return;
        default:
            break;
    }
    Scrolled(model_.RevealFocus());
    Redraw();
}

void TaskPane::Follow(const PaneAction& action) {
    switch (action.kind) {
        case PaneAction::Kind::kNone:
            Redraw();
            return;
        case PaneAction::Kind::kToggle:
            Relayout();
            RefreshHover();
            Redraw();
            return;
        case PaneAction::Kind::kActivate:
            break;
    }
    const TaskItem* item = model_.Item({action.group, action.item});
    if (item == nullptr) {
        return;
    }
    // The handler may replace the groups or open a modal window: keep the key, and let
    // the pane show its state first.
    const std::string key = item->key;
    Redraw();
    UpdateWindow(hwnd());
    if (on_click_) {
        on_click_(key);
    }
}

bool TaskPane::HandleAccelerator(wchar_t letter) {
    if (hwnd() == nullptr || !model_.FocusAccelerator(static_cast<char32_t>(letter))) {
        return false;
    }
    keyboard_cues_ = true;
    Relayout();
    if (GetFocus() != hwnd()) {
        SetFocus(hwnd());
    }
    Scrolled(model_.RevealFocus());
    Redraw();
    return true;
}

}  // namespace regvex::ui::taskpane
