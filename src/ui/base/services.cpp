#include "ui/base/services.h"

#include "engine/run_time_error.h"
#include "ui/base/program_version.h"

namespace regvex::ui {

int ShowMessage(MessageDialogs& dialogs, ColorRef theme, std::string_view prompt, int style,
                std::string_view title) {
    const ColorRef black = Rgb(0, 0, 0);
    dialogs.SetMessageBoxColors(DialogColor::Color(black), DialogColor::Color(theme),
                                DialogColor::Color(black), DialogColor::Color(theme));
    return dialogs.MsgBox(prompt, style, title);
}

std::string RunTimeErrorText(int number, std::string_view description) {
    return "Run-time error '" + std::to_string(number) + "':\n\n" + std::string(description);
}

void ShowRunTimeError(MessageDialogs& dialogs, ColorRef theme, const std::exception& error) {
    ShowMessage(dialogs, theme, RunTimeErrorText(ErrorNumberOf(error), error.what()), mb::kCritical,
                kProductName);
}

}  // namespace regvex::ui
