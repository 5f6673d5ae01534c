#include "ui/main_menus_win32.h"

namespace regvex::ui {

namespace {

void Item(HMENU menu, UINT id, const wchar_t* text) {
    AppendMenuW(menu, MF_STRING, id, text);
}

void Separator(HMENU menu) {
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
}

HMENU Popup(HMENU bar, const wchar_t* text) {
    HMENU popup = CreatePopupMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(popup), text);
    return popup;
}

}  // namespace

MainMenus CreateMainMenus() {
    MainMenus menus;
    menus.bar.Reset(CreateMenu());

    HMENU file = Popup(menus.bar.get(), L"&File");
    Item(file, kMenuStartStop, L"&Start Scan");
    Separator(file);  // mnuSeperator6
    Item(file, kMenuRestore, L"&Restore Registry Backup");
    Separator(file);  // mnuSeperator1
    Item(file, kMenuExit, L"E&xit");

    HMENU repair = Popup(menus.bar.get(), L"------------------>&Repair<------------------");
    Item(repair, kMenuCheckAll, L"&Check All Items");
    Item(repair, kMenuUncheckAll, L"&Uncheck All Items");
    Separator(repair);  // mnuSeparator2
    Item(repair, kMenuFix, L"&Delete All Checked Items");
    Separator(repair);  // mnuSeperator3
    Item(repair, kMenuSearch, L"&Search for Missing File, Manually (Experts Only)");
    Separator(repair);  // mnuSeperator0
    Item(repair, kMenuInfo, L"&Info On This Item");

    Popup(menus.bar.get(), L"&Options");

    HMENU help = Popup(menus.bar.get(), L"&Help");
    Item(help, kMenuHelp, L"&Help");
    Separator(help);  // mnuSeperator4
    Item(help, kMenuAbout, L"&About");

    menus.add_ignore.Reset(CreatePopupMenu());
    Item(menus.add_ignore.get(), kMenuAddToIgnore, L"Add Value To Ignore List");
    Item(menus.add_ignore.get(), kMenuAddSubkeyToIgnore, L"Add Subkey To Ignore List");
    Item(menus.add_ignore.get(), kMenuRegeditView, L"View Subkey in Registry Editor");

    menus.restore_context.Reset(CreatePopupMenu());
    Item(menus.restore_context.get(), kMenuViewBackup, L"View Backup in Notepad");
    return menus;
}

}  // namespace regvex::ui
