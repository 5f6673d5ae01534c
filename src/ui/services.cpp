#include "ui/services.h"

namespace regvex::ui {

int ShowMessage(MessageDialogs& dialogs, ColorRef theme, std::string_view prompt, int style,
                std::string_view title) {
    const ColorRef black = Rgb(0, 0, 0);
    dialogs.SetMessageBoxColors(DialogColor::Color(black), DialogColor::Color(theme),
                                DialogColor::Color(black), DialogColor::Color(theme));
    return dialogs.MsgBox(prompt, style, title);
}

}  // namespace regvex::ui
