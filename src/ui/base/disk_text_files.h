#pragma once
// Text files on disk, by UTF-8 path.

#include "ui/base/services.h"

namespace regvex::ui {

class DiskTextFiles final : public TextFiles {
  public:
    bool Exists(const std::string& path) override;
    std::optional<std::string> Read(const std::string& path) override;
    bool Write(const std::string& path, std::string_view bytes) override;
};

}  // namespace regvex::ui
