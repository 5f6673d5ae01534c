#pragma once
// The program's name and version, as the windows use them.

#include "system/program_version.h"

namespace regvex::ui {

using system::kProductName;
using system::kProjectPage;
using system::kVersionMajor;
using system::kVersionMinor;
using system::kVersionPatch;
using system::ProgramTitleAndVersion;

}  // namespace regvex::ui
