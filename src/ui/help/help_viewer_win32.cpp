#include "ui/help/help_viewer_win32.h"

#include <htmlhelp.h>

#include <string>
#include <utility>

#include "text/wide_text_win32.h"
#include "ui/help/help_file.h"

namespace regvex::ui::help {

namespace {

bool IsFile(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// The engine of the system folder, never a DLL of the same name that lies beside the
// program or in the current folder. Empty when the system folder cannot be told.
std::wstring EnginePath() {
    std::wstring folder(MAX_PATH, L'\0');
    UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (length >= folder.size()) {
        folder.resize(length);
        length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    }
    if (length == 0 || length >= folder.size()) {
        return {};
    }
    folder.resize(length);
    return folder + L"\\hhctrl.ocx";
}

}  // namespace

HelpViewer::~HelpViewer() {
    // The engine's windows must be gone before its code is unloaded under them.
    CloseAll();
}

bool HelpViewer::LoadEngine() {
    if (html_help_ != nullptr) {
        return true;
    }
    const std::wstring path = EnginePath();
    if (path.empty()) {
        return false;
    }
    handles::UniqueModule engine(LoadLibraryW(path.c_str()));
    if (!engine) {
        return false;
    }
    const FARPROC entry = GetProcAddress(engine.get(), "HtmlHelpW");
    if (entry == nullptr) {
        return false;
    }
    // Through the generic function type, which the compiler lets through unwarned.
    html_help_ = reinterpret_cast<HtmlHelpFunction>(reinterpret_cast<void (*)()>(entry));
    engine_ = std::move(engine);
    return true;
}

bool HelpViewer::Show(HWND owner, std::string_view help_path) {
    return ShowTopic(owner, help_path, kHelpContentsTopic);
}

bool HelpViewer::ShowTopic(HWND owner, std::string_view help_path, std::string_view topic) {
    const std::wstring file = text::ToWide(help_path);
    if (!IsFile(file) || !LoadEngine()) {
        return false;
    }
    // "C:\Folder\regvexlor.chm::/scanning.htm": the file and the page inside it.
    std::wstring target = file;
    if (!topic.empty()) {
        target += L"::/";
        target += text::ToWide(topic);
    }
    return html_help_(owner, target.c_str(), HH_DISPLAY_TOPIC, 0) != nullptr;
}

void HelpViewer::CloseAll() {
    if (html_help_ != nullptr) {
        html_help_(nullptr, nullptr, HH_CLOSE_ALL, 0);
    }
}

}  // namespace regvex::ui::help
