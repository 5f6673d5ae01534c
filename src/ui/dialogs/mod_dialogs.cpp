#include "ui/dialogs/mod_dialogs.h"

namespace regvex::ui::dialogs {
namespace {

using Kind = DialogColor::Kind;

// Text colours: only a number serves.
void StoreTextColor(bool& present, ColorRef& slot, const DialogColor& argument) {
    if (!present) {
        return;
    }
    if (argument.kind == Kind::kColor) {
        slot = argument.color;
    } else {
        present = false;
    }
}

// Backgrounds: a number, or a picture to tile; other objects and values switch it off.
void StoreBackground(bool& present, DialogColor& slot, const DialogColor& argument) {
    if (!present) {
        return;
    }
    if (argument.kind == Kind::kColor || argument.kind == Kind::kPicture) {
        slot = argument;
    } else {
        present = false;
    }
}

BrushRecipe Solid(ColorRef color) {
    return {BrushKind::kSolid, color, 0};
}
BrushRecipe Pattern(std::uintptr_t bitmap) {
    return {BrushKind::kPattern, 0, bitmap};
}

}  // namespace

void RecordColors(ColorState& state, const DialogColor& text, const DialogColor& back,
                  const DialogColor& edit_text, const DialogColor& edit_back) {
    const std::array<const DialogColor*, 4> arguments = {&text, &back, &edit_text, &edit_back};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        state.present[i] = arguments[i]->kind != Kind::kMissing;
    }
    StoreTextColor(state.present[0], state.text_color, text);
    StoreBackground(state.present[1], state.back, back);
    StoreTextColor(state.present[2], state.edit_text_color, edit_text);
    StoreBackground(state.present[3], state.edit_back, edit_back);
}

DialogBrushes ChooseBrushes(const ColorState& state) {
    DialogBrushes brushes;
    if (state.present[1]) {
        brushes.brush1 = state.back.kind == Kind::kPicture ? Pattern(state.back.bitmap)
                                                           : Solid(state.back.color);
    }
    if (state.present[3]) {
        // Tiled or solid goes by the dialog background, not by the edit background: the
        // module has always done so, and the boxes it colours have no edit to show it.
        if (state.back.kind == Kind::kPicture) {
            // A colour has no bitmap to give; the brush is not made and keeps its handle.
            brushes.brush2 = state.edit_back.kind == Kind::kPicture
                                 ? Pattern(state.edit_back.bitmap)
                                 : BrushRecipe{BrushKind::kUnchanged, 0, 0};
        } else {
            // A picture taken as a number is its bitmap handle.
            brushes.brush2 = Solid(state.edit_back.kind == Kind::kPicture
                                       ? static_cast<ColorRef>(state.edit_back.bitmap)
                                       : state.edit_back.color);
        }
    }
    return brushes;
}

MessageAnswer AnswerMessage(const ColorState& state, unsigned message, bool brush1_made,
                            bool brush2_made) {
    MessageAnswer answer;
    if (message == kEditControlColorMessage) {
        if (state.present[2]) {
            answer.text_color = state.edit_text_color;
        }
        answer.background_mode = kBackgroundMode;
        answer.reply = brush2_made ? Reply::kBrush2 : Reply::kPreviousProcedure;
    } else if (message >= kFirstControlColorMessage && message <= kLastControlColorMessage) {
        if (state.present[0]) {
            answer.text_color = state.text_color;
        }
        answer.background_mode = kBackgroundMode;
        answer.reply = brush1_made ? Reply::kBrush1 : Reply::kPreviousProcedure;
    }
    return answer;
}

}  // namespace regvex::ui::dialogs
