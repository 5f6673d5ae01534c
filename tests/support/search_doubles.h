#pragma once
// Stand-ins for the owner of a search: a host whose yields can be scripted, an event
// sink that records what arrives, and a registry that fails when told to.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "engine/forwarding_registry.h"
#include "engine/reg_search.h"

namespace regvex::testing {

// Thrown by the host where the real program would end its process.
struct ProcessEnded {};

class ScriptedHost final : public SearchHost {
  public:
    void SetProgressMax(int max) override { progress_max = max; }
    int ProgressValue() const override { return progress; }
    void SetProgressValue(int value) override {
        progress = value;
        progress_history.push_back(value);
    }
    void SetCurrentKey(const std::string& full_key_name) override {
        current_keys.push_back(full_key_name);
    }
    void DoEvents() override {
        ++yields;
        if (auto action = at_yield.find(yields); action != at_yield.end()) {
            action->second();
        }
    }
    void EndProcess() override { throw ProcessEnded{}; }

    int progress_max = 0;
    int progress = 0;
    std::vector<int> progress_history;
    std::vector<std::string> current_keys;
    int yields = 0;
    std::map<int, std::function<void()>> at_yield;  // by yield number, from 1
};

struct FoundEvent {
    std::string root;
    std::string key;
    std::string value;
    std::int32_t found = 0;
    bool operator==(const FoundEvent&) const = default;
};

class RecordingEvents final : public SearchEvents {
  public:
    // Both record the numbers an owner has always been handed.
    void SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                     FoundKind lFound) override {
        found.push_back({std::string(sRootKey), std::string(sKey), std::string(sValue),
                         static_cast<std::int32_t>(lFound)});
        if (on_found) {
            on_found(found.back());
        }
    }
    void SearchFinished(FinishReason lReason) override {
        finished.push_back(static_cast<std::int32_t>(lReason));
    }

    std::vector<FoundEvent> found;
    std::vector<std::int32_t> finished;
    std::function<void(const FoundEvent&)> on_found;
};

// Passes every call to a real registry, except that the chosen enumeration throws.
class FaultyRegistry final : public ForwardingRegistry {
  public:
    using ForwardingRegistry::ForwardingRegistry;

    std::function<void(std::uint32_t index)> on_enum_key;
    std::function<void(std::uint32_t index)> on_enum_value;

    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override {
        if (on_enum_key) {
            on_enum_key(index);
        }
        return ForwardingRegistry::EnumKey(key, index, name);
    }
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override {
        if (on_enum_value) {
            on_enum_value(index);
        }
        return ForwardingRegistry::EnumValue(key, index, value);
    }
};

}  // namespace regvex::testing
