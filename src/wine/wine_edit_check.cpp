// The check of an edited Wine registry file: both texts read by the scan's own reader, the
// changes made to the original's tree, and the two trees compared key by key.

#include <algorithm>
#include <memory>
#include <utility>

#include "text/concat.h"
#include "wine/wine_file_edit.h"
#include "wine/wine_key_tree.h"
#include "wine/wine_registry_file.h"
#include "wine/wine_text.h"

namespace regvex::wine {

namespace {

using text::Concat;

constexpr std::string_view kAnyRoot = "Machine";

struct ReadTree {
    WineKey top;
    WineFileContents contents;
    std::optional<std::string> refused;
};

std::unique_ptr<ReadTree> Read(std::string_view text) {
    auto read = std::make_unique<ReadTree>();
    read->refused = ReadWineRegistryText(text, kAnyRoot, read->top, read->contents);
    read->top.Finish();
    return read;
}

bool FormLess(const WineValue& value, const std::u16string& form) {
    return value.order_form < form;
}

// Makes `change` to the tree read from the original, as the edit ought to have made it to
// the file.
std::string MakeChange(WineKey& root, const ValueChange& change) {
    WineKey* key = FindWineSubkey(root, change.key_path);
    if (key == nullptr) {
        return Concat({"the original has no key ", WineKeyForMessage(change.key_path)});
    }
    const std::u16string form = WineOrderForm(change.name);
    auto found = std::lower_bound(key->values.begin(), key->values.end(), form, FormLess);
    const bool present = found != key->values.end() && found->order_form == form;
    if (change.remove) {
        if (!present) {
            return Concat({"the original has no ", WineValueForMessage(change.name), " in ",
                           WineKeyForMessage(change.key_path)});
        }
        key->values.erase(found);
        return {};
    }
    if (!present) {
        found = key->values.insert(found, WineValue{});
        found->name = change.name;
        found->order_form = form;
    }
    found->type = change.type;
    found->data = change.data;
    return {};
}

class TreeComparison {
  public:
    explicit TreeComparison(std::string_view root) : root_(root) {}

    // The first difference at or below two keys of the same path.
    std::string Compare(const WineKey& expected, const WineKey& actual, std::string& path) {
        if (expected.name != actual.name) {
            return Concat(
                {"key ", Shown(path), " is spelled \"", actual.name, "\" in the edited file"});
        }
        if (expected.link != actual.link) {
            return Concat({"key ", Shown(path), " is a link in only one of the files"});
        }
        if (std::string difference = CompareValues(expected, actual, path); !difference.empty()) {
            return difference;
        }
        auto want = expected.ordered.begin();
        auto have = actual.ordered.begin();
        while (want != expected.ordered.end() || have != actual.ordered.end()) {
            const bool missing =
                have == actual.ordered.end() ||
                (want != expected.ordered.end() && (*want)->order_form < (*have)->order_form);
            const bool extra = !missing && (want == expected.ordered.end() ||
                                            (*have)->order_form < (*want)->order_form);
            if (missing || extra) {
                Append(path, (missing ? *want : *have)->name);
                return Concat({"key ", Shown(path),
                               missing ? " is missing from the edited file"
                                       : " appeared in the edited file"});
            }
            const std::size_t length = path.size();
            Append(path, (*want)->name);
            if (std::string difference = Compare(**want, **have, path); !difference.empty()) {
                return difference;
            }
            path.resize(length);
            ++want;
            ++have;
        }
        return {};
    }

  private:
    std::string CompareValues(const WineKey& expected, const WineKey& actual,
                              const std::string& path) const {
        auto want = expected.values.begin();
        auto have = actual.values.begin();
        for (;; ++want, ++have) {
            const bool no_want = want == expected.values.end();
            const bool no_have = have == actual.values.end();
            if (no_want && no_have) {
                return {};
            }
            if (no_have || (!no_want && want->order_form < have->order_form)) {
                return Concat({WineValueForMessage(want->name), " of ", Shown(path),
                               " is missing from the edited file"});
            }
            if (no_want || have->order_form < want->order_form) {
                return Concat({WineValueForMessage(have->name), " of ", Shown(path),
                               " appeared in the edited file"});
            }
            if (want->name != have->name) {
                return Concat({WineValueForMessage(want->name), " of ", Shown(path),
                               " is spelled \"", have->name, "\" in the edited file"});
            }
            std::string_view problem;
            if (want->type != have->type) {
                problem = " has another type in the edited file";
            } else if (want->data != have->data) {
                problem = " has other data in the edited file";
            } else {
                continue;
            }
            return Concat({WineValueForMessage(want->name), " of ", Shown(path), problem});
        }
    }

    static void Append(std::string& path, std::string_view name) {
        if (!path.empty()) {
            path += '\\';
        }
        path += name;
    }

    // Below the file's root, as the changes name keys.
    std::string Shown(std::string_view path) const {
        if (path == root_) {
            return WineKeyForMessage("");
        }
        if (path.size() > root_.size() && path.substr(0, root_.size()) == root_ &&
            path[root_.size()] == '\\') {
            path.remove_prefix(root_.size() + 1);
        }
        return WineKeyForMessage(path);
    }

    std::string_view root_;
};

}  // namespace

std::string CheckWineRegistryEdit(std::string_view before, std::string_view after,
                                  const std::vector<ValueChange>& changes) {
    const std::unique_ptr<ReadTree> expected = Read(before);
    const std::unique_ptr<ReadTree> actual = Read(after);
    if (expected->refused) {
        return Concat({"the original is not a Wine registry file: ", *expected->refused});
    }
    if (actual->refused) {
        return Concat({"the edited file is not a Wine registry file: ", *actual->refused});
    }
    const std::string& root = expected->contents.root;
    if (actual->contents.root != root) {
        return Concat({"the edited file's keys are relative to ", actual->contents.root,
                       " instead of ", root});
    }
    WineKey& top = expected->top;
    WineKey* file_root = FindWineSubkey(top, root);
    for (const ValueChange& change : changes) {
        const std::string refused =
            file_root == nullptr ? Concat({"the original has no key ", WineKeyForMessage("")})
                                 : MakeChange(*file_root, change);
        if (!refused.empty()) {
            return refused;
        }
    }
    std::string path;
    if (std::string difference = TreeComparison(root).Compare(top, actual->top, path);
        !difference.empty()) {
        return difference;
    }
    const std::size_t skipped_before = expected->contents.bad_lines.size();
    const std::size_t skipped_after = actual->contents.bad_lines.size();
    if (skipped_before != skipped_after) {
        return Concat({"lines that Wine would skip: ", std::to_string(skipped_after),
                       " in the edited file, ", std::to_string(skipped_before),
                       " in the original"});
    }
    return {};
}

}  // namespace regvex::wine
