#include "ui/dialogs/mod_dialogs_win32.h"

#include <cstddef>
#include <string_view>

#include "handles/unique_handle_win32.h"
#include "ui/dialogs/mod_dialogs.h"

namespace regvex::ui::dialogs {
namespace {

constexpr wchar_t kOrigWindowProc[] = L"OrigWindowProc";
constexpr std::wstring_view kDialogClass = L"#32770";
constexpr int kClassNameLength = 128;

// Brush 1 or 2. Deleting keeps the handle's value, which a brush that cannot be made
// later leaves in place; ownership goes, so no object is ever deleted twice.
class BrushSlot {
  public:
    HBRUSH get() const { return brush_; }
    void Make(HBRUSH brush) {
        owned_.Reset(brush);
        brush_ = brush;
    }
    void Delete() { owned_.Reset(); }

  private:
    HBRUSH brush_ = nullptr;
    handles::UniqueBrush owned_;
};

struct Module {
    ColorState colors;
    // Unhooks when replaced, and when the program ends before a dialog came.
    handles::UniqueHook hook;
    BrushSlot brush1;
    BrushSlot brush2;
};

Module& State() {
    static Module module;
    return module;
}

void MakeBrush(BrushSlot& slot, const BrushRecipe& recipe) {
    switch (recipe.kind) {
        case BrushKind::kNone:
            slot.Make(nullptr);
            break;
        case BrushKind::kSolid:
            slot.Make(CreateSolidBrush(recipe.color));
            break;
        case BrushKind::kPattern:
            slot.Make(CreatePatternBrush(reinterpret_cast<HBITMAP>(recipe.bitmap)));
            break;
        case BrushKind::kUnchanged:
            break;
    }
}

// "Contains", not "equals": that is how the module has always recognised the dialog.
bool IsDialogClass(HWND window) {
    wchar_t name[kClassNameLength] = {};
    const int length = GetClassNameW(window, name, kClassNameLength);
    const std::wstring_view text(name, length > 0 ? static_cast<std::size_t>(length) : 0);
    return text.find(kDialogClass) != std::wstring_view::npos;
}

void OnCreate(HWND window) {
    if (!IsDialogClass(window)) {
        return;
    }
    Module& module = State();
    const DialogBrushes brushes = ChooseBrushes(module.colors);
    MakeBrush(module.brush1, brushes.brush1);
    MakeBrush(module.brush2, brushes.brush2);
    const LONG_PTR previous =
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&MessageBoxWndProc));
    SetPropW(window, kOrigWindowProc, reinterpret_cast<HANDLE>(previous));
}

void OnDestroy(HWND window) {
    const HANDLE previous = GetPropW(window, kOrigWindowProc);
    if (previous == nullptr) {
        return;
    }
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
    RemovePropW(window, kOrigWindowProc);
    Module& module = State();
    // One dialog per call: the next box is the platform's own unless the caller asks again.
    module.hook.Reset();
    module.brush1.Delete();
    module.brush2.Delete();
}

}  // namespace

void SetMessageBoxColors(const DialogColor& text, const DialogColor& back,
                         const DialogColor& edit_text, const DialogColor& edit_back) {
    Module& module = State();
    RecordColors(module.colors, text, back, edit_text, edit_back);
    // A hook still waiting for its dialog takes the new colours as they are.
    if (module.hook.get() != nullptr) {
        return;
    }
    module.hook.Reset(
        SetWindowsHookExW(WH_CALLWNDPROC, &MessageBoxHookProc, nullptr, GetCurrentThreadId()));
}

LRESULT CALLBACK MessageBoxHookProc(int code, WPARAM wparam, LPARAM lparam) {
    if (code == HC_ACTION) {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lparam);
        if (sent.message == WM_CREATE) {
            OnCreate(sent.hwnd);
        } else if (sent.message == WM_DESTROY) {
            OnDestroy(sent.hwnd);
        }
    }
    return CallNextHookEx(State().hook.get(), code, wparam, lparam);
}

LRESULT CALLBACK MessageBoxWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto previous = reinterpret_cast<WNDPROC>(GetPropW(window, kOrigWindowProc));
    const Module& module = State();
    const MessageAnswer answer = AnswerMessage(
        module.colors, message, module.brush1.get() != nullptr, module.brush2.get() != nullptr);
    const auto dc = reinterpret_cast<HDC>(wparam);
    if (answer.text_color) {
        SetTextColor(dc, *answer.text_color);
    }
    if (answer.background_mode) {
        SetBkMode(dc, *answer.background_mode);
    }
    switch (answer.reply) {
        case Reply::kBrush1:
            return reinterpret_cast<LRESULT>(module.brush1.get());
        case Reply::kBrush2:
            return reinterpret_cast<LRESULT>(module.brush2.get());
        case Reply::kPreviousProcedure:
            return CallWindowProcW(previous, window, message, wparam, lparam);
        case Reply::kPreviousOrDefaultProcedure:
            break;
    }
    if (previous == nullptr) {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    return CallWindowProcW(previous, window, message, wparam, lparam);
}

HHOOK HookHandle() {
    return State().hook.get();
}

}  // namespace regvex::ui::dialogs
