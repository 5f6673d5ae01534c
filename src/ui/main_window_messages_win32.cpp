// The main window's messages, handed to its code: commands of its buttons and menus, the
// lists' notifications, colours and cursors of its links, and closing.

#include "ui/main_window_win32.h"

#include <commctrl.h>

#include "ui/task_pane_keys.h"

namespace regvex::ui {

namespace {

constexpr COLORREF kLinkColor = RGB(0, 70, 170);

}  // namespace

void MainWindow::OnClose() {
    // A close of our own asks nothing; the title bar's close box asks first.
    if (form_->Form_QueryUnload(kUnloadFromTitleBar)) {
        return;
    }
    form_->Form_Unload();
    if (state_.bScanning) {
        // The scan ends the process at its next pause.
        return;
    }
    DestroyImpl();
}

void MainWindow::OnCommand(int id, int code) {
    switch (id) {
        case kStartStopButton:
            if (code == BN_CLICKED) {
                form_->cmdStartStop_Click();
            }
            break;
        case kHelpImage:
            if (code == STN_CLICKED) {
                form_->Image1_Click();
            }
            break;
        case kHelpLabel:
            if (code == STN_CLICKED) {
                form_->Label3_Click();
            }
            break;
        case kMenuStartStop:
            form_->mnuStartStop_Click();
            break;
        case kMenuRestore:
            form_->TaskPane_ItemClick(kRestoreTask);
            break;
        case kMenuExit:
            form_->mnuExit_Click();
            break;
        case kMenuCheckAll:
            form_->mnuCheckAll_Click();
            break;
        case kMenuUncheckAll:
            form_->mnuUncheckAll_Click();
            break;
        case kMenuHelp:
            form_->mnuHelp2_Click();
            break;
        case kMenuAbout:
            form_->mnuAbout_Click();
            break;
        case kRestoreButton:
            if (code == BN_CLICKED) {
                form_->Command1_Click();
            }
            break;
        case kDeleteButton:
            if (code == BN_CLICKED) {
                form_->Command2_Click();
            }
            break;
        case kMenuFix:
            form_->mnuFix_Click();
            break;
        case kMenuSearch:
            form_->mnuSearch_Click();
            break;
        case kMenuInfo:
            form_->mnuInfo_Click();
            break;
        case kMenuRegeditView:
            form_->Regedit_View_Click();
            break;
        case kMenuViewBackup:
            form_->View_Backup_Click();
            break;
        case kMenuAddToIgnore:
            if (services_.add_value_to_ignore) {
                services_.add_value_to_ignore();
            }
            break;
        case kMenuAddSubkeyToIgnore:
            if (services_.add_subkey_to_ignore) {
                services_.add_subkey_to_ignore();
            }
            break;
        default:
            break;
    }
}

void MainWindow::ShowContextMenu(HMENU menu) {
    POINT at{};
    GetCursorPos(&at);
    TrackPopupMenu(menu, TPM_RIGHTBUTTON, at.x, at.y, 0, hwnd(), nullptr);
}

void MainWindow::PreTranslateMessage(const MSG& message) const {
    errors_.RelayToTips(message);
    backups_.RelayToTips(message);
}

void MainWindow::OnNotify(const NMHDR& notification) {
    if (notification.code == NM_RCLICK) {
        if (notification.hwndFrom == errors_.hwnd()) {
            ShowContextMenu(menus_.add_ignore.get());
        } else if (notification.hwndFrom == backups_.hwnd()) {
            ShowContextMenu(menus_.restore_context.get());
        }
    } else if ((notification.code == NM_DBLCLK || notification.code == NM_RETURN) &&
               notification.hwndFrom == errors_.hwnd()) {
        OnResultActivated(notification);
    } else if (notification.code == HDN_ENDTRACKW || notification.code == HDN_ITEMCHANGEDW) {
        errors_.UpdateColumnTips();
        backups_.UpdateColumnTips();
    }
}

void MainWindow::OnResultActivated(const NMHDR& notification) {
    if (notification.code == NM_DBLCLK) {
        // Only a double-click on a row's text; one on its check box, which the list takes
        // as two clicks of the box, or on the empty space below the rows, is none.
        const auto& activated = reinterpret_cast<const NMITEMACTIVATE&>(notification);
        LVHITTESTINFO hit{};
        hit.pt = activated.ptAction;
        if (ListView_SubItemHitTest(errors_.hwnd(), &hit) < 0 ||
            (hit.flags & LVHT_ONITEMSTATEICON) != 0) {
            return;
        }
    }
    form_->lvwRegErrors_DblClick();
}

LRESULT MainWindow::ColorStatic(HDC dc, HWND control) {
    SetBkMode(dc, TRANSPARENT);
    if (control == label3_.hwnd()) {
        SetTextColor(dc, kLinkColor);
    }
    return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
}

LRESULT MainWindow::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_COMMAND:
            if (form_) {
                OnCommand(LOWORD(wparam), HIWORD(wparam));
            }
            return 0;
        case WM_NOTIFY:
            if (form_) {
                OnNotify(*reinterpret_cast<const NMHDR*>(lparam));
            }
            return 0;
        case WM_SIZE:
            if (form_) {
                form_->Form_Resize();
            }
            return 0;
        case WM_GETMINMAXINFO: {
            auto* limits = reinterpret_cast<MINMAXINFO*>(lparam);
            limits->ptMinTrackSize = {640, 480};
            return 0;
        }
        case WM_CTLCOLORSTATIC:
            return ColorStatic(reinterpret_cast<HDC>(wparam), reinterpret_cast<HWND>(lparam));
        case WM_SETCURSOR:
            if (reinterpret_cast<HWND>(wparam) == label3_.hwnd() ||
                reinterpret_cast<HWND>(wparam) == GetDlgItem(window, kHelpImage)) {
                SetCursor(LoadCursorW(nullptr, IDC_HAND));
                return TRUE;
            }
            break;
        case WM_CLOSE:
            if (form_) {
                if (wparam == kUnloadFromCode) {
                    form_->Form_QueryUnload(kUnloadFromCode);
                    form_->Form_Unload();
                    DestroyImpl();
                } else {
                    OnClose();
                }
            }
            return 0;
        case WM_DESTROY:
            if (!destroying_) {
                PostQuitMessage(0);
            }
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace regvex::ui
