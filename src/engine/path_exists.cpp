#include "engine/path_exists.h"

namespace regvex {

bool PathExists(FileExistence& files, const std::string& path) {
    if (files.Check(path) == 1) {
        return true;
    }
    files.Check(path);
    return false;
}

}  // namespace regvex
