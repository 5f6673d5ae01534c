#pragma once
// The main window's menu tree and its two context menus.

#include <windows.h>

#include "handles/unique_handle_win32.h"

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
    kScanFrame,
    kDriveLabel,
    kProgressBar,
    kBackupsFrame,
    kProductLabel,

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
    handles::UniqueMenu bar;              // the window's once attached
    handles::UniqueMenu add_ignore;       // context menu of the results
    handles::UniqueMenu restore_context;  // context menu of the backups
};

// Builds the menu bar and the context menus.
MainMenus CreateMainMenus();

}  // namespace regvex::ui
