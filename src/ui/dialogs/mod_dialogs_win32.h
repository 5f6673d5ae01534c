#pragma once
// modDialogs on Windows: SetMessageBoxColors hooks the user-interface thread so that the
// next dialog created on it is subclassed and painted in the recorded colours; the hook,
// the subclass and the brushes go again when that dialog is destroyed.

#include <windows.h>

#include "ui/base/services.h"

namespace regvex::ui::dialogs {

// Text, background, edit text, edit background; each may be missing.
void SetMessageBoxColors(const DialogColor& text = {}, const DialogColor& back = {},
                         const DialogColor& edit_text = {}, const DialogColor& edit_back = {});

LRESULT CALLBACK MessageBoxHookProc(int code, WPARAM wparam, LPARAM lparam);
LRESULT CALLBACK MessageBoxWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// The hook waiting for or watching the next dialog; null when there is none.
HHOOK HookHandle();

}  // namespace regvex::ui::dialogs
