#include "ui/help/help_file.h"

namespace regvex::ui::help {

std::string HelpFilePath(std::string_view program_folder) {
    std::string path(program_folder);
    path += '\\';
    path += kHelpFileName;
    return path;
}

std::string HelpNotShownMessage(std::string_view help_path, bool file_exists) {
    std::string message;
    if (file_exists) {
        message =
            "The help could not be shown, because the Windows help viewer (HTML Help) "
            "could not be started.\r\n\r\nThe help file is:\r\n";
        message += help_path;
    } else {
        message = "The help file could not be found:\r\n";
        message += help_path;
        message += "\r\n\r\nPlease copy ";
        message += kHelpFileName;
        message += " back into the folder of Registry Vexlor, or install Registry Vexlor again.";
    }
    return message;
}

}  // namespace regvex::ui::help
