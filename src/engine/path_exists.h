#pragma once
// The existence test of a referenced file. The platform answers; PathExists applies the
// program's reading of that answer.

#include <string>

namespace regvex {

class FileExistence {
  public:
    virtual ~FileExistence() = default;
    // The platform's own answer (PathFileExists): 1 when the file or folder exists.
    virtual int Check(const std::string& path) = 0;
};

// True only when the platform answers exactly 1. Any other first answer is asked once
// more, and the result is false whatever the second answer is.
bool PathExists(FileExistence& files, const std::string& path);

}  // namespace regvex
