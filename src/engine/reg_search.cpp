#include "engine/reg_search.h"

#include <algorithm>

#include "engine/run_time_error.h"
#include "engine/value_data_text.h"

namespace regvex {

namespace {

constexpr auto kStopped = static_cast<std::int32_t>(FinishReason::kStopped);
constexpr int kProgressMax = 8;
constexpr std::string_view kKeyNameValue = "*";

}  // namespace

cRegSearch::cRegSearch(Registry& registry, SearchHost& host, SearchEvents& events,
                       AccessMask key_access_mask)
    : registry_(registry), host_(host), events_(events), key_access_mask_(key_access_mask) {}

void cRegSearch::SearchString(std::string vData) {
    search_string_ = std::move(vData);
    needle_ = text::UpperNeedle(text::UpperCase(search_string_));
}

void cRegSearch::StopSearch() {
    if (running_) {
        stop_code_ = kStopped;
    }
}

void cRegSearch::DoSearch() {
    running_ = true;
    PrepareMatching();
    record_.Clear();
    recording_ = SearchesValues();
    Level(0).Forget();
    host_.SetProgressMax(kProgressMax);
    if (root_key_ != kHkeyAll) {
        path_ = sub_key_;
        if (SearchesValues()) {
            SearchValues(root_key_, 0, {});
        }
        path_ = sub_key_;
        SearchKeys(root_key_, 0);
    } else {
        SearchAllRoots();
    }
    host_.SetProgressValue(0);
    running_ = false;
    recorded_entries_ = record_.EntryCount();
    record_.Clear();
    events_.SearchFinished(static_cast<FinishReason>(stop_code_));
    stop_code_ = 0;
}

StoredKeyRecord::KeyState& cRegSearch::Level(std::size_t level) {
    while (levels_.size() <= level) {
        levels_.push_back(std::make_unique<StoredKeyRecord::KeyState>());
    }
    return *levels_[level];
}

void cRegSearch::SearchAllRoots() {
    // Values that lie directly in a root are never examined in this mode.
    for (std::size_t i = 0; i < kSearchOrder.size(); ++i) {
        const RootKeyHandle root = kSearchOrder[i];
        const int value = host_.ProgressValue();
        if (root == kHkeyUsers) {
            host_.SetProgressValue(value >= 6 ? value + 1 : 7);
        } else {
            host_.SetProgressValue(value + 1);
        }
        if (i > 0 && stop_code_ != 0) {
            return;
        }
        path_ = sub_key_;
        Level(0).Forget();
        SearchKeys(root, 0);
    }
    const int value = host_.ProgressValue();
    host_.SetProgressValue(value >= 7 ? value + 1 : kProgressMax);
}

void cRegSearch::SearchKeys(RootKeyHandle root, std::size_t level) {
    if (stop_code_ != 0) {
        return;
    }
    ScopedKey key;
    StoredKeyRecord::KeyState& self = Level(level);
    if (ScopedKey::Open(registry_, root, path_, key_access_mask_, key) != reg::kSuccess) {
        if (self.known && Recording()) {
            record_.NoteKeysUnreached(self.stored);
        }
        return;
    }
    if (level == 0 && root_key_ == kHkeyAll && Recording()) {
        // A root whose values this walk skips: the key is placed here, its values not read.
        self.known = registry_.StoredKeyName(key.get(), self.stored);
        record_.Identify(nullptr, {}, self);
        if (self.known) {
            record_.NoteValuesUnread(self.stored);
        }
    }
    const std::size_t own_length = path_.size();
    const std::string& root_name = RootKeyName(root);
    RegStatus listed = reg::kSuccess;
    try {
        // The key stays open while its subkeys are walked: one handle per level.
        for (std::uint32_t index = 0;;) {
            host_.DoEvents();
            if (close_request_) {
                host_.EndProcess();
            }
            listed = registry_.EnumKey(key.get(), index, key_name_);
            if (listed != reg::kSuccess) {
                break;
            }
            ++index;
            const std::string_view name = TrimNull(key_name_);
            path_.resize(own_length);
            if (own_length != 0) {
                path_.push_back('\\');
            }
            path_.append(name);
            // After a stop request each open level still runs through its remaining
            // subkeys and reports key-name matches; only the descent ends.
            if (stop_code_ == 0) {
                label_.assign(root_name);
                label_.push_back('\\');
                label_.append(path_);
                host_.SetCurrentKey(label_);
            }
            if (IsMatch(name)) {
                events_.SearchFound(root_name, path_, kKeyNameValue, FoundKind::kKeyName);
            }
            // Nothing is left of a name that starts with a NUL (the native API can make
            // such keys): its path names the key being walked, and descending would walk
            // that key again without end.
            if (name.empty()) {
                continue;
            }
            Level(level + 1).Forget();
            if (SearchesValues()) {
                SearchValues(root, level + 1, name);
            }
            SearchKeys(root, level + 1);
        }
    } catch (const std::exception& error) {
        recording_ = false;
        const int number = ErrorNumberOf(error);
        if (number == kErrorObjectDoesNotSupport) {
            // This failure leaves the walk running and the key open, as it always has.
            stop_code_ = 0;
            key.Release();
            return;
        }
        stop_code_ = number;
    }
    if (self.known && Recording()) {
        if (listed != reg::kNoMoreItems) {
            record_.NoteKeysUnreached(self.stored);
        }
        if (self.region_root) {
            record_.CompleteRegion(self.stored);
        }
    }
}

void cRegSearch::SearchValues(RootKeyHandle root, std::size_t level, std::string_view name) {
    if (stop_code_ != 0) {
        return;
    }
    StoredKeyRecord::KeyState& self = Level(level);
    const StoredKeyRecord::KeyState* parent = level == 0 ? nullptr : levels_[level - 1].get();
    ScopedKey key;
    if (ScopedKey::Open(registry_, root, path_, key_access_mask_, key) != reg::kSuccess) {
        if (parent != nullptr && Recording()) {
            record_.NoteUnwalkedChild(*parent, name);
        }
        return;
    }
    if (Recording()) {
        self.known = registry_.StoredKeyName(key.get(), self.stored);
        record_.Identify(parent, name, self);
        if (parent != nullptr && !(self.known && !self.region_root)) {
            record_.NoteUnwalkedChild(*parent, name);
        }
    }
    if (self.covered) {
        AnswerValues(root, self);
    } else {
        ReadValues(root, key.get(), self);
    }
}

void cRegSearch::AnswerValues(RootKeyHandle root, const StoredKeyRecord::KeyState& self) {
    try {
        for (const StoredKeyRecord::Match& match : record_.MatchesOf(self.stored)) {
            events_.SearchFound(RootKeyName(root), FoundKey(match.value_name), match.text,
                                static_cast<FoundKind>(match.kind));
        }
    } catch (const std::exception& error) {
        recording_ = false;
        stop_code_ = ErrorNumberOf(error);
    }
}

void cRegSearch::ReadValues(RootKeyHandle root, KeyHandle key, StoredKeyRecord::KeyState& self) {
    const bool recording = self.known && Recording();
    const auto note = [&](FoundKind kind, std::string_view value_name, std::string_view text) {
        if (recording) {
            record_.AddMatch(self.stored, static_cast<std::int32_t>(kind), value_name, text);
        }
    };
    RegStatus status = reg::kSuccess;
    try {
        for (std::uint32_t index = 0;; ++index) {
            // A value without data is read as one byte of a freshly cleared buffer, so it
            // renders as 00. Only that first byte can be read without being written by
            // the call, so it is the only one cleared.
            value_slot_.data[0] = 0;
            // Any failure ends this key's values, also data too large for the buffer.
            status = registry_.EnumValue(key, index, value_slot_);
            if (status != reg::kSuccess) {
                break;
            }
            const std::size_t size = std::max<std::size_t>(value_slot_.size, 1);
            const std::span<const std::uint8_t> data(value_slot_.data.data(), size);
            const std::string_view raw_name = value_slot_.name;
            if ((search_flags_ & search_flags::kValueNames) != 0 && IsMatchUpToNull(raw_name)) {
                ValueDataToText(value_slot_.type, data, found_value_);
                note(FoundKind::kValueName, TrimNull(raw_name), found_value_);
                events_.SearchFound(RootKeyName(root), FoundKey(TrimNull(raw_name)), found_value_,
                                    FoundKind::kValueName);
            }
            std::string_view text;
            if ((search_flags_ & search_flags::kValueData) != 0 &&
                DataTextForMatch(value_slot_.type, data, text) && IsMatch(text)) {
                note(FoundKind::kValueData, TrimNull(raw_name), text);
                events_.SearchFound(RootKeyName(root), FoundKey(TrimNull(raw_name)), text,
                                    FoundKind::kValueData);
            }
        }
    } catch (const std::exception& error) {
        recording_ = false;
        stop_code_ = ErrorNumberOf(error);
    }
    record_.EndKey();
    if (recording && Recording() && status != reg::kNoMoreItems) {
        record_.NoteValuesUnread(self.stored);
    }
}

const std::string& cRegSearch::FoundKey(std::string_view value_name) {
    found_key_.assign(path_);
    found_key_.push_back('\\');
    found_key_.append(value_name);
    return found_key_;
}

void cRegSearch::PrepareMatching() {
    whole_text_ = (search_flags_ & search_flags::kWholeText) != 0;
    const auto could_occur_in = [this](std::string_view alphabet) {
        return needle_.text().find_first_not_of(alphabet) == std::string::npos;
    };
    binary_may_match_ = could_occur_in(kBinaryTextAlphabet);
    dword_may_match_ = could_occur_in(kDwordTextAlphabet);
    unsupported_matches_ = IsMatch(kUnsupportedValueText);
}

bool cRegSearch::DataTextForMatch(std::uint32_t type, std::span<const std::uint8_t> data,
                                  std::string_view& text) {
    // Rendering every value would cost more than the rest of the walk: text is read where
    // it lies, and renderings that cannot hold the search text are not made at all.
    switch (TextKindOf(type)) {
        case ValueTextKind::kText: {
            const std::string_view whole(reinterpret_cast<const char*>(data.data()), data.size());
            if (!whole_text_ && !needle_.FoundIn(whole, match_scratch_)) {
                return false;
            }
            text = TrimNull(whole);
            return true;
        }
        case ValueTextKind::kBinary:
            if (!binary_may_match_) {
                return false;
            }
            break;
        case ValueTextKind::kDword:
            if (!dword_may_match_) {
                return false;
            }
            break;
        case ValueTextKind::kUnsupported:
            text = kUnsupportedValueText;
            return unsupported_matches_;
    }
    ValueDataToText(type, data, rendered_);
    text = TrimNull(rendered_);
    return true;
}

std::string_view cRegSearch::TrimNull(std::string_view text) {
    const std::size_t nul = text.find('\0');
    return nul == std::string_view::npos ? text : text.substr(0, nul);
}

bool cRegSearch::IsMatchUpToNull(std::string_view text) {
    // The text ends at its first NUL, but most texts do not hold the search text anywhere:
    // one look over all of it settles those without finding the end first.
    if (!whole_text_ && !needle_.FoundIn(text, match_scratch_)) {
        return false;
    }
    return IsMatch(TrimNull(text));
}

bool cRegSearch::IsMatch(std::string_view text) {
    if (whole_text_) {
        text::UpperCaseInto(text, match_scratch_);
        return match_scratch_ == needle_.text();
    }
    return needle_.FoundIn(text, match_scratch_);
}

}  // namespace regvex
