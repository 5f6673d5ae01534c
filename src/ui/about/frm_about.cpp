#include "ui/about/frm_about.h"

#include <string>
#include <utility>

#include "ui/about/get_key_value.h"
#include "ui/base/program_version.h"

namespace regvex::ui::about {

frmAbout::frmAbout(AboutControls controls, AboutServices services)
    : c_(controls), s_(std::move(services)) {}

void frmAbout::Form_Load() {
    s_.view.SetWindowIcon();
    c_.form.SetCaption("About " + std::string(kProductName));
    // The patch number is left out, as everywhere the program names its version.
    c_.lblVersion.SetCaption("Version " + std::to_string(kVersionMajor) + "." +
                             std::to_string(kVersionMinor));
    c_.lblTitle.SetCaption(kProductName);
    s_.view.ResizeAbout();
    // After the resizer, so that the link keeps in step with the text around it.
    s_.view.MatchLinkFontToLabels();
}

void frmAbout::Form_QueryUnload() {
    if (s_.main_window_on_close) {
        s_.main_window_on_close();
    }
}

void frmAbout::cmdOK_Click() {
    s_.view.Close();
}

void frmAbout::cmdSysInfo_Click() {
    StartSysInfo();
}

void frmAbout::mkcHyperLinks2_Click() {
    s_.shell.OpenUrl(kProjectPage);
}

bool frmAbout::FindSysInfo(std::string& SysInfoPath) {
    if (GetKeyValue(s_.registry, s_.key_access_mask, kHkeyLocalMachine, kSysInfoKey, kSysInfoValue,
                    SysInfoPath)) {
        return true;
    }
    if (GetKeyValue(s_.registry, s_.key_access_mask, kHkeyLocalMachine, kSysInfoLocationKey,
                    kSysInfoLocationValue, SysInfoPath) &&
        PathExists(s_.files, SysInfoPath + std::string(kSysInfoProgram))) {
        SysInfoPath += kSysInfoProgram;
        return true;
    }
    return false;
}

void frmAbout::StartSysInfo() {
    // Whatever goes wrong on the way, the user hears only that the tool is unavailable.
    bool started = false;
    try {
        std::string SysInfoPath;
        started = FindSysInfo(SysInfoPath) && s_.launcher.Start(SysInfoPath);
    } catch (...) {
        started = false;
    }
    if (!started) {
        ShowMessage(s_.dialogs, s_.theme, kSysInfoUnavailable, mb::kOkOnly, kProductName);
    }
}

}  // namespace regvex::ui::about
