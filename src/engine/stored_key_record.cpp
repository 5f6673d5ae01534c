#include "engine/stored_key_record.h"

namespace regvex {

namespace {

const std::vector<StoredKeyRecord::Match> kNoMatches;

bool IsChildName(std::string_view parent, std::string_view name, std::string_view stored) {
    return stored.size() == parent.size() + 1 + name.size() && stored.starts_with(parent) &&
           stored[parent.size()] == '\\' && stored.ends_with(name);
}

}  // namespace

void StoredKeyRecord::Clear() {
    matches_.clear();
    marks_.clear();
}

StoredKeyRecord::Marks& StoredKeyRecord::Mark(const std::string& stored) {
    for (std::size_t end = stored.find('\\'); end != std::string::npos;
         end = stored.find('\\', end + 1)) {
        if (end != 0) {
            marks_[stored.substr(0, end)].below = true;
        }
    }
    Marks& marks = marks_[stored];
    marks.below = true;
    return marks;
}

void StoredKeyRecord::Identify(const KeyState* parent, std::string_view name,
                               KeyState& self) const {
    self.region_root = false;
    self.completed_above = false;
    self.hole_above = false;
    self.marks_below = false;
    self.covered = false;
    if (!self.known) {
        return;
    }
    const std::string& stored = self.stored;
    bool values_unread = false;
    const auto take = [&](const Marks& marks) {
        self.completed_above = self.completed_above || marks.completed;
        self.hole_above = self.hole_above || marks.keys_unreached;
    };
    if (parent != nullptr && parent->known && IsChildName(parent->stored, name, stored)) {
        self.completed_above = parent->completed_above;
        self.hole_above = parent->hole_above;
        if (parent->marks_below) {
            if (const auto found = marks_.find(stored); found != marks_.end()) {
                take(found->second);
                values_unread = found->second.values_unread;
                self.marks_below = found->second.below;
            }
        }
    } else {
        // A region's root: every name above it may be marked.
        self.region_root = true;
        for (std::size_t end = stored.find('\\');; end = stored.find('\\', end + 1)) {
            const std::string_view above =
                std::string_view(stored).substr(0, end == std::string::npos ? stored.size() : end);
            const auto found = above.empty() ? marks_.end() : marks_.find(above);
            if (found != marks_.end()) {
                take(found->second);
                if (end == std::string::npos) {
                    values_unread = found->second.values_unread;
                    self.marks_below = found->second.below;
                }
            }
            if (end == std::string::npos) {
                break;
            }
        }
    }
    self.covered = self.completed_above && !self.hole_above && !values_unread;
}

void StoredKeyRecord::NoteUnwalkedChild(const KeyState& parent, std::string_view name) {
    if (!parent.known) {
        return;
    }
    scratch_.assign(parent.stored);
    scratch_.push_back('\\');
    scratch_.append(name);
    NoteKeysUnreached(scratch_);
}

void StoredKeyRecord::SetMatches(const std::string& stored, std::vector<Match>& matches) {
    if (matches.empty()) {
        if (!matches_.empty()) {
            matches_.erase(stored);
        }
        return;
    }
    matches_[stored] = std::move(matches);
    matches.clear();
}

const std::vector<StoredKeyRecord::Match>& StoredKeyRecord::MatchesOf(
    const std::string& stored) const {
    const auto found = matches_.find(stored);
    return found == matches_.end() ? kNoMatches : found->second;
}

}  // namespace regvex
