// A Wine registry file on any bytes: read as the scan reads it, then every other value it
// holds deleted, one value written again with another's data and one added, as fix and
// restore would. The edit and the check that reads both texts must agree: an edit the
// check finds wrong would be refused at the user's expense, and one it passed wrongly
// would lose data.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "wine/wine_file_edit.h"
#include "wine/wine_key_tree.h"
#include "wine/wine_registry_file.h"
#include "wine/wine_text.h"

namespace {

using namespace regvex;

// The key's path below the file's root, as a change names it.
std::string BelowRoot(const wine::WineKey& key, const wine::WineKey* root) {
    std::vector<const wine::WineKey*> keys;
    for (const wine::WineKey* each = &key; each != root && each != nullptr; each = each->parent) {
        keys.push_back(each);
    }
    std::string path;
    for (auto each = keys.rbegin(); each != keys.rend(); ++each) {
        if (!path.empty()) {
            path.push_back('\\');
        }
        path += (*each)->name;
    }
    return path;
}

// A message with its NULs visible.
std::string Shown(std::string_view message) {
    std::string shown;
    for (const char c : message) {
        shown += c == '\0' ? std::string_view("\\0") : std::string_view(&c, 1);
    }
    return shown;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    wine::WineKey top;
    wine::WineFileContents contents;
    contents.record_lines = true;
    if (wine::ReadWineRegistryText(text, "Machine", top, contents)) {
        return 0;
    }
    top.Finish();
    const wine::WineKey* root = wine::FindWineSubkey(top, contents.root);
    if (root == nullptr) {
        return 0;
    }
    std::vector<ValueChange> changes;
    std::set<std::pair<const wine::WineKey*, std::u16string>> taken;
    for (std::size_t i = 0; i < contents.values.size(); ++i) {
        const wine::WineValueLines& lines = contents.values[i];
        const wine::WineKey* key = contents.sections[lines.section].key;
        // A key name the reader refused leaves no key; a name may come twice in a key.
        if (key == nullptr || !taken.emplace(key, wine::WineOrderForm(lines.name)).second) {
            continue;
        }
        const wine::WineValue* value = key->FindValue(lines.name);
        if (value == nullptr) {
            __builtin_trap();  // recorded, yet not in the tree
        }
        ValueChange change{BelowRoot(*key, root), lines.name, i % 2 == 0, 0, {}, {}};
        if (i % 4 == 1) {
            // Written again, with the data of the first value.
            const wine::WineValue* first =
                contents.sections[contents.values[0].section].key->FindValue(
                    contents.values[0].name);
            change.type = first->type;
            change.data = first->data;
        } else if (!change.remove) {
            continue;
        }
        changes.push_back(std::move(change));
    }
    if (!contents.sections.empty() && contents.sections.back().key != nullptr) {
        changes.push_back({BelowRoot(*contents.sections.back().key, root),
                           "regvexlor added",
                           false,
                           7,
                           {'a', 0, 'b', 0, 0},
                           {}});
    }
    std::string error;
    const auto edited = wine::EditWineRegistryText(text, changes, error);
    // Every change names a key and value of the file, once.
    if (!edited) {
        std::fprintf(stderr, "edit refused: %s\n", Shown(error).c_str());
        __builtin_trap();
    }
    if (const std::string wrong = wine::CheckWineRegistryEdit(text, *edited, changes);
        !wrong.empty()) {
        std::fprintf(stderr, "check failed: %s\n", Shown(wrong).c_str());
        __builtin_trap();
    }
    return 0;
}
