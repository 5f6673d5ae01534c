#pragma once
// frmAbout: the code of the About box. It shows the program's title and version, links to
// the program's web site and starts the system's System Information tool, which it finds
// through the registry.

#include <functional>
#include <string>
#include <string_view>

#include "engine/path_exists.h"
#include "engine/registry.h"
#include "system/process.h"
#include "ui/base/controls.h"
#include "ui/base/services.h"

namespace regvex::ui::about {

inline constexpr std::string_view kAboutDescription =
    "A program to scan your registry and remove invalid entries";
// The program's licence, whose text lies beside the program.
inline constexpr std::string_view kAboutLicence =
    "Free software under the MIT License: see the file LICENSE";
inline constexpr std::string_view kAboutLinkCaption = "Registry Vexlor WebSite";
inline constexpr std::string_view kAboutOkCaption = "OK";
inline constexpr std::string_view kAboutSysInfoCaption = "&System Info...";
inline constexpr std::string_view kSysInfoUnavailable =
    "System Information Is Unavailable At This Time";

// Where System Information is recorded, below HKEY_LOCAL_MACHINE: its full path, or else
// the folder that holds MSINFO32.EXE.
inline constexpr std::string_view kSysInfoKey = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
inline constexpr std::string_view kSysInfoValue = "PATH";
inline constexpr std::string_view kSysInfoLocationKey =
    "SOFTWARE\\Microsoft\\Shared Tools Location";
inline constexpr std::string_view kSysInfoLocationValue = "MSINFO";
inline constexpr std::string_view kSysInfoProgram = "\\MSINFO32.EXE";

struct AboutControls {
    Window& form;
    Label& lblTitle;
    Label& lblVersion;
};

// What only the box itself can do.
class AboutView {
  public:
    virtual ~AboutView() = default;
    // The program's icon "AAA" on the box and on its top owner.
    virtual void SetWindowIcon() = 0;
    // Lays the box out through the proportional form resizer.
    virtual void ResizeAbout() = 0;
    // Gives the web-site link the font size that the resizer left on the box's labels.
    virtual void MatchLinkFontToLabels() = 0;
    // Unloads the box; Form_QueryUnload runs on the way.
    virtual void Close() = 0;
};

struct AboutServices {
    AboutView& view;
    Registry& registry;
    // KeyAccessMask: full access, with the 64-bit view on 64-bit Windows.
    AccessMask key_access_mask;
    FileExistence& files;
    system::ProcessLauncher& launcher;
    MessageDialogs& dialogs;
    ColorRef theme;
    Shell& shell;
    // The one argument-less call on the main window whenever the box closes.
    std::function<void()> main_window_on_close;
};

class frmAbout {
  public:
    frmAbout(AboutControls controls, AboutServices services);
    frmAbout(const frmAbout&) = delete;
    frmAbout& operator=(const frmAbout&) = delete;

    void Form_Load();
    void Form_QueryUnload();
    void cmdOK_Click();
    void cmdSysInfo_Click();
    void mkcHyperLinks2_Click();

    // Starts System Information without waiting for it, or says it cannot.
    void StartSysInfo();

  private:
    // The tool's command line from the registry; false when it is not to be found.
    bool FindSysInfo(std::string& SysInfoPath);

    AboutControls c_;
    AboutServices s_;
};

}  // namespace regvex::ui::about
