#pragma once
// The existence test of the running system: PathFileExists.

#include "engine/path_exists.h"

namespace regvex {

class Win32FileExistence final : public FileExistence {
  public:
    int Check(const std::string& path) override;
};

}  // namespace regvex
