#pragma once
// Text from outside (registry names and data, file names, arguments) as the command line
// shows it. A hostile file must not be able to drive the terminal or split a finding over
// two lines, so the one routine below writes every such text.

#include <string>
#include <string_view>

namespace regvex::cli {

// The text with a backslash doubled and, as \xHH (lower-case hex, one escape per byte),
// every byte of a C0 control (tab, CR and LF included), of DEL, of a C1 control
// (U+0080-U+009F) and every byte that is not part of valid UTF-8. Every other character
// stands as it is, so the result reads back unambiguously.
std::string VisibleText(std::string_view text);

}  // namespace regvex::cli
