#pragma once
// The About box's services, recorded for tests.

#include <string>
#include <vector>

#include "engine/forwarding_registry.h"
#include "engine/memory_registry.h"
#include "support/scripted_services.h"
#include "support/system_doubles.h"
#include "ui/about/frm_about.h"

namespace regvex::testing {

class RecordingAboutView final : public ui::about::AboutView {
  public:
    void SetWindowIcon() override { calls.emplace_back("icon"); }
    void ResizeAbout() override { calls.emplace_back("resize"); }
    void MatchLinkFontToLabels() override { calls.emplace_back("link font"); }
    void Close() override { calls.emplace_back("close"); }
    std::vector<std::string> calls;
};

// Writes down the rights every open asks for, and lets the memory registry answer.
class AccessRecordingRegistry final : public ForwardingRegistry {
  public:
    using ForwardingRegistry::ForwardingRegistry;
    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override {
        opened_with.push_back(access);
        return ForwardingRegistry::OpenKey(root, path, access, key);
    }
    std::vector<AccessMask> opened_with;
};

}  // namespace regvex::testing
