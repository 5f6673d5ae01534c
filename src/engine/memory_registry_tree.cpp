#include "engine/memory_registry_tree.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/upper_case.h"

namespace regvex::memory_tree {

namespace {

// Up to this many subkeys (or values) a key is searched through; beyond, it is indexed.
constexpr std::size_t kSearchedItems = 8;

std::unique_ptr<char[]> NewBlock(std::size_t size) {
    return size == 0 ? nullptr : std::unique_ptr<char[]>(new char[size]);
}

bool SameName(std::string_view stored, std::string_view name, std::string_view upper,
              std::string& scratch) {
    if (stored == name) {
        return true;
    }
    text::UpperCaseInto(stored, scratch);
    return scratch == upper;
}

}  // namespace

std::uint32_t NameHash(std::string_view upper) {
    const std::uint64_t hash = std::hash<std::string_view>{}(upper);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

void PositionIndex::Reserve(std::size_t count) {
    std::size_t wanted = 16;
    while (wanted < 2 * count) {
        wanted *= 2;
    }
    if (slots_.size() >= wanted) {
        return;
    }
    std::vector<Slot> old(wanted);
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (slot.position_plus_one != 0) {
            Place(slot);
        }
    }
}

void PositionIndex::Place(Slot slot) {
    std::size_t at = slot.hash & Mask();
    while (slots_[at].position_plus_one != 0) {
        at = (at + 1) & Mask();
    }
    slots_[at] = slot;
}

void PositionIndex::Insert(std::uint32_t hash, std::uint32_t position) {
    Place(Slot{hash, position + 1});
    ++count_;
}

void PositionIndex::Erase(std::uint32_t hash, std::uint32_t position) {
    if (slots_.empty()) {
        return;
    }
    std::size_t hole = hash & Mask();
    while (slots_[hole].position_plus_one != position + 1) {
        if (slots_[hole].position_plus_one == 0) {
            return;
        }
        hole = (hole + 1) & Mask();
    }
    // Moves back each later entry of the run that may sit in the hole, so that no search
    // stops early at it.
    for (std::size_t at = (hole + 1) & Mask(); slots_[at].position_plus_one != 0;
         at = (at + 1) & Mask()) {
        const std::size_t home = slots_[at].hash & Mask();
        const bool home_after_hole =
            hole <= at ? (home > hole && home <= at) : (home > hole || home <= at);
        if (!home_after_hole) {
            slots_[hole] = slots_[at];
            hole = at;
        }
    }
    slots_[hole] = Slot{};
    --count_;
}

void PositionIndex::Clear() {
    std::fill(slots_.begin(), slots_.end(), Slot{});
    count_ = 0;
}

Value::Value(std::string_view name, std::uint32_t hash, bool name_fits)
    : bytes_(NewBlock(name.size())),
      name_size_(static_cast<std::uint32_t>(name.size())),
      hash_(hash),
      name_fits_(name_fits) {
    if (!name.empty()) {
        std::memcpy(bytes_.get(), name.data(), name.size());
    }
}

void Value::SetData(std::uint32_t type, std::span<const std::uint8_t> data, bool data_fits) {
    std::unique_ptr<char[]> bytes = NewBlock(name_size_ + data.size());
    if (name_size_ != 0) {
        std::memcpy(bytes.get(), bytes_.get(), name_size_);
    }
    if (!data.empty()) {
        std::memcpy(bytes.get() + name_size_, data.data(), data.size());
    }
    bytes_ = std::move(bytes);
    data_size_ = static_cast<std::uint32_t>(data.size());
    type_ = type;
    data_fits_ = data_fits;
}

Node::Node(std::string_view key_name, std::uint32_t name_hash, Node* parent_node)
    : name(key_name),
      parent(parent_node),
      hash(name_hash),
      depth(parent_node == nullptr ? std::uint16_t{0}
                                   : static_cast<std::uint16_t>(parent_node->depth + 1)) {}

Node::~Node() {
    // Down to a leaf, free it, and on from its parent: no recursion and no allocation.
    Node* node = this;
    while (true) {
        while (!node->children.empty()) {
            node = node->children.back().get();
        }
        if (node == this) {
            return;
        }
        Node* const up = node->parent;
        up->children.pop_back();
        node = up;
    }
}

Node::Indexes& Node::EnsureIndexes() {
    if (!indexes_) {
        indexes_ = std::make_unique<Indexes>();
    }
    return *indexes_;
}

void Node::IndexChildren() {
    PositionIndex& index = indexes_->children;
    index.Clear();
    index.Reserve(children.size());
    for (std::size_t i = 0; i < children.size(); ++i) {
        index.Insert(children[i]->hash, static_cast<std::uint32_t>(i));
    }
    children_indexed_ = true;
}

void Node::IndexValues() {
    PositionIndex& index = indexes_->values;
    index.Clear();
    index.Reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].live()) {
            index.Insert(values[i].hash(), static_cast<std::uint32_t>(i));
        }
    }
    values_indexed_ = true;
}

Node* Node::FindChild(std::string_view key_name, std::string_view upper, std::uint32_t name_hash,
                      std::string& scratch) const {
    const auto matches = [&](std::size_t position) {
        const Node& child = *children[position];
        return child.hash == name_hash && SameName(child.name, key_name, upper, scratch);
    };
    if (children_indexed_) {
        const auto found = indexes_->children.Find(name_hash, matches);
        return found ? children[*found].get() : nullptr;
    }
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (matches(i)) {
            return children[i].get();
        }
    }
    return nullptr;
}

Node* Node::AddChild(std::unique_ptr<Node> child, std::string_view upper, std::string& scratch) {
    const std::size_t position = children.size();
    const bool indexed = children_indexed_ || position + 1 > kSearchedItems;
    // Everything that may throw comes before the first change.
    if (indexed) {
        EnsureIndexes().children.Reserve(position + 1);
    }
    bool still_sorted = children_sorted;
    if (still_sorted && position > 0) {
        text::UpperCaseInto(children.back()->name, scratch);
        still_sorted = text::CompareUtf16Order(scratch, upper) < 0;
    }
    Node* const added = child.get();
    children.push_back(std::move(child));
    children_sorted = still_sorted;
    if (indexed) {
        if (children_indexed_) {
            indexes_->children.Insert(added->hash, static_cast<std::uint32_t>(position));
        } else {
            IndexChildren();
        }
    }
    return added;
}

std::unique_ptr<Node> Node::RemoveChild(const Node* child) {
    const auto is_child = [&](std::size_t position) { return children[position].get() == child; };
    if (!children_indexed_) {
        // A few siblings: closing the gap keeps their order.
        const auto it = std::find_if(children.begin(), children.end(), [&](const auto& candidate) {
            return candidate.get() == child;
        });
        if (it == children.end()) {
            return nullptr;
        }
        std::unique_ptr<Node> removed = std::move(*it);
        children.erase(it);
        return removed;
    }
    const auto found = indexes_->children.Find(child->hash, is_child);
    if (!found) {
        return nullptr;
    }
    // Many siblings: the last one fills the gap, and the order is restored when needed.
    const std::uint32_t position = *found;
    const auto last = static_cast<std::uint32_t>(children.size() - 1);
    std::unique_ptr<Node> removed = std::move(children[position]);
    indexes_->children.Erase(removed->hash, position);
    if (position != last) {
        indexes_->children.Erase(children[last]->hash, last);
        indexes_->children.Insert(children[last]->hash, position);
        children[position] = std::move(children[last]);
        children_sorted = false;
    }
    children.pop_back();
    return removed;
}

void Node::ReattachChild(std::unique_ptr<Node> child) {
    const std::uint32_t child_hash = child->hash;
    children.push_back(std::move(child));
    children_sorted = children.size() == 1;
    if (children_indexed_) {
        indexes_->children.Insert(child_hash, static_cast<std::uint32_t>(children.size() - 1));
    }
}

void Node::SortChildren() {
    if (children_sorted) {
        return;
    }
    std::vector<std::pair<std::string, std::uint32_t>> keyed;
    keyed.reserve(children.size());
    for (std::size_t i = 0; i < children.size(); ++i) {
        keyed.emplace_back(text::UpperCase(children[i]->name), static_cast<std::uint32_t>(i));
    }
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        return text::CompareUtf16Order(a.first, b.first) < 0;
    });
    std::vector<std::unique_ptr<Node>> ordered;
    ordered.reserve(children.size());
    for (const auto& entry : keyed) {
        ordered.push_back(std::move(children[entry.second]));
    }
    children = std::move(ordered);
    children_sorted = true;
    if (children_indexed_) {
        IndexChildren();
    }
}

std::optional<std::uint32_t> Node::FindValue(std::string_view value_name, std::string_view upper,
                                             std::uint32_t name_hash, std::string& scratch) const {
    const auto matches = [&](std::size_t position) {
        const Value& value = values[position];
        return value.live() && value.hash() == name_hash &&
               SameName(value.name(), value_name, upper, scratch);
    };
    if (values_indexed_) {
        return indexes_->values.Find(name_hash, matches);
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (matches(i)) {
            return static_cast<std::uint32_t>(i);
        }
    }
    return std::nullopt;
}

std::uint32_t Node::AddValue(Value value) {
    const std::size_t position = values.size();
    const bool indexed = values_indexed_ || position + 1 > kSearchedItems;
    if (indexed) {
        EnsureIndexes().values.Reserve(position + 1);
    }
    const std::uint32_t value_hash = value.hash();
    values.push_back(std::move(value));
    if (indexed) {
        if (values_indexed_) {
            indexes_->values.Insert(value_hash, static_cast<std::uint32_t>(position));
        } else {
            IndexValues();
        }
    }
    return static_cast<std::uint32_t>(position);
}

Value Node::RemoveValue(std::uint32_t position) {
    Value removed = std::move(values[position]);
    values[position] = Value();
    values[position].Kill();
    ++dead_values;
    if (values_indexed_) {
        indexes_->values.Erase(removed.hash(), position);
    }
    return removed;
}

void Node::RestoreValue(std::uint32_t position, Value value) {
    const bool was_dead = !values[position].live();
    const std::uint32_t value_hash = value.hash();
    values[position] = std::move(value);
    if (was_dead) {
        --dead_values;
        if (values_indexed_) {
            indexes_->values.Insert(value_hash, position);
        }
    }
}

void Node::CompactValues() {
    if (dead_values == 0) {
        return;
    }
    std::erase_if(values, [](const Value& value) { return !value.live(); });
    dead_values = 0;
    if (values_indexed_) {
        IndexValues();
    }
}

const Value* Node::LiveValue(std::uint32_t index) {
    if (dead_values == 0) {
        return index < values.size() ? &values[index] : nullptr;
    }
    for (const Value& value : values) {
        if (value.live() && index-- == 0) {
            return &value;
        }
    }
    return nullptr;
}

}  // namespace regvex::memory_tree
