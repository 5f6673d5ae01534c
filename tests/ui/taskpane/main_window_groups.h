#pragma once
// The main window's task pane groups as the program shows them, for tests of the control
// with the real texts, tooltips and icons.

#include <vector>

#include "ui/taskpane/task_icons.h"
#include "ui/taskpane/task_pane_model.h"

namespace regvex::testing {

inline std::vector<ui::taskpane::TaskGroup> MainWindowGroups() {
    using namespace regvex::ui::taskpane;
    return {
        {"&Tasks",
         "TASKS",
         {
             {"SCAN", "Scan", "This task will scan for invalid entries in the registry.",
              kIconScan},
             {"CHECKALL", "Select All Items", "This task will select all items to be deleted.",
              kIconCheckAll},
             {"UNCHECK", "UnSelect All Items",
              "This task will deselect all items that were previously selected.", kIconUncheck},
             {"DELETE", "Delete Selected Items",
              "This task will remove all selected items from the registry and create a backup "
              "file.",
              kIconDelete},
             {"RESTORE", "Restore Backups",
              "This task allows you to restore all registry entries removed.", kIconRestore},
             {"IGNORE", "Ignore List",
              "This task allows you to have Registry Vexlor ignore what you specify.", kIconIgnore},
         },
         true,
         false},
        {"&Info",
         "INFO",
         {{"", "Backups are created automatically when deleting items from the registry.", "",
           kIconInfo}},
         false,
         false},
        {"&Details",
         "DETAILS",
         {
             {"VERSION", "Registry Vexlor 1.0", "", kIconVersion},
             {"COPY", "Copyright \xC2\xA9 2026 Dunmarch Software", "", kIconCopyright},
             {"COMPANY", "Dunmarch Software", "", kIconCompany},
             {"ABOUT", "About...", "", kIconAbout},
             {"FACEBOOK1", "\"Like\" Dunmarch Software",
              "\"Like\" Dunmarch Software. Visit Our Facebook Page", kIconLike},
         },
         false,
         false},
    };
}

}  // namespace regvex::testing
