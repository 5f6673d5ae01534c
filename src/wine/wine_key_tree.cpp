#include "wine/wine_key_tree.h"

#include <algorithm>

#include "wine/wine_text.h"

namespace regvex::wine {

namespace {

constexpr int kMaxLinksFollowed = 16;
constexpr std::string_view kKernelRoot = "\\REGISTRY\\";

bool StartsWithCaseless(std::string_view text, std::string_view upper_prefix) {
    if (text.size() < upper_prefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < upper_prefix.size(); ++i) {
        char c = text[i];
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
        if (c != upper_prefix[i]) {
            return false;
        }
    }
    return true;
}

// Wine's name order form of `name`, into a buffer kept for the thread.
const std::u16string& OrderForm(std::string_view name) {
    thread_local std::u16string form;
    form = WineOrderForm(name);
    return form;
}

// One step of a path: the child `name` of `key`, with a link followed.
const WineKey* Step(const WineKey& top, const WineKey& key, std::string_view name, int& links) {
    const WineKey* child = key.FindChild(name);
    if (child == nullptr || !child->link) {
        return child;
    }
    const std::optional<std::string> target = child->LinkTarget();
    if (++links > kMaxLinksFollowed || !target || !StartsWithCaseless(*target, kKernelRoot)) {
        return nullptr;
    }
    const WineKey* reached = &top;
    const std::string_view rest = std::string_view(*target).substr(kKernelRoot.size());
    for (std::size_t start = 0; reached != nullptr && start <= rest.size();) {
        const std::size_t end = std::min(rest.find('\\', start), rest.size());
        if (end > start) {
            reached = Step(top, *reached, rest.substr(start, end - start), links);
        }
        start = end + 1;
    }
    return reached;
}

}  // namespace

WineKey& WineKey::Child(std::string_view child_name) {
    const std::u16string& form = OrderForm(child_name);
    auto found = children.find(form);
    if (found == children.end()) {
        auto key = std::make_unique<WineKey>();
        key->name = std::string(child_name);
        key->order_form = form;
        key->parent = this;
        found = children.emplace(form, std::move(key)).first;
    }
    return *found->second;
}

const WineKey* WineKey::FindChild(std::string_view child_name) const {
    const std::u16string& form = OrderForm(child_name);
    const auto found = std::lower_bound(
        ordered.begin(), ordered.end(), form,
        [](const WineKey* key, const std::u16string& wanted) { return key->order_form < wanted; });
    return found != ordered.end() && (*found)->order_form == form ? *found : nullptr;
}

const WineValue* WineKey::FindValue(std::string_view value_name) const {
    const std::u16string& form = OrderForm(value_name);
    const auto found = std::lower_bound(values.begin(), values.end(), form,
                                        [](const WineValue& value, const std::u16string& wanted) {
                                            return value.order_form < wanted;
                                        });
    return found != values.end() && found->order_form == form ? &*found : nullptr;
}

void WineKey::SetValue(WineValue value) {
    value.order_form = WineOrderForm(value.name);
    values.push_back(std::move(value));
}

void WineKey::Finish() {
    // Stable, so that of values set twice the later one's data wins below.
    std::stable_sort(values.begin(), values.end(), [](const WineValue& a, const WineValue& b) {
        return a.order_form < b.order_form;
    });
    std::vector<WineValue> kept;
    kept.reserve(values.size());
    for (WineValue& value : values) {
        if (!kept.empty() && kept.back().order_form == value.order_form) {
            kept.back().type = value.type;
            kept.back().data = std::move(value.data);
        } else {
            kept.push_back(std::move(value));
        }
    }
    values = std::move(kept);
    ordered.clear();
    ordered.reserve(children.size());
    for (auto& [form, child] : children) {
        child->Finish();
        ordered.push_back(child.get());
    }
}

std::string WineKey::Path() const {
    std::vector<const WineKey*> keys;
    for (const WineKey* key = this; key->parent != nullptr; key = key->parent) {
        keys.push_back(key);
    }
    std::string path;
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        if (!path.empty()) {
            path.push_back('\\');
        }
        path += (*key)->name;
    }
    return path;
}

std::optional<std::string> WineKey::LinkTarget() const {
    const WineValue* value = FindValue("SymbolicLinkValue");
    if (value == nullptr) {
        return std::nullopt;
    }
    return Utf8FromUtf16Bytes(
        std::string_view(reinterpret_cast<const char*>(value->data.data()), value->data.size()));
}

const WineKey* ResolveWinePath(const WineKey& top, std::string_view path) {
    return WinePathResolver(top).Resolve(path);
}

const WineKey* FindWineSubkey(const WineKey& key, std::string_view path) {
    const WineKey* reached = &key;
    for (std::size_t start = 0; reached != nullptr && start <= path.size();) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        if (end > start) {
            reached = reached->FindChild(path.substr(start, end - start));
        }
        start = end + 1;
    }
    return reached;
}

const WineKey* WinePathResolver::Resolve(std::string_view path) {
    // The names this path shares with the last one, whole.
    std::size_t shared = 0;
    const std::size_t common = std::min(path.size(), last_path_.size());
    while (shared < reached_.size() && reached_[shared].first <= common &&
           path.compare(0, reached_[shared].first, last_path_, 0, reached_[shared].first) == 0 &&
           (reached_[shared].first == path.size() || path[reached_[shared].first] == '\\')) {
        ++shared;
    }
    reached_.resize(shared);
    last_path_.assign(path);
    const WineKey* key = shared == 0 ? &top_ : reached_.back().second;
    std::size_t start = shared == 0 ? 0 : reached_.back().first + 1;
    int links = 0;
    while (key != nullptr && start <= path.size()) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        if (end > start) {
            key = Step(top_, *key, path.substr(start, end - start), links);
            if (key != nullptr) {
                reached_.emplace_back(end, key);
            }
        }
        start = end + 1;
    }
    if (key == nullptr) {
        // What was reached before the missing name still holds.
        last_path_.resize(reached_.empty() ? 0 : reached_.back().first);
    }
    return key;
}

}  // namespace regvex::wine
