#pragma once
// Remembers the platform's answers for the length of one scan. A registry names the same
// files many times over (every class of a library points at the library), and asking
// the file system costs far more than remembering: under Wine each question of an
// upper-cased path has folders searched without regard to case.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/path_exists.h"

namespace regvex {

class CachingFileExistence final : public FileExistence {
  public:
    // Beyond this many answers the cache starts afresh, so memory stays bounded however
    // many different paths a scan asks about.
    static constexpr std::size_t kCachedAnswers = 65536;

    explicit CachingFileExistence(FileExistence& files) : files_(files) {}

    int Check(const std::string& path) override;

  private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>{}(text);
        }
    };

    FileExistence& files_;
    std::unordered_map<std::string, int, TextHash, std::equal_to<>> answers_;
};

}  // namespace regvex
