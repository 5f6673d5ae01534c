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
    completed_.clear();
    holes_.clear();
}

bool StoredKeyRecord::HoleBelow(std::string_view stored) const {
    if (holes_.empty()) {
        return false;
    }
    const auto hole = holes_.find(stored);
    return hole != holes_.end() && hole->second;
}

bool StoredKeyRecord::HoleAt(std::string_view stored) const {
    return !holes_.empty() && holes_.contains(stored);
}

void StoredKeyRecord::Identify(const KeyState* parent, std::string_view name,
                               KeyState& self) const {
    self.region_root = false;
    self.completed_above = false;
    self.hole_above = false;
    self.covered = false;
    if (!self.known) {
        return;
    }
    const std::string& stored = self.stored;
    if (parent != nullptr && parent->known && IsChildName(parent->stored, name, stored)) {
        self.completed_above = parent->completed_above || completed_.contains(stored);
        self.hole_above = parent->hole_above || HoleBelow(stored);
    } else {
        // A region's root: look at every key above it, from the top down.
        self.region_root = true;
        for (std::size_t end = stored.find('\\');; end = stored.find('\\', end + 1)) {
            const std::string_view above =
                std::string_view(stored).substr(0, end == std::string::npos ? stored.size() : end);
            if (!above.empty()) {
                self.completed_above = self.completed_above || completed_.contains(above);
                self.hole_above = self.hole_above || HoleBelow(above);
            }
            if (end == std::string::npos) {
                break;
            }
        }
    }
    self.covered = self.completed_above && !self.hole_above && !HoleAt(stored);
}

void StoredKeyRecord::NoteUnwalkedChild(const KeyState& parent, std::string_view name) {
    if (!parent.known) {
        return;
    }
    scratch_.assign(parent.stored);
    scratch_.push_back('\\');
    scratch_.append(name);
    holes_[scratch_] = true;
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
