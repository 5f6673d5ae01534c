#pragma once
// The search for a file that a finding names but that is not where the value says: first
// in the folders of its path, from the nearest up to the drive's root, then anywhere on
// that drive, for files of the same name in any case. The drive is walked from the same
// folders outwards, the nearest first, as a file that was moved seldom went far. The search is
// taken one folder at a time, so that the window that runs it can let the user act (Stop) between
// steps on its one thread.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "system/file_system.h"

namespace regvex::backup {

struct FoundFile {
    std::string path;
    std::optional<std::uint64_t> size;
    // Seconds since 1970 (UTC).
    std::optional<std::int64_t> modified;
};

// Folders deeper than Windows' classic path limit are not entered: few programs can use
// a file there, and a link that loops back makes paths grow until they reach it.
inline constexpr std::size_t kMostSearchedPathBytes = 260;

class MissingFileSearch {
  public:
    enum class Phase { kNamedFolders, kDrive, kDone };

    // `missing_path` is a full path, "C:\Program Files\App\app.exe".
    MissingFileSearch(system::FileSystem& files, std::string_view missing_path);

    // Looks in one more folder. False when there is nothing left to look in, because the
    // search has finished or was stopped.
    bool Step();
    // Ends the search; the next step does nothing.
    void Stop() { stopped_ = true; }

    Phase phase() const { return stopped_ ? Phase::kDone : phase_; }
    bool stopped() const { return stopped_; }
    // The folder that the last step looked in.
    const std::string& folder() const { return folder_; }
    std::size_t folders_searched() const { return folders_searched_; }
    // Each file once, in the order found.
    const std::vector<FoundFile>& found() const { return found_; }
    const std::string& file_name() const { return name_; }

  private:
    void Search(const std::string& folder, bool enter_subfolders);

    system::FileSystem& files_;
    std::string name_;
    std::string upper_name_;
    Phase phase_ = Phase::kNamedFolders;
    bool stopped_ = false;
    // The path's own folders, nearest last, taken from the back.
    std::vector<std::string> named_;
    // The same folders, nearest first, each the root of one part of the drive's walk; and
    // the upper-cased ones begun, which the walks further out leave out.
    std::vector<std::string> roots_;
    std::size_t next_root_ = 0;
    std::set<std::string> walked_roots_;
    // The folders of the present part still to look in, taken from the back (depth first).
    std::vector<std::string> pending_;
    std::string drive_root_;
    std::string folder_;
    std::size_t folders_searched_ = 0;
    std::vector<FoundFile> found_;
    std::set<std::string> seen_;  // upper-cased paths of what was found
};

}  // namespace regvex::backup
