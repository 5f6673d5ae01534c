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

}  // namespace

WineKey& WineKey::Child(std::string_view child_name) {
    auto& slot = children[WineOrderForm(child_name)];
    if (!slot) {
        slot = std::make_unique<WineKey>();
        slot->name = std::string(child_name);
    }
    return *slot;
}

const WineKey* WineKey::FindChild(std::string_view child_name) const {
    const auto found = children.find(WineOrderForm(child_name));
    return found == children.end() ? nullptr : found->second.get();
}

const WineValue* WineKey::FindValue(std::string_view value_name) const {
    const std::u16string form = WineOrderForm(value_name);
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

std::optional<std::string> WineKey::LinkTarget() const {
    const WineValue* value = FindValue("SymbolicLinkValue");
    if (value == nullptr) {
        return std::nullopt;
    }
    return Utf8FromUtf16Bytes(
        std::string_view(reinterpret_cast<const char*>(value->data.data()), value->data.size()));
}

const WineKey* ResolveWinePath(const WineKey& top, std::string_view path) {
    std::string pending(path);
    int links_followed = 0;
    const WineKey* key = &top;
    std::size_t start = 0;
    while (start < pending.size()) {
        const std::size_t end = std::min(pending.find('\\', start), pending.size());
        const std::string_view name = std::string_view(pending).substr(start, end - start);
        start = end + 1;
        if (name.empty()) {
            continue;
        }
        key = key->FindChild(name);
        if (key == nullptr) {
            return nullptr;
        }
        if (!key->link) {
            continue;
        }
        const std::optional<std::string> target = key->LinkTarget();
        if (++links_followed > kMaxLinksFollowed || !target ||
            !StartsWithCaseless(*target, kKernelRoot)) {
            return nullptr;
        }
        // Start again from the top: the target, then what is left of the path.
        std::string rest = start < pending.size() ? pending.substr(start) : std::string();
        pending = target->substr(kKernelRoot.size()) + "\\" + rest;
        start = 0;
        key = &top;
    }
    return key;
}

}  // namespace regvex::wine
