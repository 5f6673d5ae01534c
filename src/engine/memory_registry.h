#pragma once
// A registry held in memory, behaving as Windows does wherever the scan can tell:
// subkeys enumerate in the ordinal order of their upper-cased names, values in the order
// they were created, names and keys compare without regard to case, a name longer than
// the 260-character buffer or data longer than the 4096-byte buffer (text measured in
// the ANSI code page it is given) answers kMoreData, and a key can be marked so that
// opening it with more than read rights, or deleting its values, answers kAccessDenied.
// Every root exists and starts empty; the roots are not linked to each other
// (HKEY_CLASSES_ROOT does not mirror a part of HKEY_LOCAL_MACHINE).
//
// It refuses what Windows refuses: creating a key name of more than 255 characters
// (kInvalidParameter), a key more than 512 levels below its root (kNoSystemResources),
// or a value name of more than 16,383 characters (kInvalidParameter). A path that cannot
// be created creates none of its keys.
//
// Time and memory stay linear in what it holds: any number of subkeys or values per key,
// in any order.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"
#include "text/ansi_code_page.h"

namespace regvex {

namespace memory_tree {
struct Node;
class Value;
}  // namespace memory_tree

class MemoryRegistry final : public Registry {
  public:
    explicit MemoryRegistry(const text::AnsiCodePage& ansi = text::DefaultAnsiCodePage());
    ~MemoryRegistry() override;
    MemoryRegistry(const MemoryRegistry&) = delete;
    MemoryRegistry& operator=(const MemoryRegistry&) = delete;

    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override;
    RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                        KeyHandle& key) override;
    RegStatus CloseKey(KeyHandle key) override;
    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override;
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override;
    RegStatus QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                         std::vector<std::uint8_t>& data) override;
    RegStatus ReadValue(KeyHandle key, std::uint32_t index, std::string& name, std::uint32_t& type,
                        std::vector<std::uint8_t>& data) override;
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override;
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override;

    // Removes a key with everything below it; handles open on them answer kKeyDeleted.
    RegStatus DeleteKeyTree(RootKeyHandle root, std::string_view path);

    // From now on, opening this existing key with any right beyond reading answers
    // kAccessDenied, as a protected key does for an ordinary user.
    RegStatus DenyFullAccess(RootKeyHandle root, std::string_view path) {
        return Deny(root, path, false);
    }
    // From now on, deleting a value of this existing key answers kAccessDenied although
    // the key opens with every right: what a repair meets when the rights of a key it
    // scanned change before it deletes.
    RegStatus DenyValueDeletion(RootKeyHandle root, std::string_view path) {
        return Deny(root, path, true);
    }

    std::size_t OpenHandleCount() const;

    // Takes back every key, value and deletion made while it is alive, unless Keep is
    // called. Handles on keys that the undoing removes answer kKeyDeleted, and so do
    // handles on keys deleted in between, although the keys come back. One at a time.
    class UndoScope {
      public:
        explicit UndoScope(MemoryRegistry& registry);
        ~UndoScope();
        UndoScope(const UndoScope&) = delete;
        UndoScope& operator=(const UndoScope&) = delete;

        void Keep();

      private:
        MemoryRegistry* registry_;
    };

  private:
    using Node = memory_tree::Node;
    struct UndoRecord;

    Node* RootNode(RootKeyHandle root) const;
    RegStatus OpenNode(RootKeyHandle root, std::string_view path, AccessMask access, bool create,
                       KeyHandle& key);
    RegStatus Deny(RootKeyHandle root, std::string_view path, bool value_deletion);
    // Follows `path` from `root`. Creates missing keys when `create` is set.
    RegStatus Resolve(RootKeyHandle root, std::string_view path, bool create, Node*& node);
    Node* AddKey(Node* parent, std::string_view name, std::uint32_t hash);
    RegStatus Lookup(KeyHandle key, Node*& node) const;
    // The live value `index` of an open key.
    RegStatus ValueAt(KeyHandle key, std::uint32_t index, const memory_tree::Value*& stored);
    KeyHandle NewHandle(Node* node);
    void ForgetHandlesBelow(const Node* node);

    // Whether the key was created since recording began: then undoing needs no record of
    // what happens below it, since the whole key goes.
    bool Fresh(const Node* node) const;
    void Record(UndoRecord record);
    void UndoAll();

    // Slot i holds handle i + 1. A deleted key leaves its handles open but without a node.
    struct HandleSlot {
        Node* node = nullptr;
        bool open = false;
    };

    // The last path resolved. Opens come in walk order (a key, then its subkeys, then its
    // next sibling), so most paths share all but their last name with it.
    struct LastResolved {
        RootKeyHandle root = kHkeyAll;
        std::string path;
        Node* node = nullptr;
    };
    // Where resolving `path` can start: the node of its longest leading part shared with
    // the last path resolved, and how many characters of `path` that part covers.
    Node* StartFromLast(RootKeyHandle root, std::string_view path, std::size_t& covered) const;

    const text::AnsiCodePage& ansi_;
    std::vector<std::unique_ptr<Node>> roots_;
    LastResolved last_;
    std::vector<HandleSlot> handles_;
    std::vector<std::size_t> free_slots_;
    std::string upper_scratch_;
    std::string compare_scratch_;

    // Undo: while recording, what each change replaced, oldest first.
    bool recording_ = false;
    std::uint32_t recording_serial_ = 0;
    std::vector<UndoRecord> undo_;
};

}  // namespace regvex
