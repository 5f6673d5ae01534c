#include "engine/reg_search.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "engine/memory_registry.h"
#include "engine/run_time_error.h"
#include "support/registry_fixtures.h"
#include "support/search_doubles.h"

namespace regvex {
namespace {

using testing::FaultyRegistry;
using testing::FoundEvent;
using testing::ProcessEnded;
using testing::PutKey;
using testing::PutString;
using testing::PutValue;
using testing::RecordingEvents;
using testing::ScriptedHost;
using testing::SzBytes;

constexpr const char* kHkcu = "HKEY_CURRENT_USER";

class RegSearchTest : public ::testing::Test {
  protected:
    // Configured as a scan of drive C: configures it.
    void ConfigureDriveScan(cRegSearch& search) {
        search.RootKey(kHkeyAll);
        search.SubKey("");
        search.SearchFlags(3);
        search.SearchString("C:\\");
    }

    std::vector<FoundEvent> Scan() {
        cRegSearch search(registry, host, events, reg::kKeyAllAccess);
        ConfigureDriveScan(search);
        search.DoSearch();
        return events.found;
    }

    MemoryRegistry registry;
    ScriptedHost host;
    RecordingEvents events;
};

TEST_F(RegSearchTest, ValuesDirectlyInARootAreNeverExamined) {
    PutString(registry, kHkeyCurrentUser, "", "InRoot", "C:\\in-root.exe");
    PutString(registry, kHkeyCurrentUser, "Software", "InKey", "C:\\in-key.exe");

    EXPECT_EQ(Scan(), (std::vector<FoundEvent>{{kHkcu, "Software\\InKey", "C:\\in-key.exe", 2}}));
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{0});
}

TEST_F(RegSearchTest, ReportsNamesAndDataWithTheirShapes) {
    PutString(registry, kHkeyCurrentUser, "App", "", "C:\\default.exe");
    // A value whose name and data both hold the drive raises two events, name first;
    // the name event carries the rendered data too.
    PutValue(registry, kHkeyCurrentUser, "App", "C:\\shared.dll", reg::kDword, {1, 0, 0, 0});
    PutString(registry, kHkeyCurrentUser, "App", "c:\\Both.exe", "c:\\Both.exe /s");
    // Other types render to texts that never hold a drive.
    PutValue(registry, kHkeyCurrentUser, "App", "Expand", reg::kExpandSz,
             SzBytes("C:\\expand.dll"));
    PutValue(registry, kHkeyCurrentUser, "App", "Multi", reg::kMultiSz,
             {'C', ':', '\\', 'a', 0, 'C', ':', '\\', 'b', 0, 0});

    EXPECT_EQ(Scan(), (std::vector<FoundEvent>{
                          {kHkcu, "App\\", "C:\\default.exe", 2},
                          {kHkcu, "App\\C:\\shared.dll", "0x00000001(1)", 1},
                          {kHkcu, "App\\c:\\Both.exe", "c:\\Both.exe /s", 1},
                          {kHkcu, "App\\c:\\Both.exe", "c:\\Both.exe /s", 2},
                          {kHkcu, "App\\Multi", "C:\\a", 2},
                      }));
}

TEST_F(RegSearchTest, KeyNameMatchesCarryAStarAndTheFullPath) {
    PutKey(registry, kHkeyLocalMachine, "Software\\OldTemp\\Inner");
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    search.SearchFlags(0);
    search.SearchString("temp");
    search.DoSearch();

    EXPECT_EQ(events.found,
              (std::vector<FoundEvent>{{"HKEY_LOCAL_MACHINE", "Software\\OldTemp", "*", 0}}));
}

TEST_F(RegSearchTest, WalksRootsInTheirFixedOrderDepthFirstValuesBeforeSubkeys) {
    PutString(registry, kHkeyUsers, "S-1", "v", "C:\\users.exe");
    PutString(registry, kHkeyLocalMachine, "Soft", "v", "C:\\machine.exe");
    PutString(registry, kHkeyCurrentUser, "b\\deep", "v", "C:\\b-deep.exe");
    PutString(registry, kHkeyCurrentUser, "B", "v", "C:\\b.exe");  // same key as "b"
    PutString(registry, kHkeyCurrentUser, "a", "v2", "C:\\a2.exe");
    PutString(registry, kHkeyCurrentUser, "a", "v1", "C:\\a1.exe");
    PutString(registry, kHkeyCurrentUser, "_x", "v", "C:\\underscore.exe");
    PutString(registry, kHkeyClassesRoot, ".ext", "v", "C:\\classes.exe");

    std::vector<std::string> data;
    for (const FoundEvent& e : Scan()) {
        data.push_back(e.value);
    }
    // Subkeys in the order of their upper-cased names ("_" sorts after "A" and "B"),
    // values in creation order.
    EXPECT_EQ(data, (std::vector<std::string>{"C:\\classes.exe", "C:\\a2.exe", "C:\\a1.exe",
                                              "C:\\b.exe", "C:\\b-deep.exe", "C:\\underscore.exe",
                                              "C:\\machine.exe", "C:\\users.exe"}));
}

TEST_F(RegSearchTest, OversizedDataEndsItsKeysValuesButNotItsSubkeys) {
    PutString(registry, kHkeyCurrentUser, "K", "v0", "C:\\0.exe");
    PutString(registry, kHkeyCurrentUser, "K", "v1", "C:\\1.exe");
    PutValue(registry, kHkeyCurrentUser, "K", "big", reg::kBinary,
             std::vector<std::uint8_t>(5000, 0x41));
    PutString(registry, kHkeyCurrentUser, "K", "v3", "C:\\3.exe");
    PutString(registry, kHkeyCurrentUser, "K", std::string(260, 'n'), "C:\\long-name.exe");
    PutString(registry, kHkeyCurrentUser, "K\\Sub", "v", "C:\\sub.exe");
    // A name of 260 characters does not fit either.
    PutString(registry, kHkeyCurrentUser, "L", std::string(260, 'n'), "C:\\long.exe");
    PutString(registry, kHkeyCurrentUser, "L", "after", "C:\\after.exe");
    PutString(registry, kHkeyCurrentUser, "M", std::string(259, 'n'), "C:\\fits.exe");

    std::vector<std::string> data;
    for (const FoundEvent& e : Scan()) {
        data.push_back(e.value);
    }
    EXPECT_EQ(data,
              (std::vector<std::string>{"C:\\0.exe", "C:\\1.exe", "C:\\sub.exe", "C:\\fits.exe"}));
}

TEST_F(RegSearchTest, AValueWithoutDataReadsAsOneClearedByte) {
    PutValue(registry, kHkeyCurrentUser, "K", "first", reg::kBinary, {0xAB});
    PutValue(registry, kHkeyCurrentUser, "K", "empty", reg::kBinary, {});
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    search.SearchFlags(2);
    search.SearchString("");
    search.DoSearch();

    // The key's name matches the empty search text too.
    ASSERT_EQ(events.found.size(), 3u);
    EXPECT_EQ(events.found[1].value, "AB");
    EXPECT_EQ(events.found[2].value, "00");
}

TEST_F(RegSearchTest, WholeTextFlagMatchesOnlyEqualTexts) {
    PutString(registry, kHkeyCurrentUser, "K", "exact", "c:\\app\\a.exe");
    PutString(registry, kHkeyCurrentUser, "K", "longer", "C:\\APP\\A.EXE /s");
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    search.SearchFlags(2 | 4);
    search.SearchString("C:\\App\\A.exe");
    search.DoSearch();

    EXPECT_EQ(events.found, (std::vector<FoundEvent>{{kHkcu, "K\\exact", "c:\\app\\a.exe", 2}}));
}

TEST_F(RegSearchTest, KeysThatCannotBeOpenedWithFullAccessAreSkippedSilently) {
    PutString(registry, kHkeyLocalMachine, "Open", "v", "C:\\open.exe");
    PutString(registry, kHkeyLocalMachine, "Protected", "v", "C:\\protected.exe");
    PutString(registry, kHkeyLocalMachine, "Protected\\Below", "v", "C:\\below.exe");
    registry.DenyFullAccess(kHkeyLocalMachine, "Protected");
    // Nothing is left of a name that starts with a NUL: the path names the parent instead.
    using namespace std::string_literals;
    PutString(registry, kHkeyLocalMachine, "\0Hidden"s, "v", "C:\\hidden.exe");
    PutString(registry, kHkeyLocalMachine, "Open\\\0Hidden"s, "v", "C:\\hidden.exe");

    const auto found = Scan();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].value, "C:\\open.exe");
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{0});
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

TEST_F(RegSearchTest, ShowsEachKeyAndStepsTheProgressBarPerRoot) {
    PutKey(registry, kHkeyCurrentUser, "A\\B");
    Scan();
    EXPECT_EQ(host.progress_max, 8);
    EXPECT_EQ(host.progress_history, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 0}));
    EXPECT_EQ(host.current_keys,
              (std::vector<std::string>{"HKEY_CURRENT_USER\\A", "HKEY_CURRENT_USER\\A\\B"}));
}

TEST_F(RegSearchTest, SearchFromAGivenKeyExaminesItsOwnValuesToo) {
    PutString(registry, kHkeyCurrentUser, "Start", "own", "C:\\own.exe");
    PutString(registry, kHkeyCurrentUser, "Start\\Sub", "v", "C:\\sub.exe");
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    search.RootKey(kHkeyCurrentUser);
    search.SubKey("Start");
    search.SearchFlags(3);
    search.SearchString("C:\\");
    search.DoSearch();

    EXPECT_EQ(events.found, (std::vector<FoundEvent>{{kHkcu, "Start\\own", "C:\\own.exe", 2},
                                                     {kHkcu, "Start\\Sub\\v", "C:\\sub.exe", 2}}));
    EXPECT_EQ(host.progress_history, std::vector<int>{0});
}

// Leaf keys K1..K3 under the search's start: yield 1 comes before K1, 2 inside K1,
// 3 before K2, and so on.
class StopTest : public RegSearchTest {
  protected:
    void SetUp() override {
        for (const char* key : {"K1match", "K2match", "K3match"}) {
            PutString(registry, kHkeyCurrentUser, key, "match", "data");
        }
    }
    void Configure(cRegSearch& search) {
        search.RootKey(kHkeyCurrentUser);
        search.SearchFlags(1);
        search.SearchString("MATCH");
    }
};

TEST_F(StopTest, AfterAStopEachOpenLevelStillReportsItsRemainingKeyNames) {
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    Configure(search);
    host.at_yield[3] = [&] { search.StopSearch(); };
    search.DoSearch();

    EXPECT_EQ(events.found, (std::vector<FoundEvent>{{kHkcu, "K1match", "*", 0},
                                                     {kHkcu, "K1match\\match", "data", 1},
                                                     {kHkcu, "K2match", "*", 0},
                                                     {kHkcu, "K3match", "*", 0}}));
    EXPECT_EQ(host.current_keys, std::vector<std::string>{"HKEY_CURRENT_USER\\K1match"});
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{1});
}

TEST_F(StopTest, AStoppedSearchEndsTheRootLoopAndTheNextSearchStartsAfresh) {
    PutString(registry, kHkeyLocalMachine, "Later", "match", "data");
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    search.SearchFlags(1);
    search.SearchString("MATCH");
    host.at_yield[3] = [&] { search.StopSearch(); };
    search.DoSearch();
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{1});
    EXPECT_EQ(host.progress_history, (std::vector<int>{1, 2, 3, 0}));

    events.found.clear();
    host.at_yield.clear();
    search.DoSearch();
    EXPECT_EQ(events.finished, (std::vector<std::int32_t>{1, 0}));
    EXPECT_EQ(events.found.size(), 7u);  // three keys and their values, and Later's value
}

TEST_F(StopTest, StopWhileIdleHasNoEffect) {
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    Configure(search);
    search.StopSearch();
    search.DoSearch();
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{0});
    EXPECT_EQ(events.found.size(), 6u);
}

TEST_F(StopTest, CloseProgramEndsTheProcessAtTheNextYieldWithoutFinishing) {
    cRegSearch search(registry, host, events, reg::kKeyAllAccess);
    Configure(search);
    host.at_yield[3] = [&] { search.CloseProgram(); };
    EXPECT_THROW(search.DoSearch(), ProcessEnded);
    EXPECT_EQ(host.yields, 3);
    EXPECT_EQ(events.found.size(), 2u);
    EXPECT_TRUE(events.finished.empty());
}

struct FailureCase {
    const char* name;
    std::function<void()> raise;
    std::int32_t reason;
};

class FailureTest : public RegSearchTest {
  protected:
    void SetUp() override {
        PutString(registry, kHkeyCurrentUser, "A", "v0", "C:\\a0.exe");
        PutString(registry, kHkeyCurrentUser, "A", "v1", "C:\\a1.exe");
        PutString(registry, kHkeyCurrentUser, "A\\Deep", "v", "C:\\deep.exe");
        PutString(registry, kHkeyCurrentUser, "B", "v", "C:\\b.exe");
        PutString(registry, kHkeyLocalMachine, "C", "v", "C:\\c.exe");
    }
};

TEST_F(FailureTest, AFailureAmongValuesEndsTheSearchWithItsNumber) {
    const FailureCase cases[] = {
        {"numbered", [] { throw RunTimeError(13, "type mismatch"); }, 13},
        {"out of memory", [] { throw std::bad_alloc(); }, 7},
        {"anything else", [] { throw std::runtime_error("?"); }, 5},
        {"438 among values", [] { throw RunTimeError(438, "no such method"); }, 438},
    };
    for (const FailureCase& c : cases) {
        FaultyRegistry faulty(registry);
        RecordingEvents sink;
        cRegSearch search(faulty, host, sink, reg::kKeyAllAccess);
        ConfigureDriveScan(search);
        faulty.on_enum_value = [&](std::uint32_t index) {
            if (index == 1) {
                c.raise();
            }
        };
        search.DoSearch();
        ASSERT_EQ(sink.finished, std::vector<std::int32_t>{c.reason}) << c.name;
        // A's first value was seen; nothing after the failure, the keys are all closed.
        ASSERT_EQ(sink.found.size(), 1u) << c.name;
        EXPECT_EQ(registry.OpenHandleCount(), 0u) << c.name;
    }
}

TEST_F(FailureTest, A438AmongSubkeysEndsOnlyThatKeyAndLeavesItOpen) {
    FaultyRegistry faulty(registry);
    cRegSearch search(faulty, host, events, reg::kKeyAllAccess);
    ConfigureDriveScan(search);
    // The first enumeration inside A (its subkey Deep) fails.
    int enum_key_calls = 0;
    faulty.on_enum_key = [&](std::uint32_t) {
        if (++enum_key_calls == 3) {
            throw RunTimeError(438, "no such method");
        }
    };
    search.DoSearch();

    std::vector<std::string> data;
    for (const FoundEvent& e : events.found) {
        data.push_back(e.value);
    }
    EXPECT_EQ(data,
              (std::vector<std::string>{"C:\\a0.exe", "C:\\a1.exe", "C:\\b.exe", "C:\\c.exe"}));
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{0});
    EXPECT_EQ(registry.OpenHandleCount(), 1u);
}

TEST_F(FailureTest, OtherFailuresAmongSubkeysEndTheSearchAndCloseTheKey) {
    FaultyRegistry faulty(registry);
    cRegSearch search(faulty, host, events, reg::kKeyAllAccess);
    ConfigureDriveScan(search);
    int enum_key_calls = 0;
    faulty.on_enum_key = [&](std::uint32_t) {
        if (++enum_key_calls == 3) {
            throw std::bad_alloc();
        }
    };
    search.DoSearch();

    EXPECT_EQ(events.found.size(), 2u);  // A's values; nothing of Deep, B or C
    EXPECT_EQ(events.finished, std::vector<std::int32_t>{7});
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

}  // namespace
}  // namespace regvex
