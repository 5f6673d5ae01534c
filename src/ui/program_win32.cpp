#include "ui/program_win32.h"

#include "ignore/frm_ignore.h"
#include "text/wide_text_win32.h"
#include "ui/startup_win32.h"

namespace regvex::ui {

namespace {

std::string ProgramFolder() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    return text::FromWide(path.substr(0, path.find_last_of(L'\\')));
}

}  // namespace

Program::Program()
    : dialogs_([this]() -> HWND { return main_window_ ? main_window_->hwnd() : nullptr; }),
      ignore_({dialogs_, files_, code_page_, state_,
               [this]() -> HWND { return main_window_ ? main_window_->hwnd() : nullptr; },
               [this] {
                   if (main_window_) {
                       SetActiveWindow(main_window_->hwnd());
                   }
               }}),
      pump_([this](MSG& message) {
          if (main_window_) {
              main_window_->PreTranslateMessage(message);
          }
          return ignore_.PreTranslateMessage(message);
      }),
      shell_(nullptr,
             [this](HWND owner, std::string_view path) { return help_.Show(owner, path); }) {
    state_.masks = KeyMasksFor(Is64BitWindows(system_));
    state_.theme = ThemeFromWindowBackground();
    InitCommonControlsSafe();
    state_.program_folder = ProgramFolder();
}

Program::~Program() {
    // The main window goes first: its code still reaches the services below.
    main_window_.reset();
}

bool Program::Start(int show) {
    main_window_ = std::make_unique<MainWindow>(
        MainWindowServices{
            dialogs_, clock_, pump_, shell_, screen_, system_, registry_, existence_, redirection_,
            ignore_, [this] { AddToIgnore_Click(main_window_->results(), ignore_, state_); },
            [this] { AddSubkeyToIgnore_Click(main_window_->results(), ignore_, state_); }},
        state_);
    if (!main_window_->Create(show)) {
        return false;
    }
    shell_.SetOwner(main_window_->hwnd());
    return true;
}

}  // namespace regvex::ui
