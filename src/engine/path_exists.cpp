#include "engine/path_exists.h"

namespace regvex {

bool PathExists(FileExistence& files, const std::string& path) {
    if (files.PathFileExists(path) == 1) {
        return true;
    }
    files.PathFileExists(path);
    return false;
}

}  // namespace regvex
