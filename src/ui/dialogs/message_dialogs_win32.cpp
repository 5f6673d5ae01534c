#include "ui/dialogs/message_dialogs_win32.h"

#include <string>
#include <utility>

#include "text/wide_text_win32.h"
#include "ui/dialogs/mod_dialogs_win32.h"

namespace regvex::ui::dialogs {

Win32MessageDialogs::Win32MessageDialogs(std::function<HWND()> owner) : owner_(std::move(owner)) {}

void Win32MessageDialogs::SetMessageBoxColors(DialogColor text, DialogColor back,
                                              DialogColor edit_text, DialogColor edit_back) {
    dialogs::SetMessageBoxColors(text, back, edit_text, edit_back);
}

int Win32MessageDialogs::MsgBox(std::string_view prompt, int style, std::string_view title) {
    const HWND owner = owner_ ? owner_() : nullptr;
    const std::wstring wide_prompt = text::ToWide(prompt);
    const std::wstring wide_title = text::ToWide(title);
    return MessageBoxW(owner, wide_prompt.c_str(), wide_title.c_str(), static_cast<UINT>(style));
}

}  // namespace regvex::ui::dialogs
