#include "ui/program_win32.h"

#include "system/program_folder_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/ignore/frm_ignore.h"

namespace regvex::ui {

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
    state_.masks = system::KeyMasksFor(system::Is64BitWindows(system_));
    state_.theme = ThemeFromWindowBackground();
    InitCommonControlsSafe();
    state_.program_folder = system::ProgramFolderOfThisProcess();
}

Program::~Program() {
    // The main window goes first: its code still reaches the services below.
    main_window_.reset();
}

bool Program::Start(int show) {
    main_window_ = std::make_unique<MainWindow>(
        MainWindowServices{
            dialogs_, clock_, pump_, shell_, screen_, system_, registry_, existence_, redirection_,
            disk_, processes_, code_page_, ignore_,
            [this] { ignore::AddToIgnore_Click(main_window_->results(), ignore_, state_); },
            [this] { ignore::AddSubkeyToIgnore_Click(main_window_->results(), ignore_, state_); }},
        state_);
    if (!main_window_->Create(show)) {
        return false;
    }
    shell_.SetOwner(main_window_->hwnd());
    return true;
}

}  // namespace regvex::ui
