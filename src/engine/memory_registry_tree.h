#pragma once
// The keys and values that MemoryRegistry holds, and how one is found among many.
//
// Names compare without regard to case. Every key and value keeps the hash of its
// upper-cased name; a key with only a few subkeys or values is searched through, one
// with more finds them through an index of those hashes. Subkeys are appended as they
// come and put in order only when they are enumerated, so that neither adding a key
// nor adding a value ever moves its siblings.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace regvex::memory_tree {

// The hash under which a name is found: that of its upper-cased form.
std::uint32_t NameHash(std::string_view upper);

// Positions of items in a vector, found by the hashes of their names: open addressing
// with linear probing, kept at most half full.
class PositionIndex {
  public:
    // Makes room for `count` entries, so that inserting up to that many allocates nothing.
    void Reserve(std::size_t count);
    // There must be room (see Reserve).
    void Insert(std::uint32_t hash, std::uint32_t position);
    void Erase(std::uint32_t hash, std::uint32_t position);
    void Clear();

    // The first position of this hash for which `matches` answers true.
    template <class Matches>
    std::optional<std::uint32_t> Find(std::uint32_t hash, Matches matches) const {
        if (slots_.empty()) {
            return std::nullopt;
        }
        for (std::size_t at = hash & Mask(); slots_[at].position_plus_one != 0;
             at = (at + 1) & Mask()) {
            if (slots_[at].hash == hash && matches(slots_[at].position_plus_one - 1)) {
                return slots_[at].position_plus_one - 1;
            }
        }
        return std::nullopt;
    }

  private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t position_plus_one = 0;  // 0: free
    };
    std::size_t Mask() const { return slots_.size() - 1; }
    void Place(Slot slot);

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

// A value: its name and data in one block of memory.
class Value {
  public:
    Value() = default;
    Value(std::string_view name, std::uint32_t hash, bool name_fits);

    std::string_view name() const { return {bytes_.get(), name_size_}; }
    std::span<const std::uint8_t> data() const {
        return {reinterpret_cast<const std::uint8_t*>(bytes_.get()) + name_size_, data_size_};
    }
    std::uint32_t type() const { return type_; }
    std::uint32_t hash() const { return hash_; }
    bool name_fits() const { return name_fits_; }
    bool data_fits() const { return data_fits_; }
    bool live() const { return live_; }

    // Keeps the name; `data_fits` tells whether the scan's buffer takes the data.
    void SetData(std::uint32_t type, std::span<const std::uint8_t> data, bool data_fits);
    void Kill() { live_ = false; }

  private:
    std::unique_ptr<char[]> bytes_;
    std::uint32_t name_size_ = 0;
    std::uint32_t data_size_ = 0;
    std::uint32_t type_ = 0;
    std::uint32_t hash_ = 0;
    bool name_fits_ = true;
    bool data_fits_ = true;
    bool live_ = true;
};

struct Node {
    Node() = default;
    Node(std::string_view key_name, std::uint32_t name_hash, Node* parent_node);
    // Frees the subtree without recursion: a tree can be deeper than the stack.
    ~Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // `upper` is the upper-cased `key_name`, `hash` its NameHash; `scratch` is reused.
    Node* FindChild(std::string_view key_name, std::string_view upper, std::uint32_t hash,
                    std::string& scratch) const;
    // Appends a subkey whose name is not there yet. Nothing changes when it throws.
    Node* AddChild(std::unique_ptr<Node> child, std::string_view upper, std::string& scratch);
    std::unique_ptr<Node> RemoveChild(const Node* child);
    // Puts back a subkey that RemoveChild took out, with no change since in between. It
    // allocates nothing: the room it had is still there.
    void ReattachChild(std::unique_ptr<Node> child);
    // Puts the subkeys in the order of their upper-cased names, as Windows lists them.
    void SortChildren();

    // Live values only. Answers the position in `values`.
    std::optional<std::uint32_t> FindValue(std::string_view value_name, std::string_view upper,
                                           std::uint32_t hash, std::string& scratch) const;
    // Appends a value whose name is not there yet. Nothing changes when it throws.
    std::uint32_t AddValue(Value value);
    // Leaves a dead entry at `position` so that later positions stay where they are.
    Value RemoveValue(std::uint32_t position);
    // Puts a value back where RemoveValue took it from.
    void RestoreValue(std::uint32_t position, Value value);
    // Drops the dead entries; positions change.
    void CompactValues();
    // The live value `index` in creation order, or null past the last.
    const Value* LiveValue(std::uint32_t index);

    std::string name;
    Node* parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;  // in order only when children_sorted
    std::vector<Value> values;                    // in creation order, dead ones included
    std::uint32_t hash = 0;
    // Which recording of changes created the key (MemoryRegistry's undo), 0 for none, and
    // 1 + the place of the record of its creation there, 0 for none.
    std::uint32_t born = 0;
    std::uint32_t undo_record = 0;
    std::uint32_t dead_values = 0;
    std::uint16_t depth = 0;  // levels below the root
    bool children_sorted = true;
    bool deny_full_access = false;
    bool deny_value_deletion = false;

  private:
    struct Indexes {
        PositionIndex children;
        PositionIndex values;
    };
    Indexes& EnsureIndexes();
    void IndexChildren();
    void IndexValues();

    // Present once the key has had more subkeys or values than are worth searching.
    std::unique_ptr<Indexes> indexes_;
    bool children_indexed_ = false;
    bool values_indexed_ = false;
};

}  // namespace regvex::memory_tree
