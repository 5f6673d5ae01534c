#pragma once
// The main window's menu tree and its two context menus.

#include <windows.h>

namespace regvex::ui {

enum MainCommand : UINT {
    kStartStopButton = 1001,
    kDriveCombo,
    kDeepOption,
    kSafeOption,
    kHelpImage,
    kHelpLabel,
    kErrorsList,
    kBackupsList,
    kRestoreButton,
    kDeleteButton,
    kTaskPane,
    kStatusLabel,
    kCurrentKeyLabel,

    kMenuStartStop = 2001,
    kMenuRestore,
    kMenuExit,
    kMenuCheckAll,
    kMenuUncheckAll,
    kMenuFix,
    kMenuSearch,
    kMenuInfo,
    kMenuHelp,
    kMenuAbout,
    kMenuAddToIgnore,
    kMenuAddSubkeyToIgnore,
    kMenuRegeditView,
    kMenuViewBackup,
};

struct MainMenus {
    HMENU bar = nullptr;              // attached to the window, destroyed with it
    HMENU add_ignore = nullptr;       // context menu of the results
    HMENU restore_context = nullptr;  // context menu of the backups
};

// Builds the menu bar and the context menus. The context menus are the caller's to
// destroy (DestroyMainContextMenus).
MainMenus CreateMainMenus();
void DestroyMainContextMenus(MainMenus& menus);

}  // namespace regvex::ui
