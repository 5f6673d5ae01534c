#pragma once
// What a search remembers of the stored keys it has walked, so that a key reached again
// through another root, a link or a merged view answers its value matches without its
// values being read again.
//
// A region is the part of a walk below a key whose stored name does not follow from its
// parent's (a root, a link's target, the other side of a merged view). Once the walk has
// left a region's root, every stored key below that root has had its values read, except
// where a hole says otherwise: a key whose values were not all read (an enumeration that
// failed, a root whose values the walk skips) or a part whose keys were not all reached
// (a key that could not be opened or named, a listing that failed, a subkey that is
// stored elsewhere than its name says, so that the key stored under that name was not
// walked). Only matches are kept, by the stored name of their key: what is held is
// bounded by the findings plus one entry per region and per hole.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace regvex {

class StoredKeyRecord {
  public:
    // One match as the owner is told it again. The texts live as long as the record.
    struct Match {
        std::int32_t kind = 0;
        std::string_view value_name;
        std::string_view text;
    };

    // Where one open key stands. Filled by Identify for each key the walk reads values of.
    struct KeyState {
        bool known = false;  // the backend named the stored key
        std::string stored;
        bool region_root = false;
        // A completed region's root at or above the key, and a hole over all below it at or
        // above the key.
        bool completed_above = false;
        bool hole_above = false;
        // Something is marked at or below the key (a region's root or a hole); where
        // nothing is, the keys below need not be looked up.
        bool marks_below = false;
        bool covered = false;  // its value matches may be answered from the record

        void Forget() {
            known = false;
            region_root = false;
            completed_above = false;
            hole_above = false;
            marks_below = false;
            covered = false;
        }
    };

    void Clear();

    // Places `self` (already named when self.known) below `parent` (a KeyState, or null
    // for a key the walk starts at), where the walk reached it as subkey `name`.
    void Identify(const KeyState* parent, std::string_view name, KeyState& self) const;

    // A key that the walk reached as `name` below `parent` but could not name, or found
    // stored elsewhere: the key stored under that name was not walked there.
    void NoteUnwalkedChild(const KeyState& parent, std::string_view name);
    // Not every value of this key was read.
    void NoteValuesUnread(const std::string& stored) { Mark(stored).values_unread = true; }
    // Not every key below this one was reached.
    void NoteKeysUnreached(const std::string& stored) { Mark(stored).keys_unreached = true; }
    void CompleteRegion(const std::string& root) { Mark(root).completed = true; }

    // Adds a match read from a stored key's values; the matches of one reading of a key
    // come together, ended by EndKey. Where a key was read more than once (never after
    // its region was complete), the last reading that found anything answers.
    void AddMatch(std::string_view stored, std::int32_t kind, std::string_view value_name,
                  std::string_view text);
    // The matches of a covered key; none when none were found.
    std::span<const Match> MatchesOf(const std::string& stored);

    // Keys with matches, and names marked (with the names above each mark).
    std::size_t EntryCount() const { return keys_.size() + marks_.size(); }
    // The reading of one key's values is over: the next match is another key's.
    void EndKey() { key_open_ = false; }

  private:
    // Lets the sets be asked with a string_view, allocating nothing.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const {
            return std::hash<std::string_view>{}(name);
        }
    };
    template <class Mapped>
    using NameMap = std::unordered_map<std::string, Mapped, NameHash, std::equal_to<>>;

    struct Marks {
        bool completed = false;       // a region rooted here was walked to its end
        bool values_unread = false;   // a hole: this key's values
        bool keys_unreached = false;  // a hole: this key and all below it
        bool below = false;           // this or a key below it is marked
    };
    // The marks of a name, marking each name above it as having marks below.
    Marks& Mark(const std::string& stored);

    // Text that never moves once stored: matches keep views into it.
    std::string_view Keep(std::string_view text);

    // Matches in the order read, and the keys they were read from: an index of the keys is
    // made only when a key is first answered, so a walk that reaches no key twice pays for
    // nothing but keeping the texts.
    struct KeyMatches {
        std::string_view stored;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };
    std::vector<Match> matches_;
    std::vector<KeyMatches> keys_;
    bool key_open_ = false;
    std::unordered_map<std::string_view, KeyMatches> index_;
    std::size_t indexed_ = 0;
    std::vector<std::unique_ptr<char[]>> blocks_;
    char* block_next_ = nullptr;
    std::size_t block_left_ = 0;
    NameMap<Marks> marks_;
    std::string scratch_;
};

}  // namespace regvex
