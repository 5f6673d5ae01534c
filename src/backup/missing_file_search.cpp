#include "backup/missing_file_search.h"

#include <algorithm>

#include "text/upper_case.h"

namespace regvex::backup {

namespace {

std::string Join(const std::string& folder, const std::string& name) {
    return folder.ends_with('\\') ? folder + name : folder + "\\" + name;
}

}  // namespace

MissingFileSearch::MissingFileSearch(system::FileSystem& files, std::string_view missing_path)
    : files_(files) {
    const std::size_t slash = missing_path.rfind('\\');
    name_ = std::string(slash == std::string_view::npos ? missing_path
                                                        : missing_path.substr(slash + 1));
    upper_name_ = text::UpperCase(name_);
    // "C:\" and the folders below it that the path names, the root first.
    if (missing_path.size() < 3 || missing_path[1] != ':' || missing_path[2] != '\\' ||
        name_.empty()) {
        phase_ = Phase::kDone;
        return;
    }
    drive_root_ = std::string(missing_path.substr(0, 3));
    named_.push_back(drive_root_);
    for (std::size_t at = missing_path.find('\\', 3); at != std::string_view::npos && at < slash;
         at = missing_path.find('\\', at + 1)) {
        named_.emplace_back(missing_path.substr(0, at));
    }
    if (slash > 3) {
        named_.emplace_back(missing_path.substr(0, slash));
    }
    named_.erase(std::unique(named_.begin(), named_.end()), named_.end());
    roots_.assign(named_.rbegin(), named_.rend());
}

bool MissingFileSearch::Step() {
    if (stopped_ || phase_ == Phase::kDone) {
        return false;
    }
    if (phase_ == Phase::kNamedFolders) {
        folder_ = named_.back();
        named_.pop_back();
        Search(folder_, false);
        if (named_.empty()) {
            phase_ = Phase::kDrive;
        }
        return true;
    }
    if (pending_.empty()) {
        walked_roots_.insert(text::UpperCase(roots_[next_root_]));
        pending_.push_back(roots_[next_root_++]);
    }
    folder_ = pending_.back();
    pending_.pop_back();
    Search(folder_, true);
    if (pending_.empty() && next_root_ == roots_.size()) {
        phase_ = Phase::kDone;
    }
    return true;
}

void MissingFileSearch::Search(const std::string& folder, bool enter_subfolders) {
    ++folders_searched_;
    system::FileSystem::Listing listing = files_.ListFolder(folder);
    for (const std::string& file : listing.files) {
        if (text::UpperCase(file) != upper_name_) {
            continue;
        }
        std::string path = Join(folder, file);
        if (!seen_.insert(text::UpperCase(path)).second) {
            continue;
        }
        found_.push_back({path, files_.FileSize(path), files_.ModifiedTime(path)});
    }
    if (!enter_subfolders) {
        return;
    }
    // Taken from the back: in reverse order here, so that the walk goes in name order.
    std::sort(listing.folders.begin(), listing.folders.end(),
              [](const std::string& a, const std::string& b) {
                  return text::UpperCase(a) > text::UpperCase(b);
              });
    for (const std::string& sub : listing.folders) {
        std::string path = Join(folder, sub);
        if (path.size() <= kMostSearchedPathBytes &&
            walked_roots_.count(text::UpperCase(path)) == 0) {
            pending_.push_back(std::move(path));
        }
    }
}

}  // namespace regvex::backup
