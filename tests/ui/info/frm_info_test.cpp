#include "ui/info/frm_info.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/memory_controls.h"
#include "support/scripted_services.h"

namespace regvex::ui::info {
namespace {

class RecordingInfoView final : public InfoView {
  public:
    void SetWindowIcon() override { calls.push_back("icon"); }
    void Close() override { calls.push_back("close"); }
    std::vector<std::string> calls;
};

class ScriptedClipboard final : public Clipboard {
  public:
    bool SetText(std::string_view text) override {
        if (busy) {
            return false;
        }
        held = std::string(text);
        return true;
    }
    bool busy = false;
    std::string held = "what was there";
};

struct Rig {
    RecordingInfoView view;
    ScriptedClipboard clipboard;
    testing::ScriptedDialogs dialogs;
    testing::MemoryWindow window;
    testing::MemoryCaption text;
    int main_window_calls = 0;
    frmInfo form{{window, text},
                 {view, clipboard, dialogs, Rgb(1, 2, 3), [this] { ++main_window_calls; }},
                 "Root key:    HKEY_CURRENT_USER\nKey:         Software\\A\n"};
};

TEST(frmInfo, ShowsTheExplanationAndCopiesAllOfIt) {
    Rig rig;
    rig.form.Form_Load();
    EXPECT_EQ(rig.window.Caption(), "Info On This Item");
    EXPECT_EQ(rig.text.Caption(), "Root key:    HKEY_CURRENT_USER\nKey:         Software\\A\n");
    // What the user may have changed in the box is not what is copied.
    rig.text.SetCaption("edited");
    rig.form.cmdCopy_Click();
    EXPECT_EQ(rig.clipboard.held, "Root key:    HKEY_CURRENT_USER\nKey:         Software\\A\n");
    EXPECT_TRUE(rig.dialogs.shown.empty());

    rig.form.cmdClose_Click();
    rig.form.Form_QueryUnload();
    EXPECT_EQ(rig.view.calls, (std::vector<std::string>{"icon", "close"}));
    EXPECT_EQ(rig.main_window_calls, 1);
}

TEST(frmInfo, ABusyClipboardIsReportedAndKeepsWhatItHeld) {
    Rig rig;
    rig.form.Form_Load();
    rig.clipboard.busy = true;
    rig.form.cmdCopy_Click();
    EXPECT_EQ(rig.clipboard.held, "what was there");
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].prompt, kNotCopied);
    EXPECT_EQ(rig.dialogs.shown[0].style, mb::kExclamation);
    EXPECT_TRUE(rig.dialogs.shown[0].coloured);
}

}  // namespace
}  // namespace regvex::ui::info
