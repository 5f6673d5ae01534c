#pragma once
// The keys of a Wine prefix's registry as its server holds them: one tree below
// \Registry (Machine, User\...), subkeys and values in Wine's order (see wine_text.h),
// and symbolic links that the server follows when a key is opened.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace regvex::wine {

struct WineValue {
    std::string name;           // UTF-8; "" is the default value
    std::u16string order_form;  // see WineOrderForm
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;  // text types as UTF-8 with their NULs
    bool fits = true;                // name and data fit the scan's buffers
};

struct WineKey {
    std::string name;
    std::u16string order_form;
    bool name_fits = true;                                        // fits the scan's buffer
    std::map<std::u16string, std::unique_ptr<WineKey>> children;  // by order form
    std::vector<WineValue> values;  // in Wine's order once Finish has run
    // Set by a "#link" line: opening the key opens the kernel path its SymbolicLinkValue
    // names.
    bool link = false;
    // The key this one is a child of; null for \Registry itself.
    WineKey* parent = nullptr;

    // After Finish: the children in order, for enumeration by index and lookup.
    std::vector<WineKey*> ordered;

    // The child of that name, made when missing.
    WineKey& Child(std::string_view child_name);
    const WineKey* FindChild(std::string_view child_name) const;
    const WineValue* FindValue(std::string_view value_name) const;
    // Sets a value as the server does: a name it already holds keeps its first spelling.
    void SetValue(WineValue value);
    // Puts values and subkeys in Wine's order, here and below.
    void Finish();
    // The key's own path below \Registry ("Machine\Software\..."), with its names as
    // they were first spelt; links are not part of it.
    std::string Path() const;
    // The target of a link, "\Registry\..." as written; nullopt when it names none.
    std::optional<std::string> LinkTarget() const;
};

// Follows `path` ("Machine\Software\..." below \Registry, separators '\') from `top` as
// Wine's server does: every link on the way is followed, the last key's too, at most 16
// times in all. Null when a key is missing or a link leads nowhere. After Finish.
const WineKey* ResolveWinePath(const WineKey& top, std::string_view path);

// The key at `path` below `key` as the tree holds it, no link followed; "" and empty names
// between separators stand for no step, as in a file's key lines. After Finish.
const WineKey* FindWineSubkey(const WineKey& key, std::string_view path);
inline WineKey* FindWineSubkey(WineKey& key, std::string_view path) {
    return const_cast<WineKey*>(FindWineSubkey(static_cast<const WineKey&>(key), path));
}

// The same, for paths that come in walk order: each path starts from the key of the
// longest leading part it shares with the path before it.
class WinePathResolver {
  public:
    explicit WinePathResolver(const WineKey& top) : top_(top) {}
    const WineKey* Resolve(std::string_view path);

  private:
    const WineKey& top_;
    std::string last_path_;
    // The key reached after each name of the last path, and where that name ends.
    std::vector<std::pair<std::size_t, const WineKey*>> reached_;
};

}  // namespace regvex::wine
