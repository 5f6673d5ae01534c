#pragma once
// A registry held in memory, behaving as Windows does wherever the scan can tell:
// subkeys enumerate in the ordinal order of their upper-cased names, values in the order
// they were created, names and keys compare without regard to case, a name longer than
// the 260-character buffer or data longer than the 4096-byte buffer (text measured in
// the ANSI code page it is given) answers kMoreData,
// and a key can be marked so that opening it with more than read rights answers
// kAccessDenied. Every root exists and starts empty; the roots are not linked to each
// other (HKEY_CLASSES_ROOT does not mirror a part of HKEY_LOCAL_MACHINE).

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"
#include "text/ansi_code_page.h"

namespace regvex {

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
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override;
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override;

    // Removes a key with everything below it; handles open on them answer kKeyDeleted.
    RegStatus DeleteKeyTree(RootKeyHandle root, std::string_view path);

    // From now on, opening this existing key with any right beyond reading answers
    // kAccessDenied, as a protected key does for an ordinary user.
    RegStatus DenyFullAccess(RootKeyHandle root, std::string_view path);

    std::size_t OpenHandleCount() const;

  private:
    struct Node;

    Node* RootNode(RootKeyHandle root) const;
    // Follows `path` from `root`. Creates missing keys when `create` is set.
    RegStatus Resolve(RootKeyHandle root, std::string_view path, bool create, Node*& node);
    RegStatus Lookup(KeyHandle key, Node*& node) const;
    KeyHandle NewHandle(Node* node);
    void ForgetHandlesBelow(const Node* node);

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
};

}  // namespace regvex
