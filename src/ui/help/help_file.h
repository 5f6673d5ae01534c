#pragma once
// Where the program's help lives and what the user is told when it cannot be shown.

#include <string>
#include <string_view>

namespace regvex::ui::help {

// The compiled help file, kept beside the program.
inline constexpr std::string_view kHelpFileName = "regvexlor.chm";

// The page that the help opens at: the contents page with the list of topics.
inline constexpr std::string_view kHelpContentsTopic = "contents.htm";

// The help file of a program folder, given as the program keeps it (without a trailing
// backslash): the folder followed by "\regvexlor.chm".
std::string HelpFilePath(std::string_view program_folder);

// The message shown when the help could not be shown: one text for a file that is not
// there, another for a help viewer that would not start. Both name the file.
std::string HelpNotShownMessage(std::string_view help_path, bool file_exists);

}  // namespace regvex::ui::help
