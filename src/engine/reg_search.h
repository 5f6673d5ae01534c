#pragma once
// cRegSearch walks the registry depth first from a starting key (or from every root),
// matches key names, value names and rendered value data against a search text, and
// reports each match synchronously to its owner. It runs on the owner's thread and
// yields to it once per subkey, which is where a Stop click gets handled.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"
#include "engine/stored_key_record.h"
#include "text/upper_case.h"

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

// A host with nothing to show and nothing to pump: for searches run without a window.
class QuietSearchHost final : public SearchHost {
  public:
    void SetProgressMax(int) override {}
    int ProgressValue() const override { return progress_; }
    void SetProgressValue(int value) override { progress_ = value; }
    void SetCurrentKey(const std::string&) override {}
    void DoEvents() override {}
    // Nothing here asks the search to close the program.
    void EndProcess() override { std::abort(); }

  private:
    int progress_ = 0;
};

// What a match is, by the number owners have always been handed. Any other number can
// stand here too; the program lists such a match without a status.
enum class FoundKind : std::int32_t {
    kKeyName = 0,    // sKey is the key path, sValue "*"
    kValueName = 1,  // sKey is the key path, a backslash and the value name
    kValueData = 2,  // the same, for a match in the value's data
};

// Why a search ended: it ran to its end, it was stopped, or, as any other number, the
// run-time error that ended it.
enum class FinishReason : std::int32_t { kFinished = 0, kStopped = 1 };

// The events of cRegSearch, received by its owner.
class SearchEvents {
  public:
    virtual ~SearchEvents() = default;
    // The texts live only for the length of the call.
    virtual void SearchFound(std::string_view sRootKey, std::string_view sKey,
                             std::string_view sValue, FoundKind lFound) = 0;
    virtual void SearchFinished(FinishReason lReason) = 0;
    // Owners declare a handler for it, but this engine never raises it.
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
    // During SearchFound for a value: the path of its key, which sKey begins with. A value
    // name may hold backslashes, so sKey cannot be parted without it.
    const std::string& FoundKeyPath() const { return path_; }
    void SearchString(std::string vData);
    void SearchFlags(std::int32_t vData) { search_flags_ = vData; }
    void RootKey(RootKeyHandle vData) { root_key_ = vData; }

    // Runs the whole search and raises SearchFinished last.
    void DoSearch();
    // Asks a running search to end; it finishes as stopped. No effect when idle.
    void StopSearch();
    // The walk ends the process at its next yield, without finishing.
    void CloseProgram() { close_request_ = true; }

    // How many entries the last search held at its end to answer keys reached again.
    std::size_t RecordedEntries() const { return recorded_entries_; }

  private:
    // Both walk the key whose path below `root` is path_ on entry; levels_[level] is where
    // that key stands, levels_[level - 1] its parent's (none at level 0). SearchValues
    // places the key, reached as subkey `name`; SearchKeys walks below it.
    void SearchKeys(RootKeyHandle root, std::size_t level);
    void SearchValues(RootKeyHandle root, std::size_t level, std::string_view name);
    void ReadValues(RootKeyHandle root, KeyHandle key, StoredKeyRecord::KeyState& self);
    void AnswerValues(RootKeyHandle root, const StoredKeyRecord::KeyState& self);
    bool SearchesValues() const {
        return (search_flags_ & (search_flags::kValueNames | search_flags::kValueData)) != 0;
    }
    // Whether keys reached again may be answered from the record: nothing unusual has
    // happened in this search.
    bool Recording() const { return recording_ && stop_code_ == 0; }
    StoredKeyRecord::KeyState& Level(std::size_t level);
    static std::string_view TrimNull(std::string_view text);
    bool IsMatch(std::string_view text);
    // IsMatch of the text up to its first NUL.
    bool IsMatchUpToNull(std::string_view text);
    void SearchAllRoots();
    void PrepareMatching();
    // The key path, a backslash and the value name, as a found value is reported.
    const std::string& FoundKey(std::string_view value_name);
    // The data's text as the match sees it, or false when it cannot match.
    bool DataTextForMatch(std::uint32_t type, std::span<const std::uint8_t> data,
                          std::string_view& text);

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

    text::UpperNeedle needle_;
    bool whole_text_ = false;
    bool binary_may_match_ = true;
    bool dword_may_match_ = true;
    bool unsupported_matches_ = false;

    // Buffers reused across the walk: no allocation per key or value where none is needed.
    // path_ is the path of the key being walked: each level appends a subkey's name and
    // cuts it off again for the next one.
    std::string path_;
    std::string label_;
    std::string key_name_;
    ValueSlot value_slot_;
    std::string rendered_;
    std::string match_scratch_;
    std::string found_key_;
    std::string found_value_;

    // Each stored key's values are read once per search; see StoredKeyRecord.
    StoredKeyRecord record_;
    // One per level of the walk, each kept where it is while deeper ones are added.
    std::vector<std::unique_ptr<StoredKeyRecord::KeyState>> levels_;
    bool recording_ = false;
    std::size_t recorded_entries_ = 0;
};

}  // namespace regvex
