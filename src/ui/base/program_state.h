#pragma once
// The program-wide values that several windows share.

#include <string>

#include "system/system_version.h"
#include "ui/base/services.h"

namespace regvex::ui {

struct ProgramState {
    // True while a scan runs; the ignore-list task and a restore refuse to work then.
    bool bScanning = false;
    // The scanned drive's root, "C:\".
    std::string ScanDrive;
    system::KeyMasks masks;
    // The message boxes' colour, from the window background's red level.
    ColorRef theme = Rgb(255, 255, 255);
    // What the results' context menu hands to the ignore list's add command.
    std::string pending_ignore;
    // The folder of the program, without a trailing backslash.
    std::string program_folder;
};

}  // namespace regvex::ui
