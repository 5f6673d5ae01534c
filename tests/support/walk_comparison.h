#pragma once
// Walks a registry twice, once letting the search answer keys reached again from what it
// recorded and once reading every key's values as if the backend could not name its
// keys, so that a test can compare what the owner saw, line by line.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/forwarding_registry.h"
#include "engine/reg_search.h"
#include "support/search_doubles.h"

namespace regvex::testing {

// Counts value reads; hides the stored names when told to.
class WalkCounter final : public ForwardingRegistry {
  public:
    WalkCounter(Registry& inner, bool names) : ForwardingRegistry(inner), names_(names) {}
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override {
        ++value_reads;
        const RegStatus status = ForwardingRegistry::EnumValue(key, index, value);
        if (status == reg::kMoreData) {
            lines.push_back("value too large");
        }
        return status;
    }
    bool StoredKeyName(KeyHandle key, std::string& name) override {
        return names_ && ForwardingRegistry::StoredKeyName(key, name);
    }
    std::uint64_t value_reads = 0;
    // What the command line counts as not examined: each enumeration that a value too
    // large for the buffer ended. It must not change when values are read once.
    std::vector<std::string> lines;

  private:
    bool names_;
};

struct WalkRequest {
    RootKeyHandle root = kHkeyAll;
    std::string sub_key;
    std::int32_t flags = 3;
    std::string text;
    int stop_at_yield = 0;  // 0: never
};

struct WalkOutcome {
    std::vector<std::string> lines;  // every event and current key, in order
    std::uint64_t value_reads = 0;
};

// Found events, current keys and the finish, interleaved as the owner sees them.
class LineRecorder final : public SearchHost, public SearchEvents {
  public:
    explicit LineRecorder(std::vector<std::string>& lines) : lines_(lines) {}
    void SetProgressMax(int) override {}
    int ProgressValue() const override { return progress_; }
    void SetProgressValue(int value) override { progress_ = value; }
    void SetCurrentKey(const std::string& key) override { lines_.push_back("key " + key); }
    void DoEvents() override {
        if (++yields_ == stop_at_yield && search != nullptr) {
            search->StopSearch();
        }
    }
    void EndProcess() override { throw ProcessEnded{}; }
    void SearchFound(std::string_view root, std::string_view key, std::string_view value,
                     FoundKind kind) override {
        lines_.push_back("found " + std::string(root) + "|" + std::string(key) + "|" +
                         std::string(value) + "|" + std::to_string(static_cast<int>(kind)));
    }
    void SearchFinished(FinishReason reason) override {
        lines_.push_back("finished " + std::to_string(static_cast<int>(reason)) + " at yield " +
                         std::to_string(yields_) + ", progress " + std::to_string(progress_));
    }

    cRegSearch* search = nullptr;
    int stop_at_yield = 0;

  private:
    std::vector<std::string>& lines_;
    int progress_ = 0;
    int yields_ = 0;
};

inline WalkOutcome WalkOnce(Registry& registry, const WalkRequest& request, bool names,
                            AccessMask access = reg::kKeyAllAccess) {
    WalkCounter counter(registry, names);
    WalkOutcome outcome;
    LineRecorder recorder(outcome.lines);
    cRegSearch search(counter, recorder, recorder, access);
    recorder.search = &search;
    recorder.stop_at_yield = request.stop_at_yield;
    search.RootKey(request.root);
    search.SubKey(request.sub_key);
    search.SearchFlags(request.flags);
    search.SearchString(request.text);
    search.DoSearch();
    outcome.value_reads = counter.value_reads;
    outcome.lines.insert(outcome.lines.end(), counter.lines.begin(), counter.lines.end());
    return outcome;
}

}  // namespace regvex::testing
