#pragma once
// cRegSearch walks the registry depth first from a starting key (or from every root),
// matches key names, value names and rendered value data against a search text, and
// reports each match synchronously to its owner. It runs on the owner's thread and
// yields to it once per subkey, which is where a Stop click gets handled.

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/registry.h"

namespace regvex {

// What the walk drives in its owner's window. The Windows program shows these on its
// progress bar and current-key label and pumps its messages in DoEvents; the command line
// draws a progress line; tests script what happens at a given yield.
class SearchHost {
  public:
    virtual ~SearchHost() = default;
    virtual void SetProgressMax(int max) = 0;
    virtual int ProgressValue() const = 0;
    virtual void SetProgressValue(int value) = 0;
    virtual void SetCurrentKey(const std::string& full_key_name) = 0;
    // Lets the owner handle whatever is pending; StopSearch and CloseProgram arrive here.
    virtual void DoEvents() = 0;
    // Ends the whole process at once. Must not return.
    virtual void EndProcess() = 0;
};

// The events of cRegSearch, received by its owner.
class SearchEvents {
  public:
    virtual ~SearchEvents() = default;
    // lFound: 0 a key name matched (sKey is the key path, sValue "*"), 1 a value name,
    // 2 a value's data (sKey is the key path, a backslash and the value name).
    virtual void SearchFound(const std::string& sRootKey, const std::string& sKey,
                             const std::string& sValue, std::int32_t lFound) = 0;
    // lReason: 0 the walk ran to its end, 1 it was stopped, else the error number.
    virtual void SearchFinished(std::int32_t lReason) = 0;
    // Declared for owners; this engine never raises it.
    virtual void SearchKeyChanged(const std::string& sFullKeyName) { (void)sFullKeyName; }
};

namespace search_flags {
inline constexpr std::int32_t kValueNames = 1;
inline constexpr std::int32_t kValueData = 2;
inline constexpr std::int32_t kWholeText = 4;
}  // namespace search_flags

class cRegSearch {
  public:
    // Every key is opened with `key_access_mask`: a key that may be read but not
    // written is not opened, and is skipped with everything below it.
    cRegSearch(Registry& registry, SearchHost& host, SearchEvents& events,
               AccessMask key_access_mask);

    void SubKey(std::string vData) { sub_key_ = std::move(vData); }
    void SearchString(std::string vData);
    void SearchFlags(std::int32_t vData) { search_flags_ = vData; }
    void RootKey(RootKeyHandle vData) { root_key_ = vData; }

    // Runs the whole search and raises SearchFinished last.
    void DoSearch();
    // Asks a running search to end; it finishes with lReason 1. No effect when idle.
    void StopSearch();
    // The walk ends the process at its next yield, without finishing.
    void CloseProgram() { close_request_ = true; }

  private:
    void SearchKeys(RootKeyHandle root, const std::string& path);
    void SearchValues(RootKeyHandle root, const std::string& path);
    static std::string_view TrimNull(std::string_view text);
    bool IsMatch(std::string_view text);
    void SearchAllRoots();

    Registry& registry_;
    SearchHost& host_;
    SearchEvents& events_;
    AccessMask key_access_mask_;

    RootKeyHandle root_key_ = kHkeyAll;
    std::int32_t search_flags_ = 0;
    std::string search_string_;
    std::string sub_key_;
    std::int32_t stop_code_ = 0;
    bool close_request_ = false;
    bool running_ = false;

    // Buffers reused across the walk: no allocation per key or value where none is needed.
    std::string upper_search_string_;
    std::string key_name_;
    ValueSlot value_slot_;
    std::string rendered_;
    std::string match_scratch_;
};

}  // namespace regvex
