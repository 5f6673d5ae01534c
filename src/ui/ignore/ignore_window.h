#pragma once
// The program's one ignore-list window, as the main window reaches it: loaded on first
// use (reading the ignore file), kept hidden or shown until it is closed or unloaded.

#include "ui/base/controls.h"

namespace regvex::ui::ignore {

class frmIgnore;

class IgnoreWindow {
  public:
    virtual ~IgnoreWindow() = default;
    virtual bool IsLoaded() const = 0;
    // The window's code, loading the window hidden first when it is not loaded.
    virtual frmIgnore& Form() = 0;
    // The window's list of entries (`lstIgnore`), loading the window hidden first.
    virtual ListBox& lstIgnore() = 0;
    // Closes the window, discarding edits that were not applied.
    virtual void Unload() = 0;
    // Shows the window modeless, owned by the main window, loading it first.
    virtual void Show() = 0;
};

}  // namespace regvex::ui::ignore
