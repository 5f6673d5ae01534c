#pragma once
// Drawing helpers the windows share.

#include <windows.h>

namespace regvex::ui {

// Selects an object into a device context for as long as it lives.
class SelectIn {
  public:
    SelectIn(HDC dc, HGDIOBJ object) : dc_(dc), old_(SelectObject(dc, object)) {}
    ~SelectIn() { SelectObject(dc_, old_); }
    SelectIn(const SelectIn&) = delete;
    SelectIn& operator=(const SelectIn&) = delete;

  private:
    HDC dc_;
    HGDIOBJ old_;
};

}  // namespace regvex::ui
