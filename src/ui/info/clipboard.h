#pragma once
// The system's clipboard, as the windows' code reaches it.

#include <string_view>

namespace regvex::ui {

class Clipboard {
  public:
    virtual ~Clipboard() = default;
    // Puts a text (UTF-8, lines ended by '\n') on the clipboard in place of what was
    // there; false when the clipboard could not be had.
    virtual bool SetText(std::string_view text) = 0;
};

}  // namespace regvex::ui
