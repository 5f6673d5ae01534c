#pragma once
// The task pane's icons, painted at run time, and the chevron of its group headers.
// The icon numbers are the positions in the image list built from them
// (CreateTaskIconImageList), to be put in TaskItem::icon.

#include "ui/taskpane/glyph_canvas.h"

namespace regvex::ui::taskpane {

enum TaskIcon : int {
    kIconScan = 0,   // magnifier
    kIconCheckAll,   // ticked box
    kIconUncheck,    // empty box
    kIconDelete,     // red cross
    kIconRestore,    // circular arrow
    kIconIgnore,     // no-entry sign
    kIconInfo,       // "i" in a circle
    kIconVersion,    // document
    kIconCopyright,  // copyright sign
    kIconCompany,    // building
    kIconAbout,      // question mark
    kIconLike,       // thumb up
    kTaskIconCount
};

// An empty picture for a number that is no icon.
GlyphImage RenderTaskIcon(int icon, int size);

struct ChevronColors {
    Rgba face;
    Rgba edge;
    Rgba arrows;
};

// A round button with two arrows: pointing up while the group is expanded (a click folds
// it), down while collapsed.
GlyphImage RenderChevron(int size, bool expanded, const ChevronColors& colors);

}  // namespace regvex::ui::taskpane
