#include "engine/mounted_registry.h"

#include <gtest/gtest.h>

#include "support/registry_dump.h"
#include "support/registry_fixtures.h"

using namespace regvex;
using namespace regvex::testing;

namespace {

// A machine as Windows assembles it: hives mounted, a control-set link, the user's
// classes merged over the machine's, the current user linked to the user's key.
struct AssembledMachine {
    MemoryRegistry software, system, user, user_classes;
    MountedRegistry registry;

    AssembledMachine() {
        PutString(software, kHkeyLocalMachine, "Classes\\.txt", "", "txtfile");
        PutString(software, kHkeyLocalMachine, "Classes\\txtfile", "Machine", "m");
        PutString(software, kHkeyLocalMachine, "Classes\\zfile", "", "z");
        PutString(system, kHkeyLocalMachine, "ControlSet001\\Services\\A", "ImagePath", "a.sys");
        PutKey(system, kHkeyLocalMachine, "Select");
        PutString(user, kHkeyLocalMachine, "Software\\Vendor", "Path", "C:\\v.exe");
        PutString(user_classes, kHkeyLocalMachine, "txtfile", "User", "u");
        PutKey(user_classes, kHkeyLocalMachine, "mine");

        registry.Mount({kHkeyLocalMachine, "SOFTWARE"}, software, {kHkeyLocalMachine, ""});
        registry.Mount({kHkeyLocalMachine, "SYSTEM"}, system, {kHkeyLocalMachine, ""});
        registry.Link({kHkeyLocalMachine, "SYSTEM\\CurrentControlSet"},
                      {kHkeyLocalMachine, "SYSTEM\\ControlSet001"});
        registry.Mount({kHkeyUsers, "S-1-5-21-7"}, user, {kHkeyLocalMachine, ""});
        registry.Mount({kHkeyUsers, "S-1-5-21-7_Classes"}, user_classes, {kHkeyLocalMachine, ""});
        registry.Link({kHkeyCurrentUser, ""}, {kHkeyUsers, "S-1-5-21-7"});
        registry.Merge({kHkeyClassesRoot, ""}, {kHkeyUsers, "S-1-5-21-7_Classes"},
                       {kHkeyLocalMachine, "SOFTWARE\\Classes"});
    }
};

}  // namespace

TEST(MountedRegistry, ShowsMountsLinksAndMergesAsOneRegistry) {
    AssembledMachine machine;
    EXPECT_EQ(DumpRegistry(machine.registry),
              "HKEY_CLASSES_ROOT\\.txt\n"
              "  =1:txtfile\\x00\n"
              "HKEY_CLASSES_ROOT\\mine\n"
              "HKEY_CLASSES_ROOT\\txtfile\n"
              "  User=1:u\\x00\n"
              "HKEY_CLASSES_ROOT\\zfile\n"
              "  =1:z\\x00\n"
              "HKEY_CURRENT_USER\\Software\n"
              "HKEY_CURRENT_USER\\Software\\Vendor\n"
              "  Path=1:C:\\v.exe\\x00\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\.txt\n"
              "  =1:txtfile\\x00\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\txtfile\n"
              "  Machine=1:m\\x00\n"
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\zfile\n"
              "  =1:z\\x00\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\A\n"
              "  ImagePath=1:a.sys\\x00\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\A\n"
              "  ImagePath=1:a.sys\\x00\n"
              "HKEY_LOCAL_MACHINE\\SYSTEM\\Select\n"
              "HKEY_USERS\\S-1-5-21-7\n"
              "HKEY_USERS\\S-1-5-21-7\\Software\n"
              "HKEY_USERS\\S-1-5-21-7\\Software\\Vendor\n"
              "  Path=1:C:\\v.exe\\x00\n"
              "HKEY_USERS\\S-1-5-21-7_Classes\n"
              "HKEY_USERS\\S-1-5-21-7_Classes\\mine\n"
              "HKEY_USERS\\S-1-5-21-7_Classes\\txtfile\n"
              "  User=1:u\\x00\n");
    EXPECT_EQ(machine.software.OpenHandleCount() + machine.system.OpenHandleCount() +
                  machine.user.OpenHandleCount() + machine.user_classes.OpenHandleCount(),
              0u);
}

TEST(MountedRegistry, AnswersOpensAndWritesWithTheBackendsCodes) {
    AssembledMachine machine;
    machine.registry.Link({kHkeyLocalMachine, "Loop"}, {kHkeyLocalMachine, "Loop\\Again"});
    const struct {
        RootKeyHandle root;
        const char* path;
        RegStatus open;
        RegStatus write;  // a value set on the opened key
    } cases[] = {
        {kHkeyLocalMachine, "system\\currentcontrolset\\SERVICES\\a", reg::kSuccess, reg::kSuccess},
        {kHkeyLocalMachine, "SOFTWARE\\Missing", reg::kFileNotFound, 0},
        {kHkeyLocalMachine, "", reg::kSuccess, reg::kAccessDenied},
        {kHkeyLocalMachine, "HARDWARE", reg::kFileNotFound, 0},
        {kHkeyUsers, "", reg::kSuccess, reg::kAccessDenied},
        {kHkeyCurrentConfig, "", reg::kSuccess, reg::kAccessDenied},
        {kHkeyLocalMachine, "Loop", reg::kFileNotFound, 0},
        {kHkeyClassesRoot, "txtfile", reg::kSuccess, reg::kSuccess},
    };
    for (const auto& c : cases) {
        KeyHandle key = 0;
        ASSERT_EQ(machine.registry.OpenKey(c.root, c.path, reg::kKeyAllAccess, key), c.open)
            << c.path;
        if (c.open == reg::kSuccess) {
            EXPECT_EQ(machine.registry.SetValue(key, "New", reg::kSz, SzBytes("x")), c.write)
                << c.path;
            machine.registry.CloseKey(key);
        }
    }
    // The merged key's writes went to the user's side, which holds it.
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    KeyHandle user_key = 0;
    ASSERT_EQ(machine.user_classes.OpenKey(kHkeyLocalMachine, "txtfile", reg::kKeyRead, user_key),
              reg::kSuccess);
    EXPECT_EQ(machine.user_classes.QueryValue(user_key, "New", type, data), reg::kSuccess);
    machine.user_classes.CloseKey(user_key);
    EXPECT_EQ(machine.system.OpenHandleCount(), 0u);
}
