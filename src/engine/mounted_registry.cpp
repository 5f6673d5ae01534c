#include "engine/mounted_registry.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "text/upper_case.h"

namespace regvex {

namespace {

// Links are followed at most this deep, so that a circle ends.
constexpr int kMaxLinkDepth = 16;

std::vector<std::string_view> SplitNames(std::string_view path) {
    std::vector<std::string_view> names;
    std::size_t start = 0;
    while (start < path.size()) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        if (end > start) {
            names.push_back(path.substr(start, end - start));
        }
        start = end + 1;
    }
    return names;
}

std::string JoinNames(const std::vector<std::string_view>& names, std::size_t from) {
    std::string path;
    for (std::size_t i = from; i < names.size(); ++i) {
        if (!path.empty()) {
            path += '\\';
        }
        path.append(names[i]);
    }
    return path;
}

std::string Append(std::string_view base, std::string_view rest) {
    if (base.empty() || rest.empty()) {
        return std::string(base.empty() ? rest : base);
    }
    std::string path(base);
    path += '\\';
    path.append(rest);
    return path;
}

int CompareNames(std::string_view a, std::string_view b) {
    return text::CompareUtf16Order(text::UpperCase(a), text::UpperCase(b));
}

}  // namespace

struct MountedRegistry::Impl {
    enum class Kind { kMount, kLink, kMerge };
    struct Entry {
        Kind kind;
        RootKeyHandle root;
        std::vector<std::string> names;  // as given
        std::vector<std::string> upper;  // upper-cased, for comparing
        Registry* backend = nullptr;     // mounts
        RegistryPlace first;             // mounts: the backend's key; links: the target;
                                         // merges: the upper side
        RegistryPlace second;            // merges: the lower side
    };

    // One backend key behind an open key; several for a merged key, upper side first.
    struct Layer {
        Registry* backend;
        KeyHandle key;
        // Where in the backend: the key's name when the backend cannot name it.
        RootKeyHandle root = kHkeyAll;
        std::string path;
    };
    struct OpenState {
        std::vector<Layer> layers;
        // Names that mounts, links and merges put directly below the key.
        std::vector<std::string> placed_names;
        // The subkeys, once listing them needs more than one backend's own order.
        std::optional<std::vector<std::string>> listing;
        RegStatus listing_end = reg::kNoMoreItems;
    };

    static Entry MakeEntry(Kind kind, const RegistryPlace& at) {
        Entry entry{kind, at.root, {}, {}, nullptr, {}, {}};
        for (const std::string_view name : SplitNames(at.path)) {
            entry.names.emplace_back(name);
            entry.upper.push_back(text::UpperCase(name));
        }
        return entry;
    }

    std::vector<Entry> entries;
    std::vector<std::unique_ptr<OpenState>> handles;  // handle i + 1
    std::vector<KeyHandle> free_handles;

    static bool Below(const std::vector<std::string>& prefix,
                      const std::vector<std::string>& upper) {
        return prefix.size() <= upper.size() &&
               std::equal(prefix.begin(), prefix.end(), upper.begin());
    }

    // The entry that governs a place: the one at the longest path at or above it.
    const Entry* Governing(RootKeyHandle root, const std::vector<std::string>& upper) const {
        const Entry* best = nullptr;
        for (const Entry& entry : entries) {
            if (entry.root == root && Below(entry.upper, upper) &&
                (best == nullptr || entry.upper.size() > best->upper.size())) {
                best = &entry;
            }
        }
        return best;
    }

    // Collects the names that entries put below the place, and says whether any entry
    // lies below it (which makes the place exist).
    bool PlacedBelow(RootKeyHandle root, const std::vector<std::string>& upper,
                     std::vector<std::string>& names) const {
        bool any = false;
        for (const Entry& entry : entries) {
            if (entry.root != root || entry.upper.size() <= upper.size() ||
                !Below(upper, entry.upper)) {
                continue;
            }
            any = true;
            const std::string& name = entry.names[upper.size()];
            const bool known = std::any_of(names.begin(), names.end(), [&](const std::string& n) {
                return text::UpperCase(n) == entry.upper[upper.size()];
            });
            if (!known) {
                names.push_back(name);
            }
        }
        return any;
    }

    RegStatus Open(RootKeyHandle root, std::string_view path, AccessMask access, bool create,
                   int depth, OpenState& state) {
        if (depth > kMaxLinkDepth) {
            return reg::kFileNotFound;
        }
        const std::vector<std::string_view> names = SplitNames(path);
        std::vector<std::string> upper;
        upper.reserve(names.size());
        for (const std::string_view name : names) {
            upper.push_back(text::UpperCase(name));
        }
        const bool placed = PlacedBelow(root, upper, state.placed_names);
        const Entry* entry = Governing(root, upper);

        RegStatus status = reg::kFileNotFound;
        if (entry != nullptr) {
            const std::string rest = JoinNames(names, entry->upper.size());
            switch (entry->kind) {
                case Kind::kLink:
                    return Open(entry->first.root, Append(entry->first.path, rest), access, create,
                                depth + 1, state);
                case Kind::kMerge: {
                    const RegStatus over = Open(entry->first.root, Append(entry->first.path, rest),
                                                access, create, depth + 1, state);
                    const RegStatus under =
                        Open(entry->second.root, Append(entry->second.path, rest), access, false,
                             depth + 1, state);
                    status = over == reg::kSuccess || under == reg::kSuccess ? reg::kSuccess
                             : over != reg::kFileNotFound                    ? over
                                                                             : under;
                    break;
                }
                case Kind::kMount: {
                    KeyHandle key = 0;
                    const std::string inner = Append(entry->first.path, rest);
                    status = create
                                 ? entry->backend->CreateKey(entry->first.root, inner, access, key)
                                 : entry->backend->OpenKey(entry->first.root, inner, access, key);
                    if (status == reg::kSuccess) {
                        state.layers.push_back(
                            Layer{entry->backend, key, entry->first.root, inner});
                    }
                    break;
                }
            }
        }
        // A root always exists, and so does every key on the way to an entry.
        if (status != reg::kSuccess && (names.empty() || placed)) {
            return reg::kSuccess;
        }
        return status;
    }

    // Lists the subkeys of a key whose listing is not one backend's own.
    void BuildListing(OpenState& state) {
        std::vector<std::string> listing;
        RegStatus end = reg::kNoMoreItems;
        const bool merged = state.layers.size() > 1;
        for (const Layer& layer : state.layers) {
            std::string name;
            RegStatus status = reg::kSuccess;
            for (std::uint32_t i = 0;
                 (status = layer.backend->EnumKey(layer.key, i, name)) == reg::kSuccess; ++i) {
                if (!merged ||
                    std::none_of(listing.begin(), listing.end(), [&](const std::string& n) {
                        return CompareNames(n, name) == 0;
                    })) {
                    listing.push_back(name);
                }
            }
            if (status != reg::kNoMoreItems && end == reg::kNoMoreItems) {
                end = status;
            }
        }
        if (merged) {
            std::stable_sort(
                listing.begin(), listing.end(),
                [](const std::string& a, const std::string& b) { return CompareNames(a, b) < 0; });
        }
        // Each placed name goes where Windows would sort it among the backend's names.
        for (const std::string& placed : state.placed_names) {
            if (std::any_of(listing.begin(), listing.end(),
                            [&](const std::string& n) { return CompareNames(n, placed) == 0; })) {
                continue;
            }
            const auto at = std::find_if(listing.begin(), listing.end(), [&](const std::string& n) {
                return CompareNames(n, placed) > 0;
            });
            listing.insert(at, placed);
        }
        state.listing = std::move(listing);
        state.listing_end = end;
    }

    OpenState* Lookup(KeyHandle key) const {
        if (key == 0 || key > handles.size()) {
            return nullptr;
        }
        return handles[key - 1].get();
    }

    // The layer that answers for the key's values: the upper side where it exists.
    const Layer* ValueLayer(KeyHandle key) const {
        const OpenState* state = Lookup(key);
        return state == nullptr || state->layers.empty() ? nullptr : &state->layers.front();
    }

    KeyHandle Adopt(std::unique_ptr<OpenState> state) {
        if (!free_handles.empty()) {
            const KeyHandle key = free_handles.back();
            free_handles.pop_back();
            handles[key - 1] = std::move(state);
            return key;
        }
        handles.push_back(std::move(state));
        return handles.size();
    }

    RegStatus OpenOrCreate(RootKeyHandle root, std::string_view path, AccessMask access,
                           bool create, KeyHandle& key) {
        key = 0;
        auto state = std::make_unique<OpenState>();
        const RegStatus status = Open(root, path, access, create, 0, *state);
        if (status != reg::kSuccess) {
            for (const Layer& layer : state->layers) {
                layer.backend->CloseKey(layer.key);
            }
            return status;
        }
        key = Adopt(std::move(state));
        return reg::kSuccess;
    }
};

MountedRegistry::MountedRegistry() : impl_(std::make_unique<Impl>()) {}

MountedRegistry::~MountedRegistry() {
    for (std::size_t i = 0; i < impl_->handles.size(); ++i) {
        if (impl_->handles[i]) {
            CloseKey(i + 1);
        }
    }
}

void MountedRegistry::Mount(const RegistryPlace& at, Registry& backend, const RegistryPlace& from) {
    Impl::Entry entry = Impl::MakeEntry(Impl::Kind::kMount, at);
    entry.backend = &backend;
    entry.first = from;
    impl_->entries.push_back(std::move(entry));
}

void MountedRegistry::Link(const RegistryPlace& at, const RegistryPlace& target) {
    Impl::Entry entry = Impl::MakeEntry(Impl::Kind::kLink, at);
    entry.first = target;
    impl_->entries.push_back(std::move(entry));
}

void MountedRegistry::Merge(const RegistryPlace& at, const RegistryPlace& over,
                            const RegistryPlace& under) {
    Impl::Entry entry = Impl::MakeEntry(Impl::Kind::kMerge, at);
    entry.first = over;
    entry.second = under;
    impl_->entries.push_back(std::move(entry));
}

RegStatus MountedRegistry::OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                   KeyHandle& key) {
    return impl_->OpenOrCreate(root, path, access, false, key);
}

RegStatus MountedRegistry::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                     KeyHandle& key) {
    return impl_->OpenOrCreate(root, path, access, true, key);
}

RegStatus MountedRegistry::CloseKey(KeyHandle key) {
    Impl::OpenState* state = impl_->Lookup(key);
    if (state == nullptr) {
        return reg::kInvalidHandle;
    }
    for (const Impl::Layer& layer : state->layers) {
        layer.backend->CloseKey(layer.key);
    }
    impl_->handles[key - 1].reset();
    impl_->free_handles.push_back(key);
    return reg::kSuccess;
}

RegStatus MountedRegistry::EnumKey(KeyHandle key, std::uint32_t index, std::string& name) {
    Impl::OpenState* state = impl_->Lookup(key);
    if (state == nullptr) {
        return reg::kInvalidHandle;
    }
    // Most keys lie inside one backend with nothing placed below them: its own answer,
    // too-long names included, is the answer.
    if (state->layers.size() == 1 && state->placed_names.empty()) {
        return state->layers.front().backend->EnumKey(state->layers.front().key, index, name);
    }
    if (!state->listing) {
        impl_->BuildListing(*state);
    }
    if (index >= state->listing->size()) {
        return state->listing_end;
    }
    name = (*state->listing)[index];
    return reg::kSuccess;
}

RegStatus MountedRegistry::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    if (impl_->Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    const Impl::Layer* layer = impl_->ValueLayer(key);
    return layer == nullptr ? reg::kNoMoreItems
                            : layer->backend->EnumValue(layer->key, index, value);
}

RegStatus MountedRegistry::ReadValue(KeyHandle key, std::uint32_t index, std::string& name,
                                     std::uint32_t& type, std::vector<std::uint8_t>& data) {
    if (impl_->Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    const Impl::Layer* layer = impl_->ValueLayer(key);
    return layer == nullptr ? reg::kNoMoreItems
                            : layer->backend->ReadValue(layer->key, index, name, type, data);
}

RegStatus MountedRegistry::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                      std::vector<std::uint8_t>& data) {
    if (impl_->Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    const Impl::Layer* layer = impl_->ValueLayer(key);
    return layer == nullptr ? reg::kFileNotFound
                            : layer->backend->QueryValue(layer->key, name, type, data);
}

RegStatus MountedRegistry::SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                                    std::span<const std::uint8_t> data) {
    if (impl_->Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    const Impl::Layer* layer = impl_->ValueLayer(key);
    return layer == nullptr ? reg::kAccessDenied
                            : layer->backend->SetValue(layer->key, name, type, data);
}

RegStatus MountedRegistry::DeleteValue(KeyHandle key, std::string_view name) {
    if (impl_->Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    const Impl::Layer* layer = impl_->ValueLayer(key);
    return layer == nullptr ? reg::kAccessDenied : layer->backend->DeleteValue(layer->key, name);
}

}  // namespace regvex

namespace regvex {

bool MountedRegistry::StoredKeyName(KeyHandle key, std::string& name) {
    // A key no backend provides (one on the way to a mount) is no stored key. Otherwise it
    // is the key that answers for the values, told apart by which backend holds it and
    // named by the backend, or else by its path there: a backend without links reaches
    // each of its keys by one path only.
    const Impl::Layer* layer = impl_->ValueLayer(key);
    if (layer == nullptr) {
        return false;
    }
    std::size_t backend = 0;
    while (impl_->entries[backend].backend != layer->backend) {
        ++backend;
    }
    if (layer->backend->StoredKeyName(layer->key, name)) {
        name.insert(0, std::to_string(backend) + ":");
        return true;
    }
    name = std::to_string(backend) + "|" + RootKeyName(layer->root);
    if (!layer->path.empty()) {
        name += '\\';
        name += layer->path;
    }
    return true;
}

}  // namespace regvex
