#include "engine/stored_key_record.h"

#include <algorithm>

namespace regvex {

namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

bool IsChildName(std::string_view parent, std::string_view name, std::string_view stored) {
    return stored.size() == parent.size() + 1 + name.size() && stored.starts_with(parent) &&
           stored[parent.size()] == '\\' && stored.ends_with(name);
}

}  // namespace

void StoredKeyRecord::Clear() {
    matches_.clear();
    keys_.clear();
    key_open_ = false;
    index_.clear();
    indexed_ = 0;
    blocks_.clear();
    block_left_ = 0;
    marks_.clear();
}

std::string_view StoredKeyRecord::Keep(std::string_view text) {
    if (text.size() > block_left_) {
        const std::size_t size = std::max(kBlockBytes, text.size());
        blocks_.push_back(std::make_unique<char[]>(size));
        block_next_ = blocks_.back().get();
        block_left_ = size;
    }
    std::copy(text.begin(), text.end(), block_next_);
    const std::string_view kept(block_next_, text.size());
    block_next_ += text.size();
    block_left_ -= text.size();
    return kept;
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

void StoredKeyRecord::AddMatch(std::string_view stored, std::int32_t kind,
                               std::string_view value_name, std::string_view text) {
    if (!key_open_) {
        key_open_ = true;
        keys_.push_back(KeyMatches{Keep(stored), static_cast<std::uint32_t>(matches_.size()), 0});
    }
    matches_.push_back(Match{kind, Keep(value_name), Keep(text)});
    ++keys_.back().count;
}

std::span<const StoredKeyRecord::Match> StoredKeyRecord::MatchesOf(const std::string& stored) {
    for (; indexed_ < keys_.size(); ++indexed_) {
        index_[keys_[indexed_].stored] = keys_[indexed_];
    }
    const auto found = index_.find(stored);
    if (found == index_.end()) {
        return {};
    }
    return std::span<const Match>(matches_).subspan(found->second.first, found->second.count);
}

}  // namespace regvex
