#include "engine/caching_file_existence.h"

namespace regvex {

int CachingFileExistence::Check(const std::string& path) {
    if (auto known = answers_.find(path); known != answers_.end()) {
        return known->second;
    }
    if (answers_.size() >= kCachedAnswers) {
        answers_.clear();
    }
    const int answer = files_.Check(path);
    answers_.emplace(path, answer);
    return answer;
}

}  // namespace regvex
