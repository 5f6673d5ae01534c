#include "engine/reg_search.h"

#include <algorithm>
#include <span>

#include "engine/run_time_error.h"
#include "engine/value_data_text.h"
#include "text/upper_case.h"

namespace regvex {

namespace {

constexpr std::int32_t kStopped = 1;
constexpr int kProgressMax = 8;
constexpr std::string_view kKeyNameValue = "*";

std::string JoinPath(std::string_view path, std::string_view name) {
    std::string full;
    full.reserve(path.size() + 1 + name.size());
    full.append(path);
    full.push_back('\\');
    full.append(name);
    return full;
}

}  // namespace

cRegSearch::cRegSearch(Registry& registry, SearchHost& host, SearchEvents& events,
                       AccessMask key_access_mask)
    : registry_(registry), host_(host), events_(events), key_access_mask_(key_access_mask) {}

void cRegSearch::SearchString(std::string vData) {
    search_string_ = std::move(vData);
    upper_search_string_ = text::UpperCase(search_string_);
}

void cRegSearch::StopSearch() {
    if (running_) {
        stop_code_ = kStopped;
    }
}

void cRegSearch::DoSearch() {
    running_ = true;
    host_.SetProgressMax(kProgressMax);
    if (root_key_ != kHkeyAll) {
        if ((search_flags_ & (search_flags::kValueNames | search_flags::kValueData)) != 0) {
            SearchValues(root_key_, sub_key_);
        }
        SearchKeys(root_key_, sub_key_);
    } else {
        SearchAllRoots();
    }
    host_.SetProgressValue(0);
    running_ = false;
    events_.SearchFinished(stop_code_);
    stop_code_ = 0;
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
        SearchKeys(root, sub_key_);
    }
    const int value = host_.ProgressValue();
    host_.SetProgressValue(value >= 7 ? value + 1 : kProgressMax);
}

void cRegSearch::SearchKeys(RootKeyHandle root, const std::string& path) {
    if (stop_code_ != 0) {
        return;
    }
    ScopedKey key;
    if (ScopedKey::Open(registry_, root, path, key_access_mask_, key) != reg::kSuccess) {
        return;
    }
    try {
        // The key stays open while its subkeys are walked: one handle per level.
        for (std::uint32_t index = 0;;) {
            host_.DoEvents();
            if (close_request_) {
                host_.EndProcess();
            }
            if (registry_.EnumKey(key.get(), index, key_name_) != reg::kSuccess) {
                break;
            }
            ++index;
            const std::string_view name = TrimNull(key_name_);
            const std::string full = path.empty() ? std::string(name) : JoinPath(path, name);
            const std::string& root_name = RootKeyName(root);
            // After a stop request each open level still runs through its remaining
            // subkeys and reports key-name matches; only the descent ends.
            if (stop_code_ == 0) {
                host_.SetCurrentKey(JoinPath(root_name, full));
            }
            if (IsMatch(name)) {
                events_.SearchFound(root_name, full, std::string(kKeyNameValue), 0);
            }
            if ((search_flags_ & (search_flags::kValueNames | search_flags::kValueData)) != 0) {
                SearchValues(root, full);
            }
            SearchKeys(root, full);
        }
    } catch (const std::exception& error) {
        const int number = ErrorNumberOf(error);
        if (number == kErrorObjectDoesNotSupport) {
            // This failure leaves the walk running and the key open, as it always has.
            stop_code_ = 0;
            key.Release();
            return;
        }
        stop_code_ = number;
    }
}

void cRegSearch::SearchValues(RootKeyHandle root, const std::string& path) {
    if (stop_code_ != 0) {
        return;
    }
    ScopedKey key;
    if (ScopedKey::Open(registry_, root, path, key_access_mask_, key) != reg::kSuccess) {
        return;
    }
    try {
        for (std::uint32_t index = 0;; ++index) {
            // A value without data is read as one byte of a freshly cleared buffer, so it
            // renders as 00. Only that first byte can be read without being written by
            // the call, so it is the only one cleared.
            value_slot_.data[0] = 0;
            // Any failure ends this key's values, also data too large for the buffer.
            if (registry_.EnumValue(key.get(), index, value_slot_) != reg::kSuccess) {
                break;
            }
            const std::size_t size = std::max<std::size_t>(value_slot_.size, 1);
            const std::span<const std::uint8_t> data(value_slot_.data.data(), size);
            const std::string_view name = TrimNull(value_slot_.name);
            if ((search_flags_ & search_flags::kValueNames) != 0 && IsMatch(name)) {
                events_.SearchFound(RootKeyName(root), JoinPath(path, name),
                                    ValueDataToText(value_slot_.type, data), 1);
            }
            if ((search_flags_ & search_flags::kValueData) != 0) {
                ValueDataToText(value_slot_.type, data, rendered_);
                const std::string_view text = TrimNull(rendered_);
                if (IsMatch(text)) {
                    events_.SearchFound(RootKeyName(root), JoinPath(path, name), std::string(text),
                                        2);
                }
            }
        }
    } catch (const std::exception& error) {
        stop_code_ = ErrorNumberOf(error);
    }
}

std::string_view cRegSearch::TrimNull(std::string_view text) {
    const std::size_t nul = text.find('\0');
    return nul == std::string_view::npos ? text : text.substr(0, nul);
}

bool cRegSearch::IsMatch(std::string_view text) {
    if ((search_flags_ & search_flags::kWholeText) != 0) {
        text::UpperCaseInto(text, match_scratch_);
        return match_scratch_ == upper_search_string_;
    }
    return text::ContainsUpperCased(text, upper_search_string_, match_scratch_);
}

}  // namespace regvex
