#pragma once
// modDialogs: the colours of the next message box. What the module decides lives here,
// free of the platform; mod_dialogs_win32 carries it out with a thread hook and a
// subclass of the dialog.

#include <array>
#include <cstdint>
#include <optional>

#include "ui/base/services.h"

namespace regvex::ui::dialogs {

// The control-colour messages of the message box, edit, list box, button, dialog,
// scroll-bar and static kinds, and the one of them that edits get their own colours on.
inline constexpr unsigned kFirstControlColorMessage = 0x131;
inline constexpr unsigned kLastControlColorMessage = 0x138;
inline constexpr unsigned kEditControlColorMessage = 0x133;

// Handed to the platform's background-mode call. 0 is no valid mode, so the call fails
// and the text background stays as the platform paints it; the boxes have always
// looked that way.
inline constexpr int kBackgroundMode = 0;

// What SetMessageBoxColors leaves for the next dialog; one copy per program.
struct ColorState {
    // Argument i was given and of a kind it accepts.
    std::array<bool, 4> present{};
    ColorRef text_color = 0;
    // A colour or a picture. A call that does not store one leaves the earlier value
    // here, and the edit brush still looks at it.
    DialogColor back;
    ColorRef edit_text_color = 0;
    DialogColor edit_back;
};

// SetMessageBoxColors without the hook: which arguments count and what is kept of them.
void RecordColors(ColorState& state, const DialogColor& text, const DialogColor& back,
                  const DialogColor& edit_text, const DialogColor& edit_back);

enum class BrushKind {
    kNone,       // the handle becomes 0
    kSolid,      // from `color`
    kPattern,    // tiled from `bitmap`
    kUnchanged,  // the brush could not be made; the handle keeps whatever it held
};

struct BrushRecipe {
    BrushKind kind = BrushKind::kNone;
    ColorRef color = 0;
    std::uintptr_t bitmap = 0;

    bool operator==(const BrushRecipe&) const = default;
};

struct DialogBrushes {
    BrushRecipe brush1;  // dialog, static, button, ...
    BrushRecipe brush2;  // edits
};

// The brushes that MessageBoxHookProc makes when the dialog is created.
DialogBrushes ChooseBrushes(const ColorState& state);

enum class Reply {
    kBrush1,
    kBrush2,
    kPreviousProcedure,
    // The previous procedure, or the default one when the window has none left.
    kPreviousOrDefaultProcedure,
};

struct MessageAnswer {
    std::optional<ColorRef> text_color;  // set on the device context in wParam
    std::optional<int> background_mode;  // likewise
    Reply reply = Reply::kPreviousOrDefaultProcedure;

    bool operator==(const MessageAnswer&) const = default;
};

// How MessageBoxWndProc answers `message`, given which brushes are non-zero.
MessageAnswer AnswerMessage(const ColorState& state, unsigned message, bool brush1_made,
                            bool brush2_made);

}  // namespace regvex::ui::dialogs
