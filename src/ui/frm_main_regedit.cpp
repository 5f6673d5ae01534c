// "View Subkey in Registry Editor": the Registry Editor opens the key it showed last,
// so the finding's key is written there as the key it showed last, then it is started.

#include "text/concat.h"
#include "text/utf8.h"
#include "ui/base/program_version.h"
#include "ui/frm_main.h"

namespace regvex::ui {

namespace {

constexpr std::string_view kRegeditKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";

// Drops a trailing backslash, or else the path's last element with its backslash.
std::string KeyOfValuePath(const std::string& path) {
    const std::string reversed = text::ReverseText(path);
    if (!reversed.empty() && reversed.front() == '\\') {
        return text::ReverseText(std::string_view(reversed).substr(1));
    }
    const std::size_t p = reversed.find('\\');
    return text::ReverseText(p == std::string::npos ? std::string_view()
                                                    : std::string_view(reversed).substr(p + 1));
}

}  // namespace

std::string RegeditLastKey(std::uint32_t major_version, std::string_view root_key,
                           std::string_view sub_key) {
    const std::string_view prefix = major_version > 5 ? "Computer\\" : "My Computer\\";
    return KeyOfValuePath(text::Concat({prefix, root_key, "\\", sub_key}));
}

void frmMain::Regedit_View_Click() {
    if (state_.bScanning) {
        Message("This feature cannot be viewed during scanning!", mb::kCritical, kProductName);
        return;
    }
    const std::uint32_t major = s_.system.Version().major;
    if (major < 5) {
        Message("This feature is only available on Windows 2000 or higher.", mb::kExclamation,
                kProductName);
        return;
    }
    const CheckListView& list = c_.lvwRegErrors;
    const int row = list.SelectedRow();
    const std::string root_key = row >= 0 ? list.Text(row, 1) : std::string();
    if (root_key.empty()) {
        Message("There was no key selected to view.", mb::kExclamation, kProductName);
        return;
    }
    const std::string last_key = RegeditLastKey(major, root_key, list.Text(row, 2));
    // Opened, never created: a user who never ran the Registry Editor has no such key.
    ScopedKey key;
    if (ScopedKey::Open(s_.registry, kHkeyCurrentUser, kRegeditKey, state_.masks.KeySetMask, key) ==
        reg::kSuccess) {
        // Written without its terminating zero, as the Registry Editor has always been
        // given it.
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(last_key.data());
        s_.registry.SetValue(key.get(), "LastKey", reg::kSz, {bytes, last_key.size()});
    }
    key.Close();
    if (system::Is64BitWindows(s_.system)) {
        const system::RedirectionOff redirection(s_.redirection, true);
        s_.processes.Start("regedit.exe");
    }
}

}  // namespace regvex::ui
