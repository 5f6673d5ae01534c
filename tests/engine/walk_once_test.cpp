// A search that answers keys reached again from its record shows its owner exactly what
// a search reading every key's values shows.

#include <gtest/gtest.h>

#include "engine/memory_registry.h"
#include "engine/mounted_registry.h"
#include "support/registry_fixtures.h"
#include "support/walk_comparison.h"

namespace regvex {
namespace {

using testing::PutKey;
using testing::PutString;
using testing::PutValue;
using testing::WalkOnce;
using testing::WalkRequest;

constexpr const char* kSid = "S-1-5-21-7";

// HKEY_CURRENT_USER as a key of HKEY_USERS, the classes merged from the user's over the
// machine's, a link inside the machine's keys, and a mount that shows the key which that
// link hides.
struct AliasedRegistry {
    AliasedRegistry() {
        const std::string user = kSid;
        PutString(store, kHkeyUsers, user, "InUserRoot", "C:\\user-root");
        PutString(store, kHkeyUsers, user + "\\Software\\App", "Path", "C:\\app.exe");
        PutValue(store, kHkeyUsers, user + "\\Software\\App", "C:\\NameMatch", reg::kDword,
                 {1, 0, 0, 0});
        PutString(store, kHkeyUsers, user + "\\Software\\App", "Other", "nothing here");
        // A value too large for the buffer ends the key's values after the first.
        PutString(store, kHkeyUsers, user + "\\Software\\App\\Sub", "First", "C:\\first");
        PutString(store, kHkeyUsers, user + "\\Software\\App\\Sub", "Big",
                  "C:\\" + std::string(5000, 'b'));
        PutString(store, kHkeyUsers, user + "\\Software\\App\\Sub", "Last", "C:\\last");
        PutString(store, kHkeyUsers, user + "\\Software\\Denied", "D", "C:\\denied");
        store.DenyFullAccess(kHkeyUsers, user + "\\Software\\Denied");
        PutString(store, kHkeyUsers, user + "_Classes\\.txt", "", "C:\\user.txt");
        PutString(store, kHkeyUsers, user + "_Classes\\UserOnly\\shell", "", "C:\\user-only");
        PutString(store, kHkeyLocalMachine, "Software\\Classes\\.txt", "", "C:\\machine.txt");
        PutString(store, kHkeyLocalMachine, "Software\\Classes\\.txt\\MachineSub", "M",
                  "C:\\machine-sub");
        PutString(store, kHkeyLocalMachine, "Software\\Classes\\.doc", "", "C:\\doc");
        PutString(store, kHkeyLocalMachine, "Software\\Target", "V", "C:\\target");
        PutString(store, kHkeyLocalMachine, "Software\\Target\\Deeper", "W", "C:\\deep");
        PutString(store, kHkeyLocalMachine, "Software\\Vendor", "X", "C:\\vendor");
        PutString(store, kHkeyLocalMachine, "Software\\Vendor\\Link\\Hidden", "H", "C:\\hidden");
        PutKey(store, kHkeyLocalMachine, "Software\\Vendor\\Plain");

        view.Mount({kHkeyLocalMachine, ""}, store, {kHkeyLocalMachine, ""});
        view.Mount({kHkeyUsers, ""}, store, {kHkeyUsers, ""});
        view.Link({kHkeyCurrentUser, ""}, {kHkeyUsers, user});
        view.Merge({kHkeyClassesRoot, ""}, {kHkeyUsers, user + "_Classes"},
                   {kHkeyLocalMachine, "Software\\Classes"});
        view.Link({kHkeyLocalMachine, "Software\\Vendor\\Link"},
                  {kHkeyLocalMachine, "Software\\Target"});
        view.Mount({kHkeyUsers, "Shown"}, store, {kHkeyLocalMachine, "Software\\Vendor"});
    }
    MemoryRegistry store;
    MountedRegistry view;
};

TEST(WalkOnce, ShowsWhatAFullWalkShowsOverAliasedKeys) {
    struct Case {
        WalkRequest request;
        bool saves;  // fewer values are read
    };
    const Case cases[] = {
        {{kHkeyAll, "", 3, "C:\\"}, true},
        {{kHkeyAll, "", 1, "c:\\"}, true},
        {{kHkeyAll, "", 2 | 4, "C:\\target"}, true},
        {{kHkeyAll, "", 0, "C:\\"}, false},
        {{kHkeyAll, "", 3, "C:\\", 9}, false},
        {{kHkeyClassesRoot, "", 3, "C:\\"}, false},
        {{kHkeyLocalMachine, "Software", 3, "C:\\"}, false},
        {{kHkeyUsers, "", 2, "C:\\"}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("root " + std::to_string(c.request.root) + " flags " +
                     std::to_string(c.request.flags) + " stop " +
                     std::to_string(c.request.stop_at_yield));
        AliasedRegistry registry;
        const auto saving = WalkOnce(registry.view, c.request, true);
        const auto full = WalkOnce(registry.view, c.request, false);
        EXPECT_EQ(saving.lines, full.lines);
        if (c.saves) {
            EXPECT_LT(saving.value_reads, full.value_reads);
        } else {
            EXPECT_EQ(saving.value_reads, full.value_reads);
        }
        EXPECT_EQ(registry.store.OpenHandleCount(), 0u);
    }
}

}  // namespace
}  // namespace regvex
